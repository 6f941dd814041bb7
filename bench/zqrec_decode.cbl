      *> Decodes the benchmark input to CSV, as zqrec does: a header row,
      *> then each record's numbers with their decimal places and its text
      *> without trailing blanks. Arguments: input file, output file.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. ZQDEC.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT IN-FILE ASSIGN TO DYNAMIC WS-IN
               ORGANIZATION IS SEQUENTIAL.
           SELECT OUT-FILE ASSIGN TO DYNAMIC WS-OUT
               ORGANIZATION IS LINE SEQUENTIAL.
       DATA DIVISION.
       FILE SECTION.
       FD  IN-FILE.
       01  IN-REC.
           05  R-PACKED    PIC S9(7)V99     COMP-3.
           05  R-ZONED     PIC S9(7)V99.
           05  R-BINARY    PIC S9(9)        COMP.
           05  R-TEXT      PIC X(20).
       FD  OUT-FILE.
       01  OUT-LINE        PIC X(80).
       WORKING-STORAGE SECTION.
       01  WS-IN           PIC X(256).
       01  WS-OUT          PIC X(256).
       01  WS-EOF          PIC X VALUE "N".
       01  E-PACKED        PIC -(8)9.99.
       01  E-ZONED         PIC -(8)9.99.
       01  E-BINARY        PIC -(10)9.
       PROCEDURE DIVISION.
           ACCEPT WS-IN FROM ARGUMENT-VALUE
           ACCEPT WS-OUT FROM ARGUMENT-VALUE
           OPEN INPUT IN-FILE OUTPUT OUT-FILE
           MOVE "packed,zoned,binary,text" TO OUT-LINE
           WRITE OUT-LINE
           PERFORM UNTIL WS-EOF = "Y"
               READ IN-FILE
                   AT END MOVE "Y" TO WS-EOF
                   NOT AT END
                       MOVE R-PACKED TO E-PACKED
                       MOVE R-ZONED TO E-ZONED
                       MOVE R-BINARY TO E-BINARY
                       MOVE SPACES TO OUT-LINE
                       STRING FUNCTION TRIM(E-PACKED) ","
                              FUNCTION TRIM(E-ZONED) ","
                              FUNCTION TRIM(E-BINARY) ","
                              FUNCTION TRIM(R-TEXT TRAILING)
                              DELIMITED BY SIZE INTO OUT-LINE
                       WRITE OUT-LINE
               END-READ
           END-PERFORM
           CLOSE IN-FILE OUT-FILE
           STOP RUN.
