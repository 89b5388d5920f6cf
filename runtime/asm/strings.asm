; String Routine
;	Strings end in a 0 byte. Where a routine writes, HL is the
;	destination and B its capacity: at most B characters go in, the
;	terminator on top of them, and what does not fit is cut without a
;	message. DE is the source. REG_R0 and REG_R1 hold further arguments.
;	The routines marked below each with their own entry are emitted
;	only when the program calls them.
;	SG01: store A at HL, advance, terminate (HL is left on the 0).
;	SG01A: terminate at HL. SG03: B := the first character at HL.
;	SG110: store A at HL if B allows, and terminate.
;	SG115: DE := DE - C.
SG01:	LD (HL),A
	INC HL
SG01A:	LD (HL),0
	RET
SG03:	LD B,(HL)
	RET
SG110:	INC B
	DEC B
	JR Z,SG01A		; full: only the terminator
	DEC B
	JR SG01
SG115:	LD A,E
	SUB C
	LD E,A
	RET NC
	DEC D
	RET
; SG05: C := the length of the string at DE, at most B (B = 0: no
; limit); DE is left on the terminator, or behind the B characters.
SG05:	LD C,0
SG051:	LD A,(DE)
	OR A
	RET Z
	INC DE
	INC C
	LD A,C
	CP B
	JR NZ,SG051
	RET
; SG10: copy the string at DE to HL, at most B characters. B is left
; with the room that remains, HL behind the terminator: a further part
; is appended with DEC HL and SG11.
SG10:
SG11:	LD A,B
	OR A
	JR Z,SG101
	LD A,(DE)
	OR A
	JR Z,SG101
	LD (HL),A
	INC HL
	INC DE
	DEC B
	JR SG11
SG101:	LD (HL),0
	INC HL
	RET
; SG20: copy at most C characters of the string at DE to HL (and at
; most B); HL is left on the terminator.
SG20:	LD A,C
	OR A
	JP Z,SG01A
	LD A,B
	OR A
	JP Z,SG01A
	LD A,(DE)
	OR A
	JP Z,SG01A
	LD (HL),A
	INC HL
	INC DE
	DEC B
	DEC C
	JR SG20
; SG25: Right: behind SG05 (C = the length, DE at the end), the last
; REG_R0 characters, or the whole string if it is not longer.
SG25:	LD A,(REG_R0)
	CP C
	JR NC,SG251
	LD C,A
SG251:	CALL SG115		; back to the first character wanted
	JP SG20
; SG30: Mid: behind SG05, REG_R1 characters from place REG_R0 (counted
; from 1; 0 counts as 1). A start behind the end gives "".
SG30:	CALL SG115		; DE := the first character
	LD A,(REG_R0)
	OR A
	JR Z,SG302
SG301:	DEC A			; skip the characters in front of the start
	JR Z,SG302
	INC C
	DEC C
	JR Z,SG302
	INC DE
	DEC C
	JR SG301
SG302:	LD A,(REG_R1)
	CP C
	JP NC,SG20
	LD C,A
	JP SG20
; SG35: move DE past the leading characters equal to REG_R0.
SG35:	LD A,(REG_R0)
	LD C,A
SG351:	LD A,(DE)
	OR A
	RET Z
	CP C
	RET NZ
	INC DE
	JR SG351
; SG40: C := the length of the string at DE without its trailing
; characters equal to REG_R0 (for SG20 behind it); DE stays.
SG40:	PUSH DE
	PUSH HL
	LD A,(REG_R0)
	LD H,A			; the character to trim
	LD L,0			; characters seen
	LD C,L
SG401:	LD A,(DE)
	OR A
	JR Z,SG402
	INC DE
	INC L
	CP H
	JR Z,SG401
	LD C,L			; all up to another character stays
	JR SG401
SG402:	POP HL
	POP DE
	RET
; SG50: compare the strings at HL and DE over at most B characters:
; Z set when they are equal.
SG50:	LD A,B
	OR A
	RET Z
SG51:	LD A,(DE)
	CP (HL)
	RET NZ
	OR A
	RET Z			; both end here
	INC DE
	INC HL
	DJNZ SG51
	XOR A			; B characters alike
	RET
