; Single Precision Division Routine
;	D201: BCDE := left / BCDE, the left operand (the dividend) pushed by
;	the caller as PUSH BC, PUSH DE and consumed here. HL comes back
;	unchanged. A zero dividend gives 0. A zero divisor stores 1 in the
;	error word at 0FF00H and gives 0; an exponent difference out of
;	range stores 2 there and gives 0.
D201:	EXX
	POP HL			; return address
	POP DE
	POP BC			; dividend in the alternate set
	PUSH HL
	EXX
	PUSH HL			; HL is kept for the caller
D202:	CALL D207		; unpack the divisor
	EXX
	CALL D207		; and the dividend
	LD A,C
	OR A
	EXX
	JP Z,D208		; 0 divided by anything is 0
	LD A,C
	OR A
	JR Z,D209		; division by 0
	EXX
	LD A,B
	EXX
	XOR B
	LD B,A			; bit 7: the sign of the quotient
	LD A,C
	XOR 80H
	LD C,A			; divisor exponent - 128
	EXX
	LD A,C
	EXX
	XOR 80H			; dividend exponent - 128
	SUB C			; difference of the exponents
	JP PE,D214		; out of the byte's range
	XOR 80H
	LD C,A			; the difference + 128
	PUSH BC			; sign and exponent wait on the stack
; 32 rounds of restoring division. Remainder R: A (high) and HL, from
; the dividend's significand; divisor: C (high) and DE; the quotient
; bits go into the alternate BCDE, inverted (carry 1 means bit 0).
	LD C,D
	LD D,E
	LD E,H			; C, D, E := divisor significand
	EXX
	LD L,H
	LD H,E
	PUSH HL			; dividend significand, low 16 bits
	LD A,D			; and its high byte
	EXX
	POP HL
	LD B,32			; the round count
	OR A			; no 25th remainder bit yet
D215:	JR C,D217
	SBC HL,DE		; trial subtraction, carry clear here
	SBC A,C
	JR NC,D216		; the divisor fits: carry 0 is bit 1
	ADD HL,DE		; restore; the carry is 1: bit 0
	ADC A,C
	JR D216
D217:	OR A			; the 25th bit: the divisor surely fits
	SBC HL,DE
	SBC A,C			; the borrow cancels the 25th bit
	OR A			; carry 0: bit 1
D216:	EXX
	RL E			; the inverted quotient bit moves in
	RL D
	RL C
	RL B
	EXX
	ADD HL,HL		; R := R * 2
	ADC A,A
	DJNZ D215
	EXX			; D, E, H, L := the quotient, inverted back
	LD A,B
	CPL
	LD H,A
	LD A,C
	CPL
	LD L,A
	PUSH HL
	LD A,D
	CPL
	LD H,A
	LD A,E
	CPL
	LD L,A
	PUSH HL
	EXX
	POP HL
	POP DE
	POP BC
	LD A,C			; the difference + 128
	BIT 7,D
	JR NZ,D218
	SLA L			; a quotient below 1: one place left
	RL H
	RL E
	RL D
	SUB 1
	JR C,D208
D218:	SUB 1			; the biased exponent; 0 or below is 0
	JR C,D208
	JR Z,D208
	LD C,A
	JR D206
D209:	LD A,1			; error word := 1
	JR D219
D214:	LD A,2			; error word := 2
D219:	LD (0FF00H),A
	XOR A
	LD (0FF01H),A
D208:	LD BC,0
	LD D,B
	LD E,B
	POP HL
	RET
; Normalise, round and pack the working form into BCDE; restore HL.
D206:	LD A,C
	OR A
	JR Z,D210		; exponent 0: the result is 0
D211:	BIT 7,D
	JR NZ,D212
	SLA L
	RL H
	RL E
	RL D
	DEC C
	JR NZ,D211
D210:	LD B,0			; zero (C is 0 already)
	LD D,B
	LD E,B
	POP HL
	RET
D212:	BIT 7,L			; round: 80H on the guard byte,
	JR Z,D213		; the carry running up
	INC H
	JR NZ,D213
	INC E
	JR NZ,D213
	INC D
	JR NZ,D213
	INC C			; a carry out of D: the next binade
D213:	SLA D			; pack: the hidden bit goes,
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
D207:	LD L,0
	LD H,E
	LD E,D
	LD D,C
	SET 7,D			; the hidden bit
	RL C			; exponent bit 0 to the carry
	LD A,B
	ADC A,A			; the exponent; the sign stays in B
	LD C,A
	RET
