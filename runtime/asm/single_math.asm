; Single Precision Mathematical Functions
;	F001 Sqr, F002 Sin, F003 Cos, F004 Tan, F005 Exp, F006 Ln, F007 Log.
;	The caller has the argument in BCDE and pushes it (PUSH BC,
;	PUSH DE) before the call and drops it (two POP HL) after; each
;	function reads it through IX, which comes back unchanged. The
;	result is in BCDE.
;	Errors go into the word at 0FF00H: 1 for an argument outside the
;	domain (Sqr of a negative number, Ln and Log of 0 or less; the
;	result is 0), 2 for an overflow (Exp above 88.72284, Tan of pi/2
;	in magnitude; the result is 7F7FFFFFH). The cells from 0FF02H on
;	hold the values saved on the way.
;	The block carries its own Single arithmetic, so that it stands
;	alone: F072 add and F071 subtract with the left operand on the
;	stack, F054 the negated add (BCDE - stack), F053 multiply, F050
;	divide, F010 normalise and pack, F065 compare with a constant.
;	The add, multiply and divide are copies of A201, M201 and D201
;	under labels of their own: a change there belongs here too.
F001:	CALL F088
	CALL F101
	POP IX
	RET
F002:	CALL F088
	CALL F210
	POP IX
	RET
F003:	CALL F088
	CALL F201
	POP IX
	RET
F004:	CALL F088
	CALL F220
	POP IX
	RET
F005:	CALL F088
	CALL F301
	POP IX
	RET
F006:	CALL F088
	CALL F401
	POP IX
	RET
F007:	CALL F088
	CALL F401
	PUSH BC
	PUSH DE
	LD BC,4013H
	LD DE,5D8EH		; ln 10
	CALL F050
	POP IX
	RET
; Save IX on the stack and read the argument through it into BCDE.
F088:	POP HL			; own return address
	PUSH IX
	LD IX,0
	ADD IX,SP		; IX+2: the caller's return, IX+4: the argument
	PUSH HL
	LD E,(IX+4)
	LD D,(IX+5)
	LD C,(IX+6)
	LD B,(IX+7)
	RET
; Error word := A.
F085:	LD (0FF00H),A
	XOR A
	LD (0FF01H),A
	RET
; Results: 0, and the largest Single 7F7FFFFFH.
F083:	LD BC,0
	LD D,B
	LD E,B
	RET
F084:	LD BC,7F7FH
	LD DE,0FFFFH
	RET
; Sqr: the first guess has half the unbiased exponent and the argument's
; significand; four Newton rounds x := (x + a / x) / 2 follow.
F101:	LD A,C
	RLA
	LD A,B
	RLA			; the exponent
	OR A
	JR Z,F083		; Sqr 0 = 0, whatever the sign
	BIT 7,B
	JR Z,F102
	LD A,1			; no root of a negative number
	CALL F085
	JR F083
F102:	LD (0FF1AH),DE		; a
	LD (0FF1CH),BC
	ADD A,7FH
	RRA			; (exponent + 127) / 2
	SRL A
	LD B,A
	RES 7,C
	JR NC,F103
	SET 7,C
F103:	LD A,4
F104:	LD (0FF1EH),A		; rounds left
	LD (0FF06H),DE		; x
	LD (0FF08H),BC
	LD HL,(0FF1CH)
	PUSH HL
	LD HL,(0FF1AH)
	PUSH HL
	CALL F050		; a / x
	LD HL,(0FF08H)
	PUSH HL
	LD HL,(0FF06H)
	PUSH HL
	CALL F072		; x + a / x
	LD A,C			; halved: exponent - 1
	SUB 80H
	LD C,A
	JR NC,F105
	DEC B
F105:	LD A,(0FF1EH)
	DEC A
	JR NZ,F104
	RET
