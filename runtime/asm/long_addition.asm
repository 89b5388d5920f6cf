; Long Addition Routine
;	A101: BCDE := left + BCDE, the left operand pushed by the caller as
;	PUSH BC, PUSH DE and consumed here. The alternate set is lost.
A101:	POP HL			; return address
	EXX
	POP DE			; left operand, low word
	POP BC			; and high word, in the alternate set
	EXX
	PUSH HL
	EXX			; byte by byte through A, lowest first
	LD A,E
	EXX
	ADD A,E
	LD E,A
	EXX
	LD A,D
	EXX
	ADC A,D
	LD D,A
	EXX
	LD A,C
	EXX
	ADC A,C
	LD C,A
	EXX
	LD A,B
	EXX
	ADC A,B
	LD B,A
	RET
