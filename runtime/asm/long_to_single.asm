; Long To Single Conversion Routine
;	X101: BCDE := the Long in BCDE as a Single; X111: the same for an
;	unsigned value. The 32 bits go into the significand D, E, H, L
;	under the exponent 9EH, then normalise, round (halves away from
;	zero) and pack. HL comes back unchanged.
X101:	BIT 7,B
	JR Z,X111
	XOR A			; negative: BCDE := -BCDE
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
	LD A,80H		; with the sign
	JR X102
X111:	XOR A
X102:	PUSH HL
	LD L,E
	LD H,D
	LD E,C
	LD D,B
	LD B,A			; the sign
	LD C,9EH		; 2^31 at the top bit of D
	OR D
	OR E
	OR H
	OR L
	JR NZ,X104
	LD B,A			; 0 stays 0
	LD C,A
	LD D,A
	LD E,A
	POP HL
	RET
; Normalise, round and pack the working form into BCDE; restore HL.
X104:	LD A,C
	OR A
	JR Z,X105		; exponent 0: the result is 0
X106:	BIT 7,D
	JR NZ,X107
	SLA L
	RL H
	RL E
	RL D
	DEC C
	JR NZ,X106
X105:	LD B,0			; zero (C is 0 already)
	LD D,B
	LD E,B
	POP HL
	RET
X107:	BIT 7,L			; round: 80H on the guard byte,
	JR Z,X108		; the carry running up
	INC H
	JR NZ,X108
	INC E
	JR NZ,X108
	INC D
	JR NZ,X108
	INC C			; a carry out of D: the next binade
X108:	SLA D			; pack: the hidden bit goes,
	RL B			; the sign comes to the carry
	RR C			; sign and exponent bits 7..1
	RR D			; exponent bit 0 and the fraction
	LD B,C
	LD C,D
	LD D,E
	LD E,H
	POP HL
	RET
