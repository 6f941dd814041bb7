// Runs the COBOL fixture programs of tests/types/cobol in a temporary folder.
#ifndef ZQ_TESTS_TYPES_COBOL_ORACLE_H
#define ZQ_TESTS_TYPES_COBOL_ORACLE_H

#include <string>

namespace zq_test {

class CobolOracle {
 public:
  // Makes a temporary folder; Available() tells whether cobc is on the path.
  CobolOracle();
  ~CobolOracle();
  static bool Available();

  // Compiles fixture `name` (in tests/types/cobol) into program `exe`, after
  // replacing every `from` by `to` in its text; extra cobc flags in `flags`.
  bool Compile(const std::string& name, const std::string& exe, const std::string& flags,
               const std::string& from = "", const std::string& to = "");
  // Runs `exe` with `arg` in the folder; returns its standard output.
  std::string Run(const std::string& exe, const std::string& arg);

  std::string Read(const std::string& file) const;
  void Write(const std::string& file, const std::string& data) const;
  const std::string& dir() const { return dir_; }

 private:
  std::string dir_;
};

}  // namespace zq_test

#endif  // ZQ_TESTS_TYPES_COBOL_ORACLE_H
