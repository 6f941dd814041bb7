// The help texts of zqrec: printed by --help and turned into the man page.
#ifndef ZQREC_HELP_H
#define ZQREC_HELP_H

namespace zqrec {

struct OptionHelp {
  const char* long_name;  // without the dashes
  char short_name;        // 0 when the option has only a long form
  const char* arg;        // argument name, null for a switch
  const char* text;
};

struct CommandHelp {
  const char* name;
  const char* synopsis;      // after "zqrec NAME "
  const char* summary;       // one line
  const char* description;   // paragraphs separated by blank lines
  const OptionHelp* options; // ends with a null long_name
};

// The commands in the order the help lists them; ends with a null name.
extern const CommandHelp kCommands[];

// General description, layout file format and exit codes.
extern const char* const kIntro;
extern const char* const kLayoutHelp;
extern const char* const kExitHelp;

// Prints the help of one command, or the overview when `cmd` is null.
void PrintHelp(const CommandHelp* cmd);
// Prints the manual page (roff) built from the same texts.
void PrintManPage(const char* version);

}  // namespace zqrec

#endif  // ZQREC_HELP_H
