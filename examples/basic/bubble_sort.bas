' Sorts ten numbers with a bubble sort and prints them before and after.
' Compile and run:  mbbasic bubble_sort.bas && mbsim --out-port 1 bubble_sort.obj
Dim numbers(10) As Integer
Dim i, last As Byte
Dim swapped As Bit

numbers = (312, -45, 7, 1000, 0, -3000, 88, 7, 15, -1)
Gosub show

last = 9
Do_pass:
swapped = False
For i = 0 To last - 1
If numbers(i) > numbers(i + 1) Then
Exchange i
swapped = True
Endif
Next i
last = last - 1
If swapped Then Goto Do_pass

Gosub show
End

' Prints the array on one line.
show:
For i = 0 To 9
Print 1, numbers(i), " "
Next i
Print 1, CrLf
Return

' Exchanges numbers(k) and numbers(k + 1).
Proc Exchange(k As Byte)
Dim keep As Integer
keep = numbers(k)
numbers(k) = numbers(k + 1)
numbers(k + 1) = keep
End Proc
