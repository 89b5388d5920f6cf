' Degrees Celsius to Fahrenheit, from -20 to 100 in steps of 15, with one decimal.
' Compile and run:  mbbasic temperatures.bas && mbsim --out-port 1 temperatures.obj
#define SINGLE_DECIMAL_PLACES = 1
Dim celsius As Integer
Dim fahrenheit As Single

For celsius = -20 To 100 Step 15
fahrenheit = ToFahrenheit(celsius)
Print 1, celsius, " C = ", fahrenheit, " F", CrLf
Next celsius
End

Function ToFahrenheit(c As Single) As Single
ReturnValue c * 1.8 + 32
End Function
