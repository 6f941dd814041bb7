      *> Writes and reads records of GnuCOBOL's own field formats, so that
      *> zqrec can be checked against them both ways.
      *>   fields write VALUES.txt OUT.dat : one record per line of values
      *>   fields read IN.dat VALUES.txt   : one line of values per record
      *> A line holds seven comma-separated values in field order.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. FIELDS.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT TXT-FILE ASSIGN TO DYNAMIC WS-TXT
               ORGANIZATION IS LINE SEQUENTIAL.
           SELECT DAT-FILE ASSIGN TO DYNAMIC WS-DAT
               ORGANIZATION IS SEQUENTIAL.
       DATA DIVISION.
       FILE SECTION.
       FD  TXT-FILE.
       01  TXT-LINE        PIC X(200).
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
       01  WS-MODE         PIC X(8).
       01  WS-TXT          PIC X(256).
       01  WS-DAT          PIC X(256).
       01  WS-EOF          PIC X VALUE "N".
       01  WS-V.
           05  WS-T        PIC X(40) OCCURS 7.
       01  E-PACK          PIC -(13)9.99.
       01  E-UPACK         PIC Z(4)9.
       01  E-ZONE          PIC -(7)9.999.
       01  E-ZSEP          PIC -(5)9.
       01  E-COMP          PIC -(9)9.99.
       01  E-COMP5         PIC -(4)9.
       01  E-BIN4          PIC -(9)9.
       PROCEDURE DIVISION.
           ACCEPT WS-MODE FROM ARGUMENT-VALUE
           IF WS-MODE = "write"
               ACCEPT WS-TXT FROM ARGUMENT-VALUE
               ACCEPT WS-DAT FROM ARGUMENT-VALUE
               OPEN INPUT TXT-FILE OUTPUT DAT-FILE
               PERFORM UNTIL WS-EOF = "Y"
                   READ TXT-FILE
                       AT END MOVE "Y" TO WS-EOF
                       NOT AT END
                           UNSTRING TXT-LINE DELIMITED BY ","
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
                   END-READ
               END-PERFORM
           ELSE
               ACCEPT WS-DAT FROM ARGUMENT-VALUE
               ACCEPT WS-TXT FROM ARGUMENT-VALUE
               OPEN INPUT DAT-FILE OUTPUT TXT-FILE
               PERFORM UNTIL WS-EOF = "Y"
                   READ DAT-FILE
                       AT END MOVE "Y" TO WS-EOF
                       NOT AT END
                           MOVE F-PACK TO E-PACK
                           MOVE F-UPACK TO E-UPACK
                           MOVE F-ZONE TO E-ZONE
                           MOVE F-ZSEP TO E-ZSEP
                           MOVE F-COMP TO E-COMP
                           MOVE F-COMP5 TO E-COMP5
                           MOVE F-BIN4 TO E-BIN4
                           MOVE SPACES TO TXT-LINE
                           STRING FUNCTION TRIM(E-PACK) ","
                                  FUNCTION TRIM(E-UPACK) ","
                                  FUNCTION TRIM(E-ZONE) ","
                                  FUNCTION TRIM(E-ZSEP) ","
                                  FUNCTION TRIM(E-COMP) ","
                                  FUNCTION TRIM(E-COMP5) ","
                                  FUNCTION TRIM(E-BIN4)
                                  DELIMITED BY SIZE INTO TXT-LINE
                           WRITE TXT-LINE
                   END-READ
               END-PERFORM
           END-IF
           CLOSE TXT-FILE DAT-FILE
           STOP RUN.