; Cos of BCDE. The argument is reduced modulo 2 pi (F063), and the
; comparisons with pi/2, pi and 3 pi/2 choose a quadrant path; each
; path brings the value into the first quadrant, where F068 gives the
; cosine by a polynomial in its square, with the quadrant's sign.
F201:	RES 7,B			; cos is even
	CALL F063
	LD HL,F901
	CALL F065
	JR C,F066
	LD HL,F902
	CALL F065
	JR C,F073
	LD HL,F903
	CALL F065
	JR C,F074
	LD HL,F904
	CALL F065
	JR C,F075
F076:	PUSH BC			; 2 pi and above (by rounding): y - 2 pi
	PUSH DE
	LD BC,40C9H
	LD DE,0FDBH
	CALL F071
	RES 7,B
F066:	JP F068			; below pi/2: cos y
F073:	PUSH BC			; pi/2 to pi: -cos (pi - y)
	PUSH DE
	LD BC,4049H
	LD DE,0FDBH
	CALL F054
	JR F077
F074:	PUSH BC			; pi to 3 pi/2: -cos (y - pi)
	PUSH DE
	LD BC,4049H
	LD DE,0FDBH
	CALL F071
F077:	CALL F068
	LD A,B
	OR C
	RET Z			; 0 keeps its plus sign
	LD A,B
	XOR 80H
	LD B,A
	RET
F075:	PUSH BC			; 3 pi/2 to 2 pi: cos (2 pi - y)
	PUSH DE
	LD BC,40C9H
	LD DE,0FDBH
	CALL F054
; The first quadrant, y from 0 to pi/2: up to pi/4 the cosine polynomial
; in w = y * y; above it sin t with t = pi/2 - y (exact), as t times a
; polynomial in t * t, so that the result keeps its precision near pi/2.
F068:	LD HL,F909
	CALL F065
	JR NC,F078
	PUSH BC
	PUSH DE
	CALL F053
	LD (0FF0EH),DE		; w
	LD (0FF10H),BC
	LD HL,F910
	LD A,5
	JP F069
F078:	PUSH BC
	PUSH DE
	LD BC,3FC9H
	LD DE,0FDBH
	CALL F054		; t = pi/2 - y
	LD (0FF0AH),DE
	LD (0FF0CH),BC
	PUSH BC
	PUSH DE
	CALL F053
	LD (0FF0EH),DE		; w = t * t
	LD (0FF10H),BC
	LD HL,F911
	LD A,4
	CALL F069
	PUSH BC
	PUSH DE
	LD DE,(0FF0AH)
	LD BC,(0FF0CH)
	CALL F053		; * t
	RET
; BCDE := x - floor(x / 2 pi) * 2 pi for x >= 0, then its magnitude
; (a quotient rounded up to a whole number leaves a small negative).
F063:	PUSH BC			; x, for the subtraction at the end
	PUSH DE
	PUSH BC
	PUSH DE
	LD BC,40C9H
	LD DE,0FDBH		; 2 pi
	CALL F050
	CALL F801		; the whole turns
	PUSH BC
	PUSH DE
	LD BC,40C9H
	LD DE,0FDBH
	CALL F053
	CALL F071
	RES 7,B
	RET
; Sin of BCDE: the Cos of BCDE + BFC90FDBH, that is of x - pi/2.
F210:	PUSH BC
	PUSH DE
	LD BC,0BFC9H
	LD DE,0FDBH
	CALL F072
	JP F201
; Tan of BCDE: Sin / Cos. A magnitude equal to pi/2 (3FC90FDBH) is an
; overflow; below 1E-15 the result is 0.
F220:	LD A,B
	AND 7FH
	CP 3FH
	JR NZ,F221
	LD A,C
	CP 0C9H
	JR NZ,F221
	LD A,D
	CP 0FH
	JR NZ,F221
	LD A,E
	CP 0DBH
	JR NZ,F221
	LD A,2
	CALL F085
	JP F084
