      *> Writes the benchmark input: N fixed 38-byte records, each with a
      *> packed, a zoned, a big-endian binary and a 20-byte text field.
      *> Arguments: output file, record count.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. ZQGEN.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT OUT-FILE ASSIGN TO DYNAMIC WS-NAME
               ORGANIZATION IS SEQUENTIAL.
       DATA DIVISION.
       FILE SECTION.
       FD  OUT-FILE.
       01  OUT-REC.
           05  R-PACKED    PIC S9(7)V99     COMP-3.
           05  R-ZONED     PIC S9(7)V99.
           05  R-BINARY    PIC S9(9)        COMP.
           05  R-TEXT      PIC X(20).
       WORKING-STORAGE SECTION.
       01  WS-NAME         PIC X(256).
       01  WS-COUNT-TEXT   PIC X(20).
       01  WS-COUNT        PIC 9(9)         COMP-5.
       01  WS-I            PIC 9(9)         COMP-5.
       01  WS-V            PIC S9(9)        COMP-5.
       01  WS-NAMES.
           05  FILLER      PIC X(20) VALUE "Ada Lovelace".
           05  FILLER      PIC X(20) VALUE "Grace Hopper".
           05  FILLER      PIC X(20) VALUE "Alan Turing".
           05  FILLER      PIC X(20) VALUE "Edsger Dijkstra".
       01  WS-NAME-TABLE REDEFINES WS-NAMES.
           05  WS-N        PIC X(20) OCCURS 4.
       PROCEDURE DIVISION.
           ACCEPT WS-NAME FROM ARGUMENT-VALUE
           ACCEPT WS-COUNT-TEXT FROM ARGUMENT-VALUE
           MOVE FUNCTION NUMVAL(WS-COUNT-TEXT) TO WS-COUNT
           OPEN OUTPUT OUT-FILE
           PERFORM VARYING WS-I FROM 1 BY 1 UNTIL WS-I > WS-COUNT
               COMPUTE WS-V = FUNCTION MOD(WS-I * 7919, 999999999)
               IF FUNCTION MOD(WS-I, 2) = 0
                   COMPUTE WS-V = 0 - WS-V
               END-IF
               COMPUTE R-PACKED = WS-V / 100
               COMPUTE R-ZONED = (0 - WS-V) / 1000
               MOVE WS-V TO R-BINARY
               MOVE WS-N(FUNCTION MOD(WS-I, 4) + 1) TO R-TEXT
               WRITE OUT-REC
           END-PERFORM
           CLOSE OUT-FILE
           STOP RUN.
