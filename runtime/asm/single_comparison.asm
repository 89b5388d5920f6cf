; Single Precision Comparison Routine
;	C201: equality of left and BCDE: Z set when equal. An operand whose
;	B is 80H (-0) counts as B = 0 first.
;	C202: ordering: BCDE := left - BCDE by a copy of the addition with
;	the right operand's sign flipped; S set: left < BCDE, Z set: equal.
;	The left operand is pushed by the caller as PUSH BC, PUSH DE and
;	consumed by both. HL comes back unchanged.
C201:	EXX
	POP HL			; return address
	POP DE
	POP BC			; left operand in the alternate set
	PUSH HL
	LD A,B
	CP 80H
	JR NZ,C218
	LD B,0
C218:	EXX
	LD A,B
	CP 80H
	JR NZ,C219
	LD B,0
C219:	EXX			; bytes from the high end
	LD A,B
	EXX
	CP B
	RET NZ
	EXX
	LD A,C
	EXX
	CP C
	RET NZ
	EXX
	LD A,D
	EXX
	CP D
	RET NZ
	EXX
	LD A,E
	EXX
	CP E
	RET
C202:	EXX
	POP HL			; return address
	POP DE
	POP BC			; left operand in the alternate set
	PUSH HL
	EXX
	PUSH HL			; HL is kept for the caller
	LD A,B
	XOR 80H			; - right
	LD B,A
C203:	CALL C205		; unpack the right operand
	EXX
	CALL C205		; and the left one
	LD A,C
	EXX
	SUB C			; left exponent - right exponent
	JR Z,C207
	JR C,C206
	CALL C208		; the right one is smaller: shift it
	EXX
	LD A,C
	EXX
	LD C,A			; and take the left exponent
	JR C207
C206:	NEG
	EXX
	CALL C208		; the left one is smaller: shift it
	EXX
C207:	EXX
	LD A,B
	EXX
	XOR B
	JP M,C209		; the signs differ
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
	JR NC,C204
C210:	LD A,D			; a carry out: one place right, unless
	OR E			; the whole result is zero
	OR H
	OR L
	OR C
	JR Z,C204
	SCF
	RR D
	RR E
	RR H
	RR L
	INC C
	JR C204
C209:	EXX			; the signs differ: the larger significand
	LD A,D			; is the minuend
	EXX
	CP D
	JR NZ,C211
	EXX
	LD A,E
	EXX
	CP E
	JR NZ,C211
	EXX
	LD A,H
	EXX
	CP H
	JR NZ,C211
	EXX
	LD A,L
	EXX
	CP L
C211:	JR C,C212
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
	JR C204
C212:	LD A,L			; right - left, with the sign of the right
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
C204:	LD A,C
	OR A
	JR Z,C213		; exponent 0: the result is 0
C214:	BIT 7,D
	JR NZ,C215
	SLA L
	RL H
	RL E
	RL D
	DEC C
	JR NZ,C214
C213:	LD B,0			; zero (C is 0 already)
	LD D,B
	LD E,B
	JR C217
C215:	BIT 7,L			; round: 80H on the guard byte,
	JR Z,C216		; the carry running up
	INC H
	JR NZ,C216
	INC E
	JR NZ,C216
	INC D
	JR NZ,C216
	INC C			; a carry out of D: the next binade
C216:	SLA D			; pack: the hidden bit goes,
	RL B			; the sign comes to the carry
	RR C			; sign and exponent bits 7..1
	RR D			; exponent bit 0 and the fraction
	LD B,C
	LD C,D
	LD D,E
	LD E,H
; Flags from the difference: S its sign, Z set when it is 0.
C217:	POP HL
	LD A,B
	OR A
	RET NZ			; S tells the sign, Z is clear
	LD A,C			; B = 0: exponent bit 0 decides
	RLCA
	AND 1			; S clear, Z set for a zero difference
	RET
; Unpack BCDE of the set in use into the working form.
C205:	LD L,0
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
C208:	SRL D
	RR E
	RR H
	RR L
	DEC A
	JR NZ,C208
	RET
