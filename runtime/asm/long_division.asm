; Long Division Routine
;	D121: unsigned left / BCDE, D101: signed; the left operand (the
;	dividend) pushed by the caller as PUSH BC, PUSH DE and consumed here.
;	Out: quotient in BCDE, remainder in the alternate BCDE (EXX to get
;	it). D101 gives the quotient the sign rule; the remainder is that of
;	the magnitudes. A divisor of 0 gives a quotient of all ones (then the
;	sign rule) and the dividend as remainder.
;	D111 is the unsigned core: dividend in the alternate BCDE, divisor
;	in BCDE. D104 negates the BCDE of the set in use.
D101:	POP HL			; return address
	EXX
	POP DE
	POP BC			; dividend in the alternate set
	EXX
	PUSH HL
D103:	EXX
	LD A,B
	EXX
	XOR B			; bit 7: the sign of the quotient
	PUSH AF
	BIT 7,B
	CALL NZ,D104		; |divisor|
	EXX
	BIT 7,B
	CALL NZ,D104		; |dividend|
	EXX
	CALL D111
	POP AF
	OR A
	RET P
D104:	XOR A			; BCDE := -BCDE
	SUB E
	LD E,A
	LD A,0
	SBC A,D
	LD D,A
	LD A,0
	SBC A,C
	LD C,A
	LD A,0
	SBC A,B
	LD B,A
	RET
D121:	POP HL			; return address
	EXX
	POP DE
	POP BC
	EXX
	PUSH HL
; 32 rounds of restoring division. The dividend shifts out of BC' (low)
; and BC (high) into the remainder across HL (low) and HL' (high); the
; quotient bits shift in behind it. The divisor stands in DE and DE'.
D111:	PUSH BC			; divisor, high word
	EXX
	PUSH BC			; dividend, high word
	LD B,D
	LD C,E			; BC' := dividend, low word
	LD HL,0
	EXX
	POP BC			; BC := dividend, high word
	LD HL,0
	EXX
	POP DE			; DE' := divisor, high word
	LD A,32			; the round count, across EXX
D112:	SLA C			; (alternate set in use here)
	RL B
	EXX
	RL C
	RL B
	ADC HL,HL		; remainder := remainder * 2 + next bit
	EXX
	ADC HL,HL
	JR C,D114		; 33 bits: larger than any divisor
	EXX
	SBC HL,DE		; carry is clear here
	EXX
	SBC HL,DE
	JR NC,D113		; the divisor fits
	EXX			; it does not: restore
	ADD HL,DE
	EXX
	ADC HL,DE
	DEC A
	JR NZ,D112
	JR D115
D114:	EXX
	OR A
	SBC HL,DE
	EXX
	SBC HL,DE		; the borrow cancels the 33rd bit
D113:	INC C			; quotient bit 1
	DEC A
	JR NZ,D112
D115:	PUSH BC			; quotient, low word
	LD B,H
	LD C,L			; BC' := remainder, high word
	EXX
	POP DE			; DE := quotient, low word (BC holds the high one)
	PUSH HL
	EXX
	POP DE			; DE' := remainder, low word
	EXX
	RET