F221:	PUSH BC
	RES 7,B
	LD HL,F908
	CALL F065
	POP BC
	JP C,F083
	LD (0FF16H),DE		; x
	LD (0FF18H),BC
	CALL F210
	PUSH BC			; Sin x waits on the stack
	PUSH DE
	LD DE,(0FF16H)
	LD BC,(0FF18H)
	CALL F201
	CALL F050		; Sin / Cos
	RET
; Exp of BCDE. Above 88.72284 it overflows; below -104 it is 0.
; x = k ln 2 + r with k = floor(x / ln 2 + 1/2): r is taken in two steps,
; x - k * 0.693359375 (exact) - k * -2.1219444E-4, so that ln 2 holds
; more digits than a Single has. The polynomial gives exp r for r up to
; ln 2 / 2 in magnitude, and F087 adds k to its exponent.
F301:	BIT 7,B
	JR Z,F302
	RES 7,B
	LD HL,F906
	CALL F065
	SET 7,B
	JR C,F303
	JP F083			; below -104: 0
F302:	LD HL,F905
	CALL F065
	JR C,F303
	JR Z,F303
	LD A,2			; above 88.72284: overflow
	CALL F085
	JP F084
F303:	LD (0FF02H),DE		; x
	LD (0FF04H),BC
	PUSH BC
	PUSH DE
	LD BC,3FB8H
	LD DE,0AA3BH		; 1 / ln 2
	CALL F053
	PUSH BC
	PUSH DE
	LD BC,3F00H
	LD DE,0			; 1/2
	CALL F072
	CALL F801		; k, also as an integer in 0FF12H
	LD (0FF06H),DE
	LD (0FF08H),BC
	PUSH BC
	PUSH DE
	LD BC,3F31H
	LD DE,8000H		; 0.693359375
	CALL F053
	LD HL,(0FF04H)
	PUSH HL
	LD HL,(0FF02H)
	PUSH HL
	CALL F071		; x - k * 0.693359375
	LD (0FF0EH),DE
	LD (0FF10H),BC
	LD DE,(0FF06H)
	LD BC,(0FF08H)
	PUSH BC
	PUSH DE
	LD BC,0B95EH
	LD DE,8083H		; -2.1219444E-4
	CALL F053
	LD HL,(0FF10H)
	PUSH HL
	LD HL,(0FF0EH)
	PUSH HL
	CALL F071		; r
	LD (0FF0EH),DE
	LD (0FF10H),BC
	LD HL,F920
	LD A,7
	CALL F069		; exp r
; Add the integer in 0FF12H to the exponent of BCDE (not 0): 0 below
; the range of the format, 7F7FFFFFH with error 2 above it.
F087:	LD HL,(0FF12H)
	LD A,C
	RLA
	LD A,B
	RLA			; the exponent
	ADD A,L
	LD L,A
	LD A,H
	ADC A,0			; HL := exponent + k
	JR Z,F304
	JP M,F083		; below 1: 0
	LD A,2
	CALL F085
	JP F084
F304:	OR L
	JP Z,F083
	LD A,B
	AND 80H			; the sign
	SRL L
	RES 7,C
	JR NC,F305
	SET 7,C			; exponent bit 0
F305:	OR L
	LD B,A			; and bits 7..1
	RET
; Ln of BCDE, for x > 0. F095 splits x into a significand f from 0.5
; to 1 and an exponent e; below sqrt(1/2) f is doubled (e one less), so
; that f lies from 0.7071 to 1.4142. F097: with u = f - 1 (exact),
; s = u / (2 + u) and w = s * s, ln f = 2 artanh s = u - s * (u - R),
; R = w * P(w) with P a polynomial that holds the format's precision for
; |s| up to 0.1716; u stays exact, so that ln x near 1 keeps all its
; digits. e * ln 2 is added.
F401:	LD A,C
	RLA
	LD A,B
	RLA			; the exponent; the sign to the carry
	JR C,F402
	OR A
	JR NZ,F095
F402:	LD A,1			; no logarithm of 0 or less
	CALL F085
	JP F083
