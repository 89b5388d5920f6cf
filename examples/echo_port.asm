; Echo firmware for the port-bound Input/Output Terminal with its standard
; registers: data on port FFH, status on port FEH, where bit 0 set says that a
; character waits and bit 1 set that the terminal can take one. Open
; Tools > Input/Output Terminal, start the program and type: each character
; comes back. Ctrl+C halts it.
DATA    EQU 0FFH
STATUS  EQU 0FEH
RXFULL  EQU 0           ; Receive Data Register Full bit of STATUS
TXEMPTY EQU 1           ; Transmit Data Register Empty bit of STATUS

        ORG 0
        JP START

GETC:   IN A,(STATUS)
        BIT RXFULL,A
        JR Z,GETC
        IN A,(DATA)
        RET

PUTC:   PUSH AF
PUTC1:  IN A,(STATUS)
        BIT TXEMPTY,A
        JR Z,PUTC1
        POP AF
        OUT (DATA),A
        RET

        INCLUDE "echo.inc"
        END
