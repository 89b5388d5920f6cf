' A multiplication table from 1 x 1 to 9 x 9, in columns.
' Compile and run:  mbbasic times_table.bas && mbsim --out-port 1 times_table.obj
Dim row, col, product As Byte

For row = 1 To 9
For col = 1 To 9
product = row * col
' pad to three places
If product < 10 Then Print 1, " "
Print 1, " ", product
Next col
Print 1, CrLf
Next row
End
