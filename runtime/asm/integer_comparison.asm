; Integer Comparison Routine
;	C001: signed HL against DE. Carry set: HL < DE; Z set: equal.
;	With equal sign bits the flags are those of SBC HL,DE (HL is lost);
;	with different ones they are forced from the sign of DE.
C001:	LD A,H
	XOR D
	JP M,C002		; the signs differ
	SBC HL,DE		; carry is clear after XOR
	RET
C002:	LD A,D			; DE negative: HL is the larger (NC, NZ);
	AND 80H			; DE positive: HL is the smaller (C, NZ)
	CP 7FH
	RET