F095:	SUB 7EH
	LD L,A
	SBC A,A
	LD H,A			; e := exponent - 126
	LD B,3FH
	RES 7,C			; f: the exponent 126
	PUSH HL
	LD HL,F907
	CALL F065
	POP HL
	JR NC,F403
	SET 7,C			; below sqrt(1/2): f * 2
	DEC HL
F403:	LD (0FF12H),HL		; e
	PUSH BC
	PUSH DE
	LD BC,3F80H
	LD DE,0
	CALL F071		; u = f - 1
F097:	LD (0FF02H),DE
	LD (0FF04H),BC
	PUSH BC
	PUSH DE			; u, the dividend
	PUSH BC
	PUSH DE
	LD BC,4000H
	LD DE,0
	CALL F072		; 2 + u
	CALL F050		; s
	LD (0FF0AH),DE
	LD (0FF0CH),BC
	PUSH BC
	PUSH DE
	CALL F053
	LD (0FF0EH),DE		; w
	LD (0FF10H),BC
	LD HL,F912
	LD A,3
	CALL F069		; P(w)
	PUSH BC
	PUSH DE
	LD DE,(0FF0EH)
	LD BC,(0FF10H)
	CALL F053		; R
	LD HL,(0FF04H)
	PUSH HL
	LD HL,(0FF02H)
	PUSH HL
	CALL F054		; R - u
	PUSH BC
	PUSH DE
	LD DE,(0FF0AH)
	LD BC,(0FF0CH)
	CALL F053		; s * (R - u)
	LD HL,(0FF04H)
	PUSH HL
	LD HL,(0FF02H)
	PUSH HL
	CALL F072		; ln f = u + s * (R - u)
	LD HL,(0FF12H)
	LD A,H
	OR L
	RET Z			; e = 0: ln x = ln f
	LD (0FF0AH),DE
	LD (0FF0CH),BC
	CALL F810		; e as a Single
	PUSH BC
	PUSH DE
	LD BC,3F31H
	LD DE,7218H		; ln 2
	CALL F053
	PUSH BC
	PUSH DE
	LD DE,(0FF0AH)
	LD BC,(0FF0CH)
	CALL F072		; + ln f
	RET
; Horner's rule: the polynomial whose A coefficients stand at HL, the
; highest power first, in the value w at 0FF0EH.
F069:	LD (0FF42H),A		; coefficients left
	LD E,(HL)
	INC HL
	LD D,(HL)
	INC HL
	LD C,(HL)
	INC HL
	LD B,(HL)
	INC HL
	LD (0FF40H),HL
F067:	LD A,(0FF42H)
	DEC A
	RET Z
	LD (0FF42H),A
	PUSH BC
	PUSH DE
	LD DE,(0FF0EH)
	LD BC,(0FF10H)
	CALL F053		; * w
	PUSH BC
	PUSH DE
	LD HL,(0FF40H)
	LD E,(HL)
	INC HL
	LD D,(HL)
	INC HL
	LD C,(HL)
	INC HL
	LD B,(HL)
	INC HL
	LD (0FF40H),HL
	CALL F072		; + the next coefficient
	JR F067
; Compare BCDE with the Single at HL, both not negative: carry set when
; BCDE is the smaller, Z set when they are equal.
F065:	INC HL
	INC HL
	INC HL
	LD A,B
	CP (HL)
	RET NZ
	DEC HL
	LD A,C
	CP (HL)
	RET NZ
	DEC HL
	LD A,D
	CP (HL)
	RET NZ
	DEC HL
	LD A,E
	CP (HL)
	RET
; BCDE := floor(BCDE), a whole number as a Single; the same as a 16-bit
; integer goes to 0FF12H (meaningful below 32768 in magnitude).
F801:	CALL F504		; unpack
	LD A,C
	CP 7FH
	JR C,F802		; below 1 in magnitude
	CP 96H
	JR NC,F803		; 2^23 and up: whole already
	LD A,96H
	SUB C			; places behind the point
	LD L,0			; becomes 1 if a fraction is cut off
