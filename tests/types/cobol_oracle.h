// Runs the COBOL fixture programs of tests/types/cobol in a temporary folder.
#ifndef ZQ_TESTS_TYPES_COBOL_ORACLE_H
#define ZQ_TESTS_TYPES_COBOL_ORACLE_H

#include <cstdint>
#include <string>
#include <vector>

namespace zq_test {

// A fixture program reads signed values from values.txt, writes them as
// fields to its record file ("encode"), reads that file back into
// decoded.txt ("decode"), and prints its field lengths ("layout").
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
  // The field lengths `exe` reports; empty on failure.
  std::vector<int> Layout(const std::string& exe);
  // Writes `values` as "+0042" lines of `digits` digits, runs the encoder
  // and returns the record file `bin`.
  std::string Encode(const std::string& exe, const std::vector<int64_t>& values, int digits,
                     const std::string& bin);
  // Writes `data` to the record file `bin`, runs the decoder and returns the
  // numbers it printed.
  std::vector<int64_t> Decode(const std::string& exe, const std::string& bin,
                              const std::string& data);

  std::string Run(const std::string& exe, const std::string& arg);
  std::string Read(const std::string& file) const;
  void Write(const std::string& file, const std::string& data) const;

 private:
  std::string dir_;
};

}  // namespace zq_test

#endif  // ZQ_TESTS_TYPES_COBOL_ORACLE_H
