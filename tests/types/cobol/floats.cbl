      *> COMP-1 and COMP-2 fields against exact dyadic values.
      *>   floats encode : values.txt -> floats.bin
      *>   floats decode : floats.bin -> decoded.txt
       IDENTIFICATION DIVISION.
       PROGRAM-ID. FLOATS.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT VAL-FILE ASSIGN TO "values.txt"
               ORGANIZATION LINE SEQUENTIAL.
           SELECT BIN-FILE ASSIGN TO "floats.bin"
               ORGANIZATION SEQUENTIAL.
           SELECT OUT-FILE ASSIGN TO "decoded.txt"
               ORGANIZATION LINE SEQUENTIAL.
       DATA DIVISION.
       FILE SECTION.
       FD VAL-FILE.
       01 VAL-REC.
          05 VAL-NUM PIC S9(9)V9(6) SIGN LEADING SEPARATE.
       FD BIN-FILE.
       01 BIN-REC.
          05 F-C1 USAGE COMP-1.
          05 F-C2 USAGE COMP-2.
       FD OUT-FILE.
       01 OUT-REC.
          05 O-C1 PIC S9(9)V9(6) SIGN LEADING SEPARATE.
          05 FILLER PIC X.
          05 O-C2 PIC S9(9)V9(6) SIGN LEADING SEPARATE.
       WORKING-STORAGE SECTION.
       01 MODE-ARG PIC X(16).
       01 EOF-FLAG PIC X VALUE "N".
       PROCEDURE DIVISION.
           ACCEPT MODE-ARG FROM COMMAND-LINE.
           EVALUATE MODE-ARG
             WHEN "encode" PERFORM ENCODE-VALUES
             WHEN "decode" PERFORM DECODE-FIELDS
           END-EVALUATE.
           STOP RUN.

       ENCODE-VALUES.
           OPEN INPUT VAL-FILE OUTPUT BIN-FILE.
           PERFORM UNTIL EOF-FLAG = "Y"
             READ VAL-FILE
               AT END MOVE "Y" TO EOF-FLAG
               NOT AT END
                 MOVE VAL-NUM TO F-C1 F-C2
                 WRITE BIN-REC
             END-READ
           END-PERFORM.
           CLOSE VAL-FILE BIN-FILE.

       DECODE-FIELDS.
           OPEN INPUT BIN-FILE OUTPUT OUT-FILE.
           PERFORM UNTIL EOF-FLAG = "Y"
             READ BIN-FILE
               AT END MOVE "Y" TO EOF-FLAG
               NOT AT END
                 MOVE SPACES TO OUT-REC
                 MOVE F-C1 TO O-C1
                 MOVE F-C2 TO O-C2
                 WRITE OUT-REC
             END-READ
           END-PERFORM.
           CLOSE BIN-FILE OUT-FILE.
