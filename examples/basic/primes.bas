' The primes below 50, by the sieve of Eratosthenes.
' Compile and run:  mbbasic primes.bas && mbsim --out-port 1 primes.obj
Dim flags(50) As Byte
Dim i, j As Byte

For i = 2 To 49
flags(i) = 1
Next i

i = 2
While i < 8
If flags(i) = 1 Then
' strike out every multiple of i, from i * i on
j = i * i
While j < 50
flags(j) = 0
j = j + i
Wend
Endif
i = i + 1
Wend

For i = 2 To 49
If flags(i) = 1 Then Print 1, i, " "
Next i
Print 1, CrLf
End
