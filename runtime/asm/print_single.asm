; Single Print Routine
;	P501: the Single in BCDE as text in PRINT_STR. Only magnitudes from
;	2^-20 up to but not including 2^23 print as numbers; any other
;	value, 0 among them, prints as the letter "E". The integer part is
;	written from P401_7, so with at most 7 digits; with 5 or more the
;	text ends there, else a point and n decimals follow: the fraction
;	times 10^n, truncated and written from P401_n with its zeros.
;	n is the compile option of the decimals; the compiler writes its
;	power of ten and its entry label into the three lines marked below.
P501:	CALL P021
	XOR A
	LD (REG_R0),A
	INC A
	LD (REG_R1),A
	LD A,C			; the biased exponent: bits 6..0 of B,
	RLA			; bit 7 of C
	LD A,B
	RLA
	CP 6BH
	JR C,P502		; below 2^-20
	CP 96H
	JR C,P503		; below 2^23
P502:	LD A,'E'
	CALL P011
	JP P031
P503:	BIT 7,B
	JR Z,P504
	RES 7,B			; the magnitude, behind a minus sign
	LD A,'-'
	CALL P011
P504:	PUSH BC			; x, later the left operand of S201
	PUSH DE
	CALL X001		; the integer part
	CALL P401_7
	LD A,(REG_R1)
	CP 6
	JR C,P505
	POP DE			; five digits or more: no decimals
	POP BC
	RET
P505:	CALL P041		; the terminator goes
	LD A,'.'
	CALL P011
	POP DE
	POP BC
	PUSH BC
	PUSH DE
	CALL X001
	CALL X101
	CALL S201		; the fraction: x - its integer part
	PUSH BC
	PUSH DE
	LD BC,447AH		; 10^n as a Single, high word
	LD DE,0000H		; 10^n as a Single, low word
	CALL M201
	CALL X001
	LD A,30H		; zeros count from here
	LD (REG_R0),A
	JP P401_3		; the n decimals
