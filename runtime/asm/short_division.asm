; Short Division Routine
;	D01: signed A / L: quotient in A, remainder of the magnitudes in H.
;	D11: unsigned L / H: quotient in L and A, remainder in H.
;	A divisor of 0 gives a quotient of all ones (then the sign rule).
;	BC and DE come back unchanged.
D01:	PUSH BC
	LD B,A
	XOR L
	LD C,A			; bit 7: the sign of the quotient
	LD A,B
	OR A
	JP P,D02
	NEG
D02:	LD B,A			; |dividend|
	LD A,L
	OR A
	JP P,D03
	NEG
D03:	LD H,A			; |divisor|
	LD L,B
	CALL D11
	BIT 7,C
	JR Z,D04
	NEG			; a negative quotient
D04:	POP BC
	RET
; Restoring division, 8 rounds: the dividend shifts out of L into the
; remainder H, the quotient bits shift into L behind it.
D11:	PUSH BC
	LD C,H			; C := divisor
	LD H,0
	LD B,8
D12:	ADD HL,HL
	LD A,H
	JR C,D14		; 9 bits: larger than any divisor
	SUB C
	JR C,D13		; the divisor does not fit
D15:	LD H,A
	INC L			; quotient bit 1
D13:	DJNZ D12
	LD A,L
	POP BC
	RET
D14:	SUB C			; the borrow cancels the 9th bit
	JR D15
