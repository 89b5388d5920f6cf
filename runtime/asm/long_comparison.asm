; Long Comparison Routine
;	C101: signed left against BCDE, the left operand pushed by the
;	caller (PUSH BC, PUSH DE) and consumed here. Carry set: left < BCDE;
;	Z set: equal. Equal sign bits go on at C102 into the subtraction
;	S102, which leaves the difference in BCDE.
C101:	POP HL			; return address
	EXX
	POP DE
	POP BC			; left operand in the alternate set
	EXX
	PUSH HL
	EXX
	LD A,B
	EXX
	XOR B
	JP P,C102		; same sign: subtract
	LD A,B			; BCDE negative: left is the larger (NC, NZ);
	AND 80H			; BCDE positive: left is the smaller (C, NZ)
	CP 7FH
	RET
C102:	JP S102			; carry is clear after XOR
