; Single Precision Multiplication Routine
;	M201: BCDE := left * BCDE, the left operand pushed by the caller as
;	PUSH BC, PUSH DE and consumed here. HL comes back unchanged.
;	An exponent out of range stores 2 in the error word at 0FF00H and
;	gives 0 when too small, the largest pattern (with the sign) when
;	too large.
M201:	EXX
	POP HL			; return address
	POP DE
	POP BC			; left operand in the alternate set
	PUSH HL
	EXX
	PUSH HL			; HL is kept for the caller
M202:	CALL M205		; unpack the right operand
	LD A,C
	OR A
	JP Z,M206		; 0 times anything is 0
	EXX
	CALL M205		; and the left one
	LD A,C
	OR A
	EXX
	JP Z,M206
	EXX
	LD A,B
	EXX
	XOR B
	LD B,A			; bit 7: the sign of the product
	LD A,C
	XOR 80H
	LD C,A			; right exponent - 128
	EXX
	LD A,C
	EXX
	XOR 80H			; left exponent - 128
	ADD A,C			; sum of the unbiased exponents
	JP PE,M207		; out of the byte's range
	XOR 80H
	LD C,A			; the sum + 128, from 0 to 255
	PUSH BC			; sign and exponent wait on the stack
; 32 rounds of shift-right multiplication. Multiplier N: BC (low) and
; BC' (high); multiplicand M: DE and DE'; the upper half P of the
; product: HL and HL'. Each round adds M to P when the bit leaving N is
; 1, then shifts P right. While the low byte of N is 0 and at least 9
; rounds remain, 8 rounds are a move of bytes.
	LD B,H
	LD C,L			; N low := right significand H, L
	PUSH DE
	EXX
	POP BC			; N high := right significand D, E
	PUSH HL
	LD HL,0
	EXX
	POP DE			; M low := left significand H', L'
	LD HL,0			; (M high is D', E' already)
	LD A,32			; the round count
M210:	INC C
	DEC C
	JR NZ,M212
	CP 9
	JR C,M212
	EX AF,AF'		; 8 rounds at once: N and P move one byte down
	LD C,B
	LD L,H
	EXX
	LD A,L
	PUSH AF
	LD A,C
	LD C,B
	LD B,0
	LD L,H
	LD H,0
	EXX
	LD B,A
	POP AF
	LD H,A
	EX AF,AF'
	SUB 8
	JR M210
M212:	EXX
	SRL B
	RR C
	EXX
	RR B
	RR C			; the bit leaving N
	JR NC,M213
	ADD HL,DE		; P += M
	EXX
	ADC HL,DE
	EXX
M213:	EXX			; P moves right, with the carry of the sum
	RR H
	RR L
	EXX
	RR H
	RR L
	DEC A
	JR NZ,M210
	EXX
	PUSH HL
	EXX
	POP DE			; D, E, H, L := P
	POP BC
	LD A,C
	BIT 7,D
	JR NZ,M214
	SLA L			; a product below 2: one place left
	RL H
	RL E
	RL D
	ADD A,1
	JR M215
M214:	ADD A,2
M215:	JR C,M208		; the exponent passes 255
	LD C,A
	JR M204
M207:	JP M,M208		; the true sum was above 127
	CALL M209		; below -128: error 2, and 0
M206:	LD BC,0
	LD D,B
	LD E,B
	POP HL
	RET
M208:	CALL M209		; too large: error 2, the largest pattern
	LD C,0FFH
	LD D,C
	LD E,C
	LD H,C
	JR M216
M209:	LD A,2			; error word := 2
	LD (0FF00H),A
	XOR A
	LD (0FF01H),A
	RET
; Normalise, round and pack the working form into BCDE; restore HL.
; Here a carry of the rounding beyond exponent 255 is an overflow too.
M204:	LD A,C
	OR A
	JR Z,M217		; exponent 0: the result is 0
M218:	BIT 7,D
	JR NZ,M219
	SLA L
	RL H
	RL E
	RL D
	DEC C
	JR NZ,M218
M217:	LD B,0			; zero (C is 0 already)
	LD D,B
	LD E,B
	POP HL
	RET
M219:	BIT 7,L			; round: 80H on the guard byte,
	JR Z,M216		; the carry running up
	INC H
	JR NZ,M216
	INC E
	JR NZ,M216
	INC D
	JR NZ,M216
	INC C			; a carry out of D: the next binade
	JR Z,M208
M216:	SLA D			; pack: the hidden bit goes,
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
M205:	LD L,0
	LD H,E
	LD E,D
	LD D,C
	SET 7,D			; the hidden bit
	RL C			; exponent bit 0 to the carry
	LD A,B
	ADC A,A			; the exponent; the sign stays in B
	LD C,A
	RET