; SG60: C := the place (from 1) of the last REG_R0 in the string at
; DE, or 0.
SG60:	PUSH HL
	LD A,(REG_R0)
	LD H,A
	LD L,0
	LD C,L
SG601:	LD A,(DE)
	OR A
	JR Z,SG602
	INC DE
	INC L
	CP H
	JR NZ,SG601
	LD C,L
	JR SG601
SG602:	POP HL
	RET
; SG65: C := the place (from 1) of the first REG_R0 in the string at
; DE, or 0.
SG65:	PUSH HL
	LD A,(REG_R0)
	LD H,A
	LD C,0
SG651:	LD A,(DE)
	OR A
	JR Z,SG652
	INC DE
	INC C
	CP H
	JR NZ,SG651
	POP HL
	RET
SG652:	LD C,A
	POP HL
	RET
; SG70: C times the character REG_R0 at HL (at most B).
SG70:	LD A,(REG_R0)
SG701:	INC C
	DEC C
	JP Z,SG01A
	INC B
	DEC B
	JP Z,SG01A
	LD (HL),A
	INC HL
	DEC B
	DEC C
	JR SG701
; SG75: C := how often REG_R0 occurs in the string at DE.
SG75:	PUSH HL
	LD A,(REG_R0)
	LD H,A
	LD C,0
SG751:	LD A,(DE)
	OR A
	JR Z,SG752
	INC DE
	CP H
	JR NZ,SG751
	INC C
	JR SG751
SG752:	POP HL
	RET
; SG77: copy DE to HL (at most B), each REG_R0 replaced by REG_R1.
SG77:	LD A,B
	OR A
	JP Z,SG01A
	LD A,(DE)
	OR A
	JP Z,SG01A
	INC DE
	PUSH HL
	LD HL,REG_R0
	CP (HL)
	JR NZ,SG771
	LD A,(REG_R1)
SG771:	POP HL
	LD (HL),A
	INC HL
	DEC B
	JR SG77
; SG79: copy DE to HL (at most B) in lower case: 41H to 5AH get 20H
; added; all other characters stay as they are.
SG79:	LD A,B
	OR A
	JP Z,SG01A
	LD A,(DE)
	OR A
	JP Z,SG01A
	INC DE
	CP 41H
	JR C,SG791
	CP 5BH
	JR NC,SG791
	SUB 0E0H
SG791:	LD (HL),A
	INC HL
	DEC B
	JR SG79
; SG81: copy DE to HL (at most B) in upper case: 61H to 7AH get 20H
; taken off.
SG81:	LD A,B
	OR A
	JP Z,SG01A
	LD A,(DE)
	OR A
	JP Z,SG01A
	INC DE
	CP 61H
	JR C,SG811
	CP 7BH
	JR NC,SG811
	SUB 20H
SG811:	LD (HL),A
	INC HL
	DEC B
	JR SG81
; SG83: behind SG05, the C characters in front of DE copied to HL in
; reverse order (at most B).
SG83:	INC C
	DEC C
	JP Z,SG01A
	INC B
	DEC B
	JP Z,SG01A
	DEC DE
	LD A,(DE)
	LD (HL),A
	INC HL
	DEC B
	DEC C
	JR SG83
; SG86: behind SG05, the string shifted left by one place: its first
; character goes, REG_R0 fills the last place.
SG86:	CALL SG115
	INC C
	DEC C
	JP Z,SG01A
	INC DE
	DEC C
	CALL SG20
	LD A,(REG_R0)
	JP SG110
; SG89: behind SG05, the string shifted right by one place: REG_R0
; fills the first place, the last character goes.
SG89:	CALL SG115
	INC C
	DEC C
	JP Z,SG01A
	DEC C
	LD A,(REG_R0)
	CALL SG110
	JP SG20
; SG92: behind SG05, the string rotated left by one place: the first
; character goes to the end, through the REG_R0 cell.
SG92:	CALL SG115
	INC C
	DEC C
	JP Z,SG01A
	LD A,(DE)
	LD (REG_R0),A
	INC DE
	DEC C
	CALL SG20
	LD A,(REG_R0)
	JP SG110
; SG95: behind SG05, the string rotated right by one place: the last
; character comes first.
SG95:	INC C
	DEC C
	JP Z,SG01A
	DEC DE
	LD A,(DE)
	CALL SG110
	DEC C
	CALL SG115
	JP SG20
