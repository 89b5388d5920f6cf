; Long Multiplication Routine
;	M101: BCDE := left * BCDE, the low 32 bits; the left operand pushed
;	by the caller (PUSH BC, PUSH DE) and consumed here.
;	The multiplicand doubles across DE (low) and DE' (high), the product
;	grows across HL and HL'; M102 takes eight multiplier bits from A.
M101:	POP HL			; return address
	EXX
	POP DE
	POP BC			; left operand: the multiplicand
	EXX
	PUSH HL
	PUSH BC			; multiplier, high word
	PUSH DE			; multiplier, low word
	EXX
	PUSH DE			; multiplicand, low word
	LD D,B
	LD E,C			; DE' := multiplicand, high word
	LD HL,0			; HL' := product, high word
	EXX
	POP DE			; DE := multiplicand, low word
	LD HL,0			; HL := product, low word
	POP BC
	LD A,C
	CALL M102
	LD A,B
	CALL M102
	POP BC
	LD A,C
	CALL M102
	LD A,B
	CALL M102
	EX DE,HL		; DE := product, low word
	EXX
	PUSH HL
	EXX
	POP BC			; BC := product, high word
	RET
; Eight rounds over the bits of A, lowest first. A marker bit shifted in
; at the top ends the loop when it leaves A.
M102:	SCF
	RRA
M103:	JR NC,M104
	ADD HL,DE		; product += multiplicand
	EXX
	ADC HL,DE
	EXX
M104:	SLA E			; multiplicand *= 2
	RL D
	EXX
	RL E
	RL D
	EXX
	SRL A			; next multiplier bit
	JR NZ,M103
	RET