F804:	SRL D
	RR E
	RR H
	JR NC,F805
	LD L,1
F805:	DEC A
	JR NZ,F804
	BIT 7,B
	JR Z,F806
	DEC L
	JR NZ,F806
	INC H			; negative with a fraction: one further down
	JR NZ,F806
	INC E
	JR NZ,F806
	INC D
F806:	LD A,H			; the integer, with its sign
	LD (0FF12H),A
	LD A,E
	LD (0FF13H),A
	BIT 7,B
	JR Z,F807
	PUSH HL
	LD HL,(0FF12H)
	XOR A
	SUB L
	LD L,A
	SBC A,A
	SUB H
	LD H,A
	LD (0FF12H),HL
	POP HL
F807:	LD L,0			; the magnitude under 2^23, as a Single
	LD C,96H
	PUSH HL			; (F010 ends with POP HL)
	JP F010
F803:	XOR A
	LD (0FF12H),A
	LD (0FF13H),A
	PUSH HL
	JP F010
F802:	OR A
	JR Z,F808		; 0
	BIT 7,B
	JR Z,F808		; from 0 to 1: 0
	LD HL,0FFFFH		; from -1 to 0: -1
	LD (0FF12H),HL
	LD BC,0BF80H
	LD DE,0
	RET
F808:	LD HL,0
	LD (0FF12H),HL
	JP F083
; BCDE := the 16-bit integer HL (not 0) as a Single.
F810:	LD B,0
	BIT 7,H
	JR Z,F811
	XOR A
	SUB L
	LD L,A
	SBC A,A
	SUB H
	LD H,A
	LD B,80H
F811:	LD D,H
	LD E,L
	LD HL,0
	LD C,8EH		; 2^15 at the top bit of D
	PUSH HL
	JP F010
; The add: F072 pops the left operand, F008 adds the alternate BCDE
; (left) and BCDE (right); HL comes back unchanged. F071 subtracts
; (left - BCDE), F054 negates the left operand (BCDE - left).
F072:	EXX
	POP HL			; return address
	POP DE
	POP BC			; left operand in the alternate set
	PUSH HL
	EXX
F008:	PUSH HL
F501:	CALL F504		; unpack the right operand
	EXX
	CALL F504		; and the left one
	LD A,C
	EXX
	SUB C			; left exponent - right exponent
	JR Z,F506
	JR C,F505
	CALL F507		; the right one is smaller: shift it
	EXX
	LD A,C
	EXX
	LD C,A			; and take the left exponent
	JR F506
F505:	NEG
	EXX
	CALL F507		; the left one is smaller: shift it
	EXX
F506:	EXX
	LD A,B
	EXX
	XOR B
	JP M,F509		; the signs differ
	EXX			; same sign: add the significands
	LD A,L
	EXX
	ADD A,L
	LD L,A
	EXX
	LD A,H
	EXX
	ADC A,H
	LD H,A
	EXX
	LD A,E
	EXX
	ADC A,E
	LD E,A
	EXX
	LD A,D
	EXX
	ADC A,D
	LD D,A
	JR NC,F010
F510:	LD A,D			; a carry out: one place right, unless
	OR E			; the whole result is zero
	OR H
	OR L
	OR C
	JR Z,F010
	SCF
	RR D
	RR E
	RR H
	RR L
	INC C
	JR F010
F509:	EXX			; the signs differ: the larger significand
	LD A,D			; is the minuend
	EXX
	CP D
	JR NZ,F511
	EXX
	LD A,E
	EXX
	CP E
	JR NZ,F511
	EXX
	LD A,H
	EXX
	CP H
	JR NZ,F511
	EXX
	LD A,L
	EXX
	CP L
F511:	JR C,F512
	EXX			; left - right, with the sign of the left
	LD A,L
	EXX
	SUB L
	LD L,A
	EXX
	LD A,H
	EXX
	SBC A,H
	LD H,A
	EXX
	LD A,E
	EXX
	SBC A,E
	LD E,A
	EXX
	LD A,D
	EXX
	SBC A,D
	LD D,A
	EXX
	LD A,B
	EXX
	LD B,A
	JR F010
