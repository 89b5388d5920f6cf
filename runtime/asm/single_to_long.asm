; Single To Long Conversion Routine
;	X001: BCDE := the Single in BCDE truncated toward zero, as a Long.
;	Below 1 in magnitude gives 0; so does 2^32 or more. From 2^31 up
;	the top bit is set (the value read as unsigned). HL comes back
;	unchanged.
X001:	PUSH HL
	LD L,0			; unpack: significand D, E, H, L
	LD H,E
	LD E,D
	LD D,C
	SET 7,D
	RL C
	LD A,B
	ADC A,A			; A := exponent; the sign stays in B
	CP 7FH
	JR C,X002		; below 1
	LD C,A
	LD A,9EH
	SUB C			; the count of places right: 31 - (exponent - 7FH)
	JR C,X002		; 2^32 or more
	JR Z,X004
X003:	SRL D
	RR E
	RR H
	RR L
	DEC A
	JR NZ,X003
X004:	BIT 7,B
	LD B,D
	LD C,E
	LD D,H
	LD E,L
	JR Z,X005
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
X005:	POP HL
	RET
X002:	LD BC,0
	LD D,B
	LD E,B
	POP HL
	RET
