      *> The same conversions as the codec benchmark, by the COBOL runtime:
      *> each field is moved to a numeric-edited item (decode) or back from
      *> one (encode), ten times over. bench.bin holds the fields; the
      *> argument names the conversion, and "load" only loads, for the
      *> baseline. "check" writes every conversion's result once to
      *> check.bin, so that the benchmark can compare them with its own.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. CODECS.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT BIN-FILE ASSIGN TO "bench.bin"
               ORGANIZATION SEQUENTIAL.
           SELECT CHK-FILE ASSIGN TO "check.bin"
               ORGANIZATION SEQUENTIAL.
       DATA DIVISION.
       FILE SECTION.
       FD BIN-FILE.
       01 BIN-REC.
          05 R-P3 PIC S9(7)V99 COMP-3.
          05 R-ZD PIC S9(7)V99.
          05 R-BN PIC S9(7)V99 BINARY.
       FD CHK-FILE.
       01 CHK-REC.
          05 C-P3-ED PIC -9(7).99.
          05 C-ZD-ED PIC -9(7).99.
          05 C-BN-ED PIC -9(7).99.
          05 C-P3 PIC S9(7)V99 COMP-3.
          05 C-ZD PIC S9(7)V99.
          05 C-BN PIC S9(7)V99 BINARY.
       WORKING-STORAGE SECTION.
       01 MODE-ARG PIC X(16).
       01 EOF-FLAG PIC X VALUE "N".
       01 N        PIC 9(8) COMP-5 VALUE 0.
       01 I        PIC 9(8) COMP-5.
       01 PASS     PIC 9(4) COMP-5.
       01 TBL.
          05 T-ENTRY OCCURS 1000000 TIMES.
             10 T-P3 PIC S9(7)V99 COMP-3.
             10 T-ZD PIC S9(7)V99.
             10 T-BN PIC S9(7)V99 BINARY.
             10 T-ED PIC -9(7).99.
       01 EDITED   PIC -9(7).99.
       PROCEDURE DIVISION.
           ACCEPT MODE-ARG FROM COMMAND-LINE.
           OPEN INPUT BIN-FILE.
           PERFORM UNTIL EOF-FLAG = "Y"
             READ BIN-FILE
               AT END MOVE "Y" TO EOF-FLAG
               NOT AT END
                 ADD 1 TO N
                 MOVE R-P3 TO T-P3(N)
                 MOVE R-ZD TO T-ZD(N)
                 MOVE R-BN TO T-BN(N)
                 MOVE R-BN TO T-ED(N)
             END-READ
           END-PERFORM.
           CLOSE BIN-FILE.
           EVALUATE MODE-ARG
             WHEN "check"
               OPEN OUTPUT CHK-FILE
               PERFORM VARYING I FROM 1 BY 1 UNTIL I > N
                 MOVE T-P3(I) TO C-P3-ED
                 MOVE T-ZD(I) TO C-ZD-ED
                 MOVE T-BN(I) TO C-BN-ED
                 MOVE T-ED(I) TO C-P3
                 MOVE T-ED(I) TO C-ZD
                 MOVE T-ED(I) TO C-BN
                 WRITE CHK-REC
               END-PERFORM
               CLOSE CHK-FILE
             WHEN "pack-decode"
               PERFORM VARYING PASS FROM 1 BY 1 UNTIL PASS > 10
               PERFORM VARYING I FROM 1 BY 1 UNTIL I > N
                 MOVE T-P3(I) TO EDITED
               END-PERFORM
               END-PERFORM
             WHEN "pack-encode"
               PERFORM VARYING PASS FROM 1 BY 1 UNTIL PASS > 10
               PERFORM VARYING I FROM 1 BY 1 UNTIL I > N
                 MOVE T-ED(I) TO T-P3(I)
               END-PERFORM
               END-PERFORM
             WHEN "zone-decode"
               PERFORM VARYING PASS FROM 1 BY 1 UNTIL PASS > 10
               PERFORM VARYING I FROM 1 BY 1 UNTIL I > N
                 MOVE T-ZD(I) TO EDITED
               END-PERFORM
               END-PERFORM
             WHEN "zone-encode"
               PERFORM VARYING PASS FROM 1 BY 1 UNTIL PASS > 10
               PERFORM VARYING I FROM 1 BY 1 UNTIL I > N
                 MOVE T-ED(I) TO T-ZD(I)
               END-PERFORM
               END-PERFORM
             WHEN "bin-decode"
               PERFORM VARYING PASS FROM 1 BY 1 UNTIL PASS > 10
               PERFORM VARYING I FROM 1 BY 1 UNTIL I > N
                 MOVE T-BN(I) TO EDITED
               END-PERFORM
               END-PERFORM
             WHEN "bin-encode"
               PERFORM VARYING PASS FROM 1 BY 1 UNTIL PASS > 10
               PERFORM VARYING I FROM 1 BY 1 UNTIL I > N
                 MOVE T-ED(I) TO T-BN(I)
               END-PERFORM
               END-PERFORM
           END-EVALUATE.
           DISPLAY N.
           STOP RUN.
