; Counts BC down from 1000 in a tight loop, then halts. A CPU-bound program for
; comparing the simulation rates.
        ORG 0
        LD SP,0FFF0H
        LD BC,1000
LOOP:   DEC BC
        LD A,B
        OR C
        JR NZ,LOOP
        HALT
