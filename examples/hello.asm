; Writes HELLO to port 01H, one character per OUT, then halts.
        ORG 0
START:  LD HL,MESSAGE
NEXT:   LD A,(HL)
        OR A
        JR Z,DONE
        OUT (01H),A
        INC HL
        JR NEXT
DONE:   HALT
MESSAGE:   DB "HELLO",0
