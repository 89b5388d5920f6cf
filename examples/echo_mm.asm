; Echo firmware for the memory-mapped Input/Output Terminal with its standard
; registers: data at A001H, status at A000H, where bit 0 set says that a
; character waits and bit 1 set that the terminal can take one. Open
; Tools > Input/Output Terminal (Memory Mapped), start the program and type:
; each character comes back. Ctrl+C halts it.
DATA    EQU 0A001H
STATUS  EQU 0A000H
RXFULL  EQU 0           ; Receive Data Register Full bit of STATUS
TXEMPTY EQU 1           ; Transmit Data Register Empty bit of STATUS

        ORG 0
        JP START

GETC:   LD A,(STATUS)
        BIT RXFULL,A
        JR Z,GETC
        LD A,(DATA)
        RET

PUTC:   PUSH AF
PUTC1:  LD A,(STATUS)
        BIT TXEMPTY,A
        JR Z,PUTC1
        POP AF
        LD (DATA),A
        RET

        INCLUDE "echo.inc"
        END
