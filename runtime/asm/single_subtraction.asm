; Single Precision Subtraction Routine
;	S201: BCDE := left - BCDE, the left operand pushed by the caller as
;	PUSH BC, PUSH DE and consumed here. HL comes back unchanged.
;	The right operand's sign is flipped, then the body of the addition
;	follows, a copy of its own so that this block stands alone.
S201:	EXX
	POP HL			; return address
	POP DE
	POP BC			; left operand in the alternate set
	PUSH HL
	EXX
	PUSH HL			; HL is kept for the caller
	LD A,B
	XOR 80H			; - right
	LD B,A
S202:	CALL S204		; unpack the right operand
	EXX
	CALL S204		; and the left one
	LD A,C
	EXX
	SUB C			; left exponent - right exponent
	JR Z,S206
	JR C,S205
	CALL S207		; the right one is smaller: shift it
	EXX
	LD A,C
	EXX
	LD C,A			; and take the left exponent
	JR S206
S205:	NEG
	EXX
	CALL S207		; the left one is smaller: shift it
	EXX
S206:	EXX
	LD A,B
	EXX
	XOR B
	JP M,S209		; the signs differ
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
	JR NC,S203
S210:	LD A,D			; a carry out: one place right, unless
	OR E			; the whole result is zero
	OR H
	OR L
	OR C
	JR Z,S203
	SCF
	RR D
	RR E
	RR H
	RR L
	INC C
	JR S203
S209:	EXX			; the signs differ: the larger significand
	LD A,D			; is the minuend
	EXX
	CP D
	JR NZ,S211
	EXX
	LD A,E
	EXX
	CP E
	JR NZ,S211
	EXX
	LD A,H
	EXX
	CP H
	JR NZ,S211
	EXX
	LD A,L
	EXX
	CP L
S211:	JR C,S212
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
	JR S203
S212:	LD A,L			; right - left, with the sign of the right
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
S203:	LD A,C
	OR A
	JR Z,S213		; exponent 0: the result is 0
S214:	BIT 7,D
	JR NZ,S215
	SLA L
	RL H
	RL E
	RL D
	DEC C
	JR NZ,S214
S213:	LD B,0			; zero (C is 0 already)
	LD D,B
	LD E,B
	POP HL
	RET
S215:	BIT 7,L			; round: 80H on the guard byte,
	JR Z,S216		; the carry running up
	INC H
	JR NZ,S216
	INC E
	JR NZ,S216
	INC D
	JR NZ,S216
	INC C			; a carry out of D: the next binade
S216:	SLA D			; pack: the hidden bit goes,
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
S204:	LD L,0
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
S207:	SRL D
	RR E
	RR H
	RR L
	DEC A
	JR NZ,S207
	RET
