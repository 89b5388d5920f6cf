; Single Precision Addition Routine
;	A201: BCDE := left + BCDE, the left operand pushed by the caller as
;	PUSH BC, PUSH DE and consumed here. HL comes back unchanged.
;	Working form (A204): exponent in C, sign in bit 7 of B, significand
;	with its hidden bit in D, E, H and a guard byte in L.
A201:	EXX
	POP HL			; return address
	POP DE
	POP BC			; left operand in the alternate set
	PUSH HL
	EXX
	PUSH HL			; HL is kept for the caller
A202:	CALL A204		; unpack the right operand
	EXX
	CALL A204		; and the left one
	LD A,C
	EXX
	SUB C			; left exponent - right exponent
	JR Z,A206
	JR C,A205
	CALL A207		; the right one is smaller: shift it
	EXX
	LD A,C
	EXX
	LD C,A			; and take the left exponent
	JR A206
A205:	NEG
	EXX
	CALL A207		; the left one is smaller: shift it
	EXX
A206:	EXX
	LD A,B
	EXX
	XOR B
	JP M,A209		; the signs differ
	EXX			; same sign: add the significands
	LD A,L
	EXX
	ADD A,L
	LD L,A
	EXX
	LD A,H
	EXX
	ADC A,H
	LD H,A
	EXX
	LD A,E
	EXX
	ADC A,E
	LD E,A
	EXX
	LD A,D
	EXX
	ADC A,D
	LD D,A
	JR NC,A203
A210:	LD A,D			; a carry out: one place right, unless
	OR E			; the whole result is zero
	OR H
	OR L
	OR C
	JR Z,A203
	SCF
	RR D
	RR E
	RR H
	RR L
	INC C
	JR A203
A209:	EXX			; the signs differ: the larger significand
	LD A,D			; is the minuend
	EXX
	CP D
	JR NZ,A211
	EXX
	LD A,E
	EXX
	CP E
	JR NZ,A211
	EXX
	LD A,H
	EXX
	CP H
	JR NZ,A211
	EXX
	LD A,L
	EXX
	CP L
A211:	JR C,A212
	EXX			; left - right, with the sign of the left
	LD A,L
	EXX
	SUB L
	LD L,A
	EXX
	LD A,H
	EXX
	SBC A,H
	LD H,A
	EXX
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
	LD A,B
	EXX
	LD B,A
	JR A203
A212:	LD A,L			; right - left, with the sign of the right
	EXX
	SUB L
	EXX
	LD L,A
	LD A,H
	EXX
	SBC A,H
	EXX
	LD H,A
	LD A,E
	EXX
	SBC A,E
	EXX
	LD E,A
	LD A,D
	EXX
	SBC A,D
	EXX
	LD D,A
; Normalise, round and pack the working form into BCDE; restore HL.
A203:	LD A,C
	OR A
	JR Z,A213		; exponent 0: the result is 0
A214:	BIT 7,D
	JR NZ,A215
	SLA L
	RL H
	RL E
	RL D
	DEC C
	JR NZ,A214
A213:	LD B,0			; zero (C is 0 already)
	LD D,B
	LD E,B
	POP HL
	RET
A215:	BIT 7,L			; round: 80H on the guard byte,
	JR Z,A216		; the carry running up
	INC H
	JR NZ,A216
	INC E
	JR NZ,A216
	INC D
	JR NZ,A216
	INC C			; a carry out of D: the next binade
A216:	SLA D			; pack: the hidden bit goes,
	RL B			; the sign comes to the carry
	RR C			; sign and exponent bits 7..1
	RR D			; exponent bit 0 and the fraction
	LD B,C
	LD C,D
	LD D,E
	LD E,H
	POP HL
	RET
; Unpack BCDE of the set in use into the working form.
A204:	LD L,0
	LD H,E
	LD E,D
	LD D,C
	SET 7,D			; the hidden bit
	RL C			; exponent bit 0 to the carry
	LD A,B
	ADC A,A			; the exponent; the sign stays in B
	LD C,A
	RET
; Shift the significand D, E, H, L of the set in use right A times.
A207:	SRL D
	RR E
	RR H
	RR L
	DEC A
	JR NZ,A207
	RET
