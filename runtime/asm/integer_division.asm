; Integer Division Routine
;	D011: unsigned HL / DE: quotient in HL, remainder in DE.
;	D001: signed HL / DE: quotient in HL, the remainder is that of the
;	magnitudes (its sign is not corrected).
;	A divisor of 0 gives a quotient of all ones (then the sign rule).
;	BC comes back unchanged; A and the flags are lost.
D001:	LD A,H
	XOR D			; bit 7: the sign of the quotient
	PUSH AF
	BIT 7,H
	JR Z,D002
	XOR A			; HL := -HL
	SUB L
	LD L,A
	SBC A,A
	SUB H
	LD H,A
D002:	BIT 7,D
	JR Z,D003
	XOR A			; DE := -DE
	SUB E
	LD E,A
	SBC A,A
	SUB D
	LD D,A
D003:	CALL D011
	POP AF
	OR A
	RET P
	XOR A			; a negative quotient
	SUB L
	LD L,A
	SBC A,A
	SUB H
	LD H,A
	RET
; Restoring division, 16 rounds: BC holds the dividend, shifting out at
; the top into the remainder HL, and the quotient bits shifting in below.
D011:	PUSH BC
	LD B,H
	LD C,L
	LD HL,0
	LD A,16
D012:	SLA C
	RL B
	ADC HL,HL		; remainder := remainder * 2 + next dividend bit
	JR C,D014		; 17 bits: larger than any divisor
	SBC HL,DE		; carry is clear here
	JR NC,D013		; the divisor fits
	ADD HL,DE		; it does not: restore
	DEC A
	JR NZ,D012
	JR D015
D014:	OR A
	SBC HL,DE		; the borrow cancels the 17th bit
D013:	INC C			; quotient bit 1
	DEC A
	JR NZ,D012
D015:	EX DE,HL		; DE := remainder
	LD H,B
	LD L,C			; HL := quotient
	POP BC
	RET
