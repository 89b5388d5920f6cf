; Long Subtraction Routine
;	S101: BCDE := left - BCDE - carry, the left operand pushed by the
;	caller (PUSH BC, PUSH DE) and consumed here. The carry is taken as
;	found: clear it in front for a plain subtraction, set it for "<=".
;	S102 is the entry behind the pops (from the Long comparison).
;	Flags: carry = borrow; Z set when the result is 0.
S101:	POP HL			; return address (POP and EXX keep the carry)
	EXX
	POP DE
	POP BC			; left operand in the alternate set
	EXX
	PUSH HL
S102:	EXX
	LD A,E
	EXX
	SBC A,E
	LD E,A
	EXX
	LD A,D
	EXX
	SBC A,D
	LD D,A
	EXX
	LD A,C
	EXX
	SBC A,C
	LD C,A
	EXX
	LD A,B
	EXX
	SBC A,B
	LD B,A
	JR C,S103
	OR C			; no borrow: Z tells equality
	OR D
	OR E
	RET
S103:	RET NZ			; a borrow: Z must be clear
	INC A
	RET
