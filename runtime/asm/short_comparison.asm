; Short Comparison Routine
;	C01: signed A against L. Carry set: A < L; Z set: equal. H is lost.
C01:	LD H,A
	XOR L
	JP M,C02		; the signs differ
	LD A,H
	SUB L
	RET
C02:	LD A,L			; L negative: A is the larger (NC, NZ);
	AND 80H			; L positive: A is the smaller (C, NZ)
	CP 7FH
	RET
