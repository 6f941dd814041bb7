// Help texts and the manual page generated from them.
#include "help.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace zqrec {
namespace {

const OptionHelp kDecodeOptions[] = {
    {"output", 'o', "FILE", "Write to FILE instead of standard output."},
    {"format", 'f', "FORMAT", "Output format: csv (RFC 4180, with a header row; the default) or jsonl (one JSON object per line)."},
    {"encoding", 'e', "NAME", "Code page of text fields that do not name one in the layout: an EBCDIC code page (cp037, cp273, cp277, cp278, cp280, cp284, cp285, cp297, cp500, cp871, cp1047) or a code set (ISO-8859-1, the default; CP1252, UTF-8, Shift_JIS, CP932, ...)."},
    {"rdw", 'r', nullptr, "Variable-length records, each behind a 4-byte record descriptor word (length in the first two bytes, most significant first, counting the descriptor)."},
    {"bdw", 'b', nullptr, "Records come in blocks behind 4-byte block descriptor words (implies --rdw)."},
    {"max-errors", 'm', "N", "Go on after bad records until more than N have failed (default 0: stop at the first)."},
    {"quiet", 'q', nullptr, "No progress display and no summary line."},
    {"help", 'h', nullptr, "Show this help."},
    {nullptr, 0, nullptr, nullptr}};

const OptionHelp kEncodeOptions[] = {
    {"output", 'o', "FILE", "Write the records to FILE instead of standard output."},
    {"encoding", 'e', "NAME", "Code page of text fields that do not name one in the layout (as for decode)."},
    {"rdw", 'r', nullptr, "Write variable-length records with 4-byte record descriptor words."},
    {"bdw", 'b', nullptr, "Also group the records into blocks with block descriptor words (implies --rdw)."},
    {"block-size", 'B', "N", "Largest block in bytes with --bdw, descriptor included (default 32760)."},
    {"max-errors", 'm', "N", "Go on after bad rows until more than N have failed (default 0)."},
    {"quiet", 'q', nullptr, "No progress display and no summary line."},
    {"help", 'h', nullptr, "Show this help."},
    {nullptr, 0, nullptr, nullptr}};

const OptionHelp kVerifyOptions[] = {
    {"encoding", 'e', "NAME", "Code page of text fields that do not name one in the layout."},
    {"rdw", 'r', nullptr, "Variable-length records with record descriptor words."},
    {"bdw", 'b', nullptr, "Blocks with block descriptor words (implies --rdw)."},
    {"max-errors", 'm', "N", "Go on until more than N records have failed (default 0)."},
    {"quiet", 'q', nullptr, "No progress display and no summary line."},
    {"help", 'h', nullptr, "Show this help."},
    {nullptr, 0, nullptr, nullptr}};

const OptionHelp kHelpOnly[] = {
    {"help", 'h', nullptr, "Show this help."},
    {nullptr, 0, nullptr, nullptr}};

// Prints `text` wrapped at `width` columns, each line indented by `indent`.
void Wrap(const char* text, int indent, int width) {
  std::string word, line;
  auto flush = [&]() {
    if (!line.empty()) std::printf("%*s%s\n", indent, "", line.c_str());
    line.clear();
  };
  for (const char* p = text;; ++p) {
    if (*p == ' ' || *p == '\n' || *p == '\0') {
      if (!word.empty()) {
        if (!line.empty() && static_cast<int>(line.size() + 1 + word.size()) > width - indent) flush();
        line += line.empty() ? word : " " + word;
        word.clear();
      }
      if (*p == '\n' && p[1] == '\n') {
        flush();
        std::printf("\n");
        ++p;
      }
      if (*p == '\n' && p[1] == ' ') {
        flush();  // a line that starts with blanks keeps its own shape
        const char* e = std::strchr(p + 1, '\n');
        const std::string raw(p + 1, e == nullptr ? std::strlen(p + 1) : e - p - 1);
        std::printf("%*s%s\n", indent, "", raw.c_str());
        p += raw.size();
      }
      if (*p == '\0') break;
    } else {
      word += *p;
    }
  }
  flush();
}

std::string OptionLabel(const OptionHelp& o) {
  std::string s = o.short_name ? std::string("-") + o.short_name + ", " : std::string("    ");
  s += "--";
  s += o.long_name;
  if (o.arg) s += std::string(" ") + o.arg;
  return s;
}

// Escapes roff's special characters.
std::string Roff(const char* text) {
  std::string s;
  bool line_start = true;
  for (const char* p = text; *p; ++p) {
    if (*p == '\\') {
      s += "\\e";
    } else if (*p == '-') {
      s += "\\-";
    } else if (line_start && (*p == '.' || *p == '\'')) {
      s += "\\&";
      s += *p;
    } else {
      s += *p;
    }
    line_start = *p == '\n';
  }
  return s;
}

void RoffParagraphs(const char* text) {
  std::string t = Roff(text);
  size_t pos = 0;
  std::printf(".PP\n");
  while (pos < t.size()) {
    size_t e = t.find("\n\n", pos);
    std::string para = t.substr(pos, e == std::string::npos ? std::string::npos : e - pos);
    if (para.find("\n ") != std::string::npos || (!para.empty() && para[0] == ' ')) {
      std::printf(".nf\n%s\n.fi\n", para.c_str());
    } else {
      std::printf("%s\n", para.c_str());
    }
    if (e == std::string::npos) break;
    std::printf(".PP\n");
    pos = e + 2;
  }
}

}  // namespace

