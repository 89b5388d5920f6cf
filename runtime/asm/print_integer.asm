; Integer Print Routine
;	P101: the signed value in DE as text in PRINT_STR; P111: unsigned.
;	Digits by division through 10000, 1000, 100 and 10 (D011); B stays
;	0 while only zeros were seen, then holds 30H, so that leading zeros
;	are left out.
P101:	CALL P021
	BIT 7,D
	JR Z,P112
	XOR A			; DE := -DE (8000H stays, read unsigned)
	SUB E
	LD E,A
	SBC A,A
	SUB D
	LD D,A
	LD A,'-'
	CALL P011
	JR P112
P111:	CALL P021
P112:	EX DE,HL
	LD B,0
	LD DE,10000
	CALL P113
	LD DE,1000
	CALL P113
	LD DE,100
	CALL P113
	LD DE,10
	CALL P113
	LD A,L			; the last digit, always written
	OR 30H
	CALL P011
	JP P031
P113:	CALL D011		; HL := digit, DE := remainder
	LD A,L
	EX DE,HL
	OR B
	RET Z			; a leading zero
	OR 30H
	LD B,30H
	JP P011
