; Print Routine
;	The text of a number is built in PRINT_STR; PRINT_IND, the byte in
;	front of it, counts the characters, so a character goes to
;	PRINT_IND + count. Of the 12 cells, 11 take characters and the last
;	one the terminator: a character beyond that is dropped.
;	P001: write the text in PRINT_STR to port C, up to its 0 byte.
;	P002: the same for the 0-terminated text at HL.
;	P011: append A (BC, DE and HL come back unchanged).
;	P021: empty the buffer. P031: append the 0 terminator.
;	P041: take the last character (the terminator) off again.
P001:	LD HL,PRINT_STR
P002:	LD A,(HL)
	OR A
	RET Z
	OUT (C),A
	INC HL
	JR P002
P011:	PUSH HL
	PUSH BC
	LD C,A
	LD A,(PRINT_IND)
	CP 11
	JR NC,P013		; full: the character is dropped
P012:	INC A
	LD (PRINT_IND),A
	LD HL,PRINT_IND
	ADD A,L
	LD L,A
	JR NC,P014
	INC H
P014:	LD (HL),C
P013:	POP BC
	POP HL
	RET
P021:	XOR A
	LD (PRINT_IND),A
	RET
P031:	PUSH HL
	PUSH BC
	LD C,0
	LD A,(PRINT_IND)
	CP 12
	JR C,P012
	JR P013
P041:	LD A,(PRINT_IND)
	OR A
	RET Z
	DEC A
	LD (PRINT_IND),A
	RET