const CommandHelp kCommands[] = {
    {"decode", "LAYOUT INPUT [options]",
     "convert a record file to CSV or JSON Lines",
     "Reads INPUT (\"-\" for standard input) as records described by LAYOUT and writes one row per record. Numbers are exact: packed, zoned, BCD and binary fields print every stored digit with the field's scale as decimal places. Dates and times print by the field's picture (yyyy-mm-dd and H24:MM:SS unless the layout gives one); an empty date is an empty CSV field or a JSON null. Text is converted from the field's code page to UTF-8 and loses its trailing padding.\n\nA record whose bytes are not valid for a field's type (a non-digit in a zoned field, a bad nibble in a packed field, a short last record) is reported on standard error with its number, byte offset, field and bytes in hexadecimal, and is not written.",
     kDecodeOptions},
    {"encode", "LAYOUT INPUT.csv [options]",
     "convert CSV back into records",
     "Reads a CSV file with a header row naming the layout's fields (in any order) and writes one record per row. Values are checked against their fields: a number with more digits or decimal places than the field holds, a negative number for an unsigned field, text longer than the field or a date that does not match its picture is reported with its line and field, never cut or rounded. Filler bytes after the fields take the layout's filler byte.",
     kEncodeOptions},
    {"verify", "LAYOUT INPUT [options]",
     "check that every record decodes and encodes back byte for byte",
     "Decodes each record, encodes the decoded values again and reports every field whose bytes do not come back identical, with both forms in hexadecimal.",
     kVerifyOptions},
    {"describe", "PROPERTY-STRING",
     "show a property string's normalised form and properties",
     "Reads a property string such as 'Packed decimal;length=5;scale=2' and prints its normalised form, each property with its value and whether it is meaningful for the type and settable, and the field's display length.",
     kHelpOnly},
    {"types", "",
     "list the field types with their defaults",
     "Prints the 73 types of the catalogue with their value, generic type, default, smallest and largest length, precision, decimal places and scale, and how zqrec converts them.",
     kHelpOnly},
    {nullptr, nullptr, nullptr, nullptr, nullptr}};

const char* const kIntro =
    "zqrec decodes legacy record files (binary, packed and zoned decimal, BCD, IBM, VAX and other floating-point formats, legacy dates, text in EBCDIC and other code pages) to CSV or JSON Lines, and encodes CSV back into records byte for byte. A layout file describes the fields of a record.";

const char* const kLayoutHelp =
    "A layout file has one field per line: a name, white space, then the field's property string in single quotes, optionally followed by encoding=NAME for a text field. Lines starting with # are comments. Fields follow each other without gaps. Example:\n\n"
    " # payroll record\n"
    " record-length 64\n"
    " id      'Comp;length=4'\n"
    " name    'Text;length=20'  encoding=cp037\n"
    " salary  'Packed decimal;length=5;scale=2'\n"
    " hired   'Magic PC Date;picture=\\'yyyy-mm-dd\\''\n"
    "\n"
    "The line \"record-length N\" gives the record length when records end with filler (by default it is the sum of the field lengths); \"filler-byte B\" gives the byte that encode writes there (default 0x20). The property string opens with a type name (see zqrec types) followed by clauses such as ;length=N, ;scale=N (implied decimal places), ;signed=False, ;order=MSB, ;signpos=oslast|osfirst|last|first|none, ;signstyle=ibm|mfcobol|wang|acucobol|rmcobol and ;picture=\\'MASK\\'.";

const char* const kExitHelp =
    "0: every record converted. 2: some records had bad data. 3: usage or layout error. 4: input or output error.";

void PrintHelp(const CommandHelp* cmd) {
  if (cmd == nullptr) {
    std::printf("Usage: zqrec COMMAND [ARGUMENTS] [OPTIONS]\n\n");
    Wrap(kIntro, 0, 79);
    std::printf("\nCommands:\n");
    for (const CommandHelp* c = kCommands; c->name; ++c) {
      std::printf("  %-10s %s\n", c->name, c->summary);
    }
    std::printf("\nRun \"zqrec COMMAND --help\" for a command's options; \"zqrec --version\" shows the version.\n\nLayout files:\n");
    Wrap(kLayoutHelp, 2, 79);
    std::printf("\nExit status:\n");
    Wrap(kExitHelp, 2, 79);
    return;
  }
  std::printf("Usage: zqrec %s %s\n\n", cmd->name, cmd->synopsis);
  Wrap(cmd->description, 0, 79);
  std::printf("\nOptions:\n");
  for (const OptionHelp* o = cmd->options; o->long_name; ++o) {
    std::printf("  %s\n", OptionLabel(*o).c_str());
    Wrap(o->text, 8, 79);
  }
}

void PrintManPage(const char* version) {
  std::printf(".TH ZQREC 1 \"\" \"zqrec %s\" \"User Commands\"\n", version);
  std::printf(".SH NAME\nzqrec \\- decode and encode legacy record files\n");
  std::printf(".SH SYNOPSIS\n");
  for (const CommandHelp* c = kCommands; c->name; ++c) {
    std::printf(".B zqrec %s\n%s\n.br\n", c->name, Roff(c->synopsis).c_str());
  }
  std::printf(".SH DESCRIPTION\n");
  RoffParagraphs(kIntro);
  std::printf(".SH COMMANDS\n");
  for (const CommandHelp* c = kCommands; c->name; ++c) {
    std::printf(".SS \"zqrec %s %s\"\n", c->name, Roff(c->synopsis).c_str());
    RoffParagraphs(c->description);
    for (const OptionHelp* o = c->options; o->long_name; ++o) {
      std::printf(".TP\n.B %s\n%s\n", Roff(OptionLabel(*o).c_str()).c_str(), Roff(o->text).c_str());
    }
  }
  std::printf(".SH LAYOUT FILES\n");
  RoffParagraphs(kLayoutHelp);
  std::printf(".SH EXIT STATUS\n");
  RoffParagraphs(kExitHelp);
}

}  // namespace zqrec