F512:	LD A,L			; right - left, with the sign of the right
	EXX
	SUB L
	EXX
	LD L,A
	LD A,H
	EXX
	SBC A,H
	EXX
	LD H,A
	LD A,E
	EXX
	SBC A,E
	EXX
	LD E,A
	LD A,D
	EXX
	SBC A,D
	EXX
	LD D,A
; Normalise, round and pack the working form into BCDE; restore HL.
F010:	LD A,C
	OR A
	JR Z,F513		; exponent 0: the result is 0
F514:	BIT 7,D
	JR NZ,F515
	SLA L
	RL H
	RL E
	RL D
	DEC C
	JR NZ,F514
F513:	LD B,0			; zero (C is 0 already)
	LD D,B
	LD E,B
	POP HL
	RET
F515:	BIT 7,L			; round: 80H on the guard byte,
	JR Z,F516		; the carry running up
	INC H
	JR NZ,F516
	INC E
	JR NZ,F516
	INC D
	JR NZ,F516
	INC C			; a carry out of D: the next binade
F516:	SLA D			; pack: the hidden bit goes,
	RL B			; the sign comes to the carry
	RR C			; sign and exponent bits 7..1
	RR D			; exponent bit 0 and the fraction
	LD B,C
	LD C,D
	LD D,E
	LD E,H
	POP HL
	RET
; Unpack BCDE of the set in use into the working form.
F504:	LD L,0
	LD H,E
	LD E,D
	LD D,C
	SET 7,D			; the hidden bit
	RL C			; exponent bit 0 to the carry
	LD A,B
	ADC A,A			; the exponent; the sign stays in B
	LD C,A
	RET
; Shift the significand D, E, H, L of the set in use right A times.
F507:	SRL D
	RR E
	RR H
	RR L
	DEC A
	JR NZ,F507
	RET
F071:	EXX
	POP HL
	POP DE
	POP BC
	PUSH HL
	EXX
	LD A,B
	XOR 80H			; - right
	LD B,A
	JP F008
F054:	EXX
	POP HL
	POP DE
	POP BC
	PUSH HL
	LD A,B
	XOR 80H			; - left
	LD B,A
	EXX
	JP F008
; The multiply, as M201: left operand on the stack, HL unchanged.
F053:	EXX
	POP HL
	POP DE
	POP BC
	PUSH HL
	EXX
	PUSH HL
F602:	CALL F504		; unpack the right operand
	LD A,C
	OR A
	JP Z,F606		; 0 times anything is 0
	EXX
	CALL F504		; and the left one
	LD A,C
	OR A
	EXX
	JP Z,F606
	EXX
	LD A,B
	EXX
	XOR B
	LD B,A			; bit 7: the sign of the product
	LD A,C
	XOR 80H
	LD C,A			; right exponent - 128
	EXX
	LD A,C
	EXX
	XOR 80H			; left exponent - 128
	ADD A,C			; sum of the unbiased exponents
	JP PE,F607		; out of the byte's range
	XOR 80H
	LD C,A			; the sum + 128, from 0 to 255
	PUSH BC			; sign and exponent wait on the stack
; 32 rounds of shift-right multiplication. Multiplier N: BC (low) and
; BC' (high); multiplicand M: DE and DE'; the upper half P of the
; product: HL and HL'. Each round adds M to P when the bit leaving N is
; 1, then shifts P right. While the low byte of N is 0 and at least 9
; rounds remain, 8 rounds are a move of bytes.
	LD B,H
	LD C,L			; N low := right significand H, L
	PUSH DE
	EXX
	POP BC			; N high := right significand D, E
	PUSH HL
	LD HL,0
	EXX
	POP DE			; M low := left significand H', L'
	LD HL,0			; (M high is D', E' already)
	LD A,32			; the round count
