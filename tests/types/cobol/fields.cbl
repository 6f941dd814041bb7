      *> Every numeric usage of ND digits (set by the test), then COMP-1/2:
      *> layout prints the field lengths, encode writes values.txt to
      *> fields.bin, decode reads fields.bin into decoded.txt.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. FIELDS.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT VAL-FILE ASSIGN "values.txt" LINE SEQUENTIAL.
           SELECT BIN-FILE ASSIGN "fields.bin" SEQUENTIAL.
           SELECT OUT-FILE ASSIGN "decoded.txt" LINE SEQUENTIAL.
       DATA DIVISION.
       FILE SECTION.
       FD VAL-FILE.
       01 VAL-REC.
          05 VAL-NUM PIC S9(ND) SIGN LEADING SEPARATE.
       FD BIN-FILE.
       01 BIN-REC.
          05 F-P3S PIC S9(ND) COMP-3.
          05 F-P3U PIC 9(ND) COMP-3.
          05 F-ZT  PIC S9(ND).
          05 F-ZL  PIC S9(ND) SIGN LEADING.
          05 F-ZTS PIC S9(ND) SIGN TRAILING SEPARATE.
          05 F-ZLS PIC S9(ND) SIGN LEADING SEPARATE.
          05 F-ZU  PIC 9(ND).
          05 F-BS  PIC S9(ND) BINARY.
          05 F-BU  PIC 9(ND) BINARY.
          05 F-CS  PIC S9(ND) COMP-5.
          05 F-CU  PIC 9(ND) COMP-5.
          05 F-C1  USAGE COMP-1.
          05 F-C2  USAGE COMP-2.
       FD OUT-FILE.
       01 OUT-REC.
          05 O-FIELD OCCURS 13 TIMES.
             10 O-NUM PIC S9(ND) SIGN LEADING SEPARATE.
             10 FILLER PIC X.
       WORKING-STORAGE SECTION.
       01 MODE-ARG PIC X(16).
       01 EOF-FLAG PIC X VALUE "N".
       PROCEDURE DIVISION.
           ACCEPT MODE-ARG FROM COMMAND-LINE.
           EVALUATE MODE-ARG
             WHEN "layout" PERFORM SHOW-LAYOUT
             WHEN "encode" PERFORM ENCODE-VALUES
             WHEN "decode" PERFORM DECODE-FIELDS
           END-EVALUATE.
           STOP RUN.

       SHOW-LAYOUT.
           DISPLAY LENGTH OF F-P3S " " LENGTH OF F-P3U " "
                   LENGTH OF F-ZT " " LENGTH OF F-ZL " "
                   LENGTH OF F-ZTS " " LENGTH OF F-ZLS " "
                   LENGTH OF F-ZU " " LENGTH OF F-BS " "
                   LENGTH OF F-BU " " LENGTH OF F-CS " "
                   LENGTH OF F-CU " " LENGTH OF F-C1 " "
                   LENGTH OF F-C2.

       ENCODE-VALUES.
           OPEN INPUT VAL-FILE OUTPUT BIN-FILE.
           PERFORM UNTIL EOF-FLAG = "Y"
             READ VAL-FILE
               AT END MOVE "Y" TO EOF-FLAG
               NOT AT END
                 MOVE VAL-NUM TO F-P3S F-P3U F-ZT F-ZL F-ZTS F-ZLS
                                 F-ZU F-BS F-BU F-CS F-CU F-C1 F-C2
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
                 MOVE F-P3S TO O-NUM(1)  MOVE F-P3U TO O-NUM(2)
                 MOVE F-ZT  TO O-NUM(3)  MOVE F-ZL  TO O-NUM(4)
                 MOVE F-ZTS TO O-NUM(5)  MOVE F-ZLS TO O-NUM(6)
                 MOVE F-ZU  TO O-NUM(7)  MOVE F-BS  TO O-NUM(8)
                 MOVE F-BU  TO O-NUM(9)  MOVE F-CS  TO O-NUM(10)
                 MOVE F-CU  TO O-NUM(11) MOVE F-C1  TO O-NUM(12)
                 MOVE F-C2  TO O-NUM(13)
                 WRITE OUT-REC
             END-READ
           END-PERFORM.
           CLOSE BIN-FILE OUT-FILE.
