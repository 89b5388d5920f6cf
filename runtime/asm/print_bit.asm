; Bit Print Routine
;	P301: "1" in PRINT_STR when E is not 0, else "0".
P301:	CALL P021
	LD A,E
	OR A
	LD A,30H
	JR Z,P302
	INC A
P302:	CALL P011
	JP P031
