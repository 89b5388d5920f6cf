; Short Multiplication Routine
;	M01: HL := A * L (the caller reads the low byte from L); signs need
;	no care. The multiplicand goes to E for the 8 rounds on HL.
;	BC and DE come back unchanged.
M01:	PUSH DE
	PUSH BC
	LD E,L
	LD D,0			; DE := multiplicand
	LD H,D
	LD L,D			; HL := 0
	LD B,8
M02:	ADD HL,HL		; the product moves up one place
	RLA			; next multiplier bit, from the top
	JR NC,M03
	ADD HL,DE
M03:	DJNZ M02
	POP BC
	POP DE
	RET
