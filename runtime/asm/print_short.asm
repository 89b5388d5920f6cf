; Short Print Routine
;	P201: the signed value in E as text in PRINT_STR; P211: unsigned.
;	Digits by division through 100 and 10 (D11), leading zeros left
;	out as in the Integer print.
P201:	CALL P021
	BIT 7,E
	JR Z,P212
	XOR A			; E := -E (80H stays, read unsigned)
	SUB E
	LD E,A
	LD A,'-'
	CALL P011
	JR P212
P211:	CALL P021
P212:	LD B,0
	LD L,E
	LD H,100
	CALL P213
	LD H,10
	CALL P213
	LD A,L			; the last digit, always written
	OR 30H
	CALL P011
	JP P031
P213:	CALL D11		; L := digit, H := remainder
	LD A,L
	LD L,H
	OR B
	RET Z			; a leading zero
	OR 30H
	LD B,30H
	JP P011
