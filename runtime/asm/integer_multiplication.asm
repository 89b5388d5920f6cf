; Integer Multiplication Routine
;	M001: HL := HL * DE, the low 16 bits; signs need no care.
;	BC and DE come back unchanged; A and the flags are lost.
M001:	PUSH BC
	LD B,H
	LD C,L			; BC := multiplicand
	LD HL,0
	LD A,16
M002:	ADD HL,HL		; the product moves up one place
	SLA E
	RL D			; next multiplier bit, from the top
	JR NC,M003
	INC E			; rotate it back in at the bottom, so DE survives
	ADD HL,BC
M003:	DEC A
	JR NZ,M002
	POP BC
	RET