F610:	INC C
	DEC C
	JR NZ,F612
	CP 9
	JR C,F612
	EX AF,AF'		; 8 rounds at once: N and P move one byte down
	LD C,B
	LD L,H
	EXX
	LD A,L
	PUSH AF
	LD A,C
	LD C,B
	LD B,0
	LD L,H
	LD H,0
	EXX
	LD B,A
	POP AF
	LD H,A
	EX AF,AF'
	SUB 8
	JR F610
F612:	EXX
	SRL B
	RR C
	EXX
	RR B
	RR C			; the bit leaving N
	JR NC,F613
	ADD HL,DE		; P += M
	EXX
	ADC HL,DE
	EXX
F613:	EXX			; P moves right, with the carry of the sum
	RR H
	RR L
	EXX
	RR H
	RR L
	DEC A
	JR NZ,F610
	EXX
	PUSH HL
	EXX
	POP DE			; D, E, H, L := P
	POP BC
	LD A,C
	BIT 7,D
	JR NZ,F614
	SLA L			; a product below 2: one place left
	RL H
	RL E
	RL D
	ADD A,1
	JR F615
F614:	ADD A,2
F615:	JR C,F608		; the exponent passes 255
	LD C,A
	JR F604
F607:	JP M,F608		; the true sum was above 127
	CALL F609		; below -128: error 2, and 0
F606:	LD BC,0
	LD D,B
	LD E,B
	POP HL
	RET
F608:	CALL F609		; too large: error 2, the largest pattern
	LD C,0FFH
	LD D,C
	LD E,C
	LD H,C
	JR F616
F609:	LD A,2			; error word := 2
	LD (0FF00H),A
	XOR A
	LD (0FF01H),A
	RET
; Normalise, round and pack the working form into BCDE; restore HL.
; Here a carry of the rounding beyond exponent 255 is an overflow too.
F604:	LD A,C
	OR A
	JR Z,F617		; exponent 0: the result is 0
F618:	BIT 7,D
	JR NZ,F619
	SLA L
	RL H
	RL E
	RL D
	DEC C
	JR NZ,F618
F617:	LD B,0			; zero (C is 0 already)
	LD D,B
	LD E,B
	POP HL
	RET
F619:	BIT 7,L			; round: 80H on the guard byte,
	JR Z,F616		; the carry running up
	INC H
	JR NZ,F616
	INC E
	JR NZ,F616
	INC D
	JR NZ,F616
	INC C			; a carry out of D: the next binade
	JR Z,F608
F616:	SLA D			; pack: the hidden bit goes,
	RL B			; the sign comes to the carry
	RR C			; sign and exponent bits 7..1
	RR D			; exponent bit 0 and the fraction
	LD B,C
	LD C,D
	LD D,E
	LD E,H
	POP HL
	RET
; The divide, as D201: left operand (dividend) on the stack, HL
; unchanged.
F050:	EXX
	POP HL
	POP DE
	POP BC
	PUSH HL
	EXX
	PUSH HL
F702:	CALL F504		; unpack the divisor
	EXX
	CALL F504		; and the dividend
	LD A,C
	OR A
	EXX
	JP Z,F708		; 0 divided by anything is 0
	LD A,C
	OR A
	JR Z,F709		; division by 0
	EXX
	LD A,B
	EXX
	XOR B
	LD B,A			; bit 7: the sign of the quotient
	LD A,C
	XOR 80H
	LD C,A			; divisor exponent - 128
	EXX
	LD A,C
	EXX
	XOR 80H			; dividend exponent - 128
	SUB C			; difference of the exponents
	JP PE,F714		; out of the byte's range
	XOR 80H
	LD C,A			; the difference + 128
	PUSH BC			; sign and exponent wait on the stack
