      *> Writes one record of GnuCOBOL's own field formats per line of seven
      *> comma-separated values on standard input: fields ROWS OUT.dat
       IDENTIFICATION DIVISION.
       PROGRAM-ID. FIELDS.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT DAT-FILE ASSIGN TO DYNAMIC WS-DAT
               ORGANIZATION IS SEQUENTIAL.
       DATA DIVISION.
       FILE SECTION.
       FD  DAT-FILE.
       01  DAT-REC.
           05  F-PACK      PIC S9(13)V99    COMP-3.
           05  F-UPACK     PIC 9(5)         COMP-3.
           05  F-ZONE      PIC S9(7)V9(3).
           05  F-ZSEP      PIC S9(5)        SIGN TRAILING SEPARATE.
           05  F-COMP      PIC S9(9)V99     COMP.
           05  F-COMP5     PIC S9(4)        COMP-5.
           05  F-BIN4      PIC S9(9)        BINARY.
       WORKING-STORAGE SECTION.
       01  WS-ROWS         PIC 9(6).
       01  WS-DAT          PIC X(256).
       01  WS-LINE         PIC X(200).
       01  WS-V.
           05  WS-T        PIC X(40) OCCURS 7.
       PROCEDURE DIVISION.
           ACCEPT WS-ROWS FROM ARGUMENT-VALUE
           ACCEPT WS-DAT FROM ARGUMENT-VALUE
           OPEN OUTPUT DAT-FILE
           PERFORM WS-ROWS TIMES
               ACCEPT WS-LINE
               UNSTRING WS-LINE DELIMITED BY ","
                   INTO WS-T(1) WS-T(2) WS-T(3) WS-T(4)
                        WS-T(5) WS-T(6) WS-T(7)
               COMPUTE F-PACK = FUNCTION NUMVAL(WS-T(1))
               COMPUTE F-UPACK = FUNCTION NUMVAL(WS-T(2))
               COMPUTE F-ZONE = FUNCTION NUMVAL(WS-T(3))
               COMPUTE F-ZSEP = FUNCTION NUMVAL(WS-T(4))
               COMPUTE F-COMP = FUNCTION NUMVAL(WS-T(5))
               COMPUTE F-COMP5 = FUNCTION NUMVAL(WS-T(6))
               COMPUTE F-BIN4 = FUNCTION NUMVAL(WS-T(7))
               WRITE DAT-REC
           END-PERFORM
           CLOSE DAT-FILE
           STOP RUN.
