      *> Writes payroll.dat: fixed 64-byte records with big-endian and
      *> native binary, packed and zoned decimal fields, as a COBOL
      *> program stores them. The output file name is the first argument.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. PAYROLL.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT PAY-FILE ASSIGN TO DYNAMIC WS-NAME
               ORGANIZATION IS SEQUENTIAL.
       DATA DIVISION.
       FILE SECTION.
       FD  PAY-FILE.
       01  PAY-REC.
           05  EMP-ID      PIC 9(8)         COMP.
           05  EMP-NAME    PIC X(20).
           05  SALARY      PIC S9(7)V99     COMP-3.
           05  BONUS       PIC S9(5)V99.
           05  ADJUST      PIC S9(5)V99     SIGN TRAILING SEPARATE.
           05  DEPT        PIC S9(4)        COMP-5.
           05  BALANCE     PIC S9(16)V99    COMP-3.
           05  UNITS       PIC S9(18)       COMP.
       WORKING-STORAGE SECTION.
       01  WS-NAME         PIC X(256).
       PROCEDURE DIVISION.
           ACCEPT WS-NAME FROM ARGUMENT-VALUE
           OPEN OUTPUT PAY-FILE
           MOVE 1001 TO EMP-ID
           MOVE "Ada Lovelace" TO EMP-NAME
           MOVE 5250.75 TO SALARY
           MOVE 300.50 TO BONUS
           MOVE -12.34 TO ADJUST
           MOVE 7 TO DEPT
           MOVE 1234567890123456.78 TO BALANCE
           MOVE 123456789012345678 TO UNITS
           WRITE PAY-REC
           MOVE 1002 TO EMP-ID
           MOVE "O'Brien, Pat" TO EMP-NAME
           MOVE -0.01 TO SALARY
           MOVE -99999.99 TO BONUS
           MOVE 99999.99 TO ADJUST
           MOVE -32768 TO DEPT
           MOVE -9999999999999999.99 TO BALANCE
           MOVE -999999999999999999 TO UNITS
           WRITE PAY-REC
           MOVE 99999999 TO EMP-ID
           MOVE 'Say "hi"' TO EMP-NAME
           MOVE 0 TO SALARY
           MOVE 0 TO BONUS
           MOVE 0 TO ADJUST
           MOVE 0 TO DEPT
           MOVE 0 TO BALANCE
           MOVE 0 TO UNITS
           WRITE PAY-REC
           MOVE 0 TO EMP-ID
           MOVE "Grace Hopper" TO EMP-NAME
           MOVE 9999999.99 TO SALARY
           MOVE 0.01 TO BONUS
           MOVE -0.01 TO ADJUST
           MOVE 32767 TO DEPT
           MOVE 0.05 TO BALANCE
           MOVE -1 TO UNITS
           WRITE PAY-REC
           CLOSE PAY-FILE
           STOP RUN.