; 32 rounds of restoring division. Remainder R: A (high) and HL, from
; the dividend's significand; divisor: C (high) and DE; the quotient
; bits go into the alternate BCDE, inverted (carry 1 means bit 0).
	LD C,D
	LD D,E
	LD E,H			; C, D, E := divisor significand
	EXX
	LD L,H
	LD H,E
	PUSH HL			; dividend significand, low 16 bits
	LD A,D			; and its high byte
	EXX
	POP HL
	LD B,32			; the round count
	OR A			; no 25th remainder bit yet
F715:	JR C,F717
	SBC HL,DE		; trial subtraction, carry clear here
	SBC A,C
	JR NC,F716		; the divisor fits: carry 0 is bit 1
	ADD HL,DE		; restore; the carry is 1: bit 0
	ADC A,C
	JR F716
F717:	OR A			; the 25th bit: the divisor surely fits
	SBC HL,DE
	SBC A,C			; the borrow cancels the 25th bit
	OR A			; carry 0: bit 1
F716:	EXX
	RL E			; the inverted quotient bit moves in
	RL D
	RL C
	RL B
	EXX
	ADD HL,HL		; R := R * 2
	ADC A,A
	DJNZ F715
	EXX			; D, E, H, L := the quotient, inverted back
	LD A,B
	CPL
	LD H,A
	LD A,C
	CPL
	LD L,A
	PUSH HL
	LD A,D
	CPL
	LD H,A
	LD A,E
	CPL
	LD L,A
	PUSH HL
	EXX
	POP HL
	POP DE
	POP BC
	LD A,C			; the difference + 128
	BIT 7,D
	JR NZ,F718
	SLA L			; a quotient below 1: one place left
	RL H
	RL E
	RL D
	SUB 1
	JR C,F708
F718:	SUB 1			; the biased exponent; 0 or below is 0
	JR C,F708
	JR Z,F708
	LD C,A
	JP F010
F709:	LD A,1			; error word := 1
	JR F719
F714:	LD A,2			; error word := 2
F719:	LD (0FF00H),A
	XOR A
	LD (0FF01H),A
F708:	LD BC,0
	LD D,B
	LD E,B
	POP HL
	RET
; Constants, low word first.
F901:	.DW 0FDBH,3FC9H		; pi/2
F902:	.DW 0FDBH,4049H		; pi
F903:	.DW 0CBE4H,4096H	; 3 pi/2
F904:	.DW 0FDBH,40C9H		; 2 pi
F905:	.DW 7218H,42B1H		; 88.72284
F906:	.DW 0000H,42D0H		; 104
F907:	.DW 04F3H,3F35H		; sqrt(1/2)
F908:	.DW 1D7DH,2690H		; 1E-15
F909:	.DW 0FDBH,3F49H		; pi/4
; cos y for y up to pi/4, in w = y * y, the highest power first.
F910:	.DW 9705H,37CCH		; 2.4389019e-05
	.DW 042AH,0BAB6H		; -0.0013886739
	.DW 0AA9FH,3D2AH		; 0.0416666232
	.DW 0000H,0BF00H		; -0.5
	.DW 0000H,3F80H		; 1
; sin t / t for t up to pi/4, in w = t * t.
F911:	.DW 9D53H,0B94CH		; -0.000195135639
	.DW 8381H,3C08H		; 0.00833213422
	.DW 0AAA2H,0BE2AH		; -0.166666538
	.DW 0000H,3F80H		; 1
; P(w) of the logarithm, for w up to 0.02944.
F912:	.DW 0F732H,3E98H		; 0.298760951
	.DW 0AF1BH,3ECCH		; 0.399773449
	.DW 0AABDH,3F2AH		; 0.666667759
; exp r for r up to ln 2 / 2 in magnitude, the highest power first.
F920:	.DW 43DAH,3AB5H		; 0.00138294254
	.DW 3656H,3C09H		; 0.0083747711
	.DW 0AC71H,3D2AH		; 0.0416683592
	.DW 0AA06H,3E2AH		; 0.166664213
	.DW 0FFFDH,3EFFH		; 0.499999911
	.DW 0000H,3F80H		; 1
	.DW 0000H,3F80H		; 1
