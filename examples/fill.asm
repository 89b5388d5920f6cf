; Fills 256 bytes from 8000H with their own low address byte, then copies them
; to 9000H with LDIR.
        ORG 0
        LD HL,8000H
        LD B,0
STORE:   LD (HL),L
        INC HL
        DJNZ STORE
        LD HL,8000H
        LD DE,9000H
        LD BC,256
        LDIR
        HALT
