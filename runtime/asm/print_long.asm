; Long Print Routine
;	P401: the signed value in BCDE as text in PRINT_STR; P411: unsigned.
;	For each power of ten from 10^9 down to 10 the number is pushed and
;	divided by D121; P403 writes the quotient digit and takes the
;	remainder back with EXX. REG_R0 holds 0 while only zeros were seen,
;	then 30H; REG_R1 counts the digits written, from 1.
;	P401_7 to P401_1 stand in front of the steps for 10^6 down to the
;	last digit: the Single print enters there.
P401:	CALL P021
	BIT 7,B
	JR Z,P402
	CALL D104		; BCDE := -BCDE (80000000H stays, read unsigned)
	LD A,'-'
	CALL P011
	JR P402
P411:	CALL P021
P402:	XOR A
	LD (REG_R0),A
	INC A
	LD (REG_R1),A
	PUSH BC
	PUSH DE
	LD BC,highw 1000000000
	LD DE,loww 1000000000
	CALL D121
	CALL P403
	PUSH BC
	PUSH DE
	LD BC,highw 100000000
	LD DE,loww 100000000
	CALL D121
	CALL P403
	PUSH BC
	PUSH DE
	LD BC,highw 10000000
	LD DE,loww 10000000
	CALL D121
	CALL P403
P401_7:	PUSH BC
	PUSH DE
	LD BC,highw 1000000
	LD DE,loww 1000000
	CALL D121
	CALL P403
P401_6:	PUSH BC
	PUSH DE
	LD BC,highw 100000
	LD DE,loww 100000
	CALL D121
	CALL P403
P401_5:	PUSH BC
	PUSH DE
	LD BC,0
	LD DE,10000
	CALL D121
	CALL P403
P401_4:	PUSH BC
	PUSH DE
	LD BC,0
	LD DE,1000
	CALL D121
	CALL P403
P401_3:	PUSH BC
	PUSH DE
	LD BC,0
	LD DE,100
	CALL D121
	CALL P403
P401_2:	PUSH BC
	PUSH DE
	LD BC,0
	LD DE,10
	CALL D121
	CALL P403
P401_1:	LD A,E			; the last digit, always written
	OR 30H
	CALL P011
	LD HL,REG_R1
	INC (HL)
	JP P031
P403:	LD A,(REG_R0)
	OR E
	JR Z,P404		; a leading zero
	LD A,E
	OR 30H
	CALL P011
	LD A,30H
	LD (REG_R0),A
	LD HL,REG_R1
	INC (HL)
P404:	EXX			; the remainder goes on
	RET
