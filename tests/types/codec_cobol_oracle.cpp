// Helpers that compile and run the COBOL fixture programs.
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <cinttypes>
#include <fstream>
#include <sstream>

#include "types/cobol_oracle.h"

namespace zq_test {

CobolOracle::CobolOracle() {
  char tmpl[] = "/tmp/zq_cobol_XXXXXX";
  const char* d = mkdtemp(tmpl);
  dir_ = d != nullptr ? d : "/tmp";
}

CobolOracle::~CobolOracle() {
  if (dir_ != "/tmp" && system(("rm -rf '" + dir_ + "'").c_str()) != 0) perror("rm");
}

bool CobolOracle::Available() { return system("command -v cobc >/dev/null 2>&1") == 0; }

bool CobolOracle::Compile(const std::string& name, const std::string& exe, const std::string& flags,
                          const std::string& from, const std::string& to) {
  std::string src = Read(std::string(ZQ_COBOL_DIR) + "/" + name);
  if (src.empty()) return false;
  for (size_t p = src.find(from); !from.empty() && p != std::string::npos;
       p = src.find(from, p + to.size())) {
    src.replace(p, from.size(), to);
  }
  Write(exe + ".cbl", src);
  return system(("cd '" + dir_ + "' && cobc -x -free " + flags + " -o " + exe + " " + exe + ".cbl")
                    .c_str()) == 0;
}

std::vector<int> CobolOracle::Layout(const std::string& exe) {
  std::istringstream in(Run(exe, "layout"));
  std::vector<int> lengths;
  for (int n; in >> n;) lengths.push_back(n);
  return lengths;
}

std::string CobolOracle::Encode(const std::string& exe, const std::vector<int64_t>& values,
                                int digits, const std::string& bin) {
  std::string lines;
  for (int64_t v : values) {
    char buf[40];
    snprintf(buf, sizeof(buf), "%c%0*" PRId64 "\n", v < 0 ? '-' : '+', digits, v < 0 ? -v : v);
    lines += buf;
  }
  Write("values.txt", lines);
  Run(exe, "encode");
  return Read(bin);
}

std::vector<int64_t> CobolOracle::Decode(const std::string& exe, const std::string& bin,
                                         const std::string& data) {
  Write(bin, data);
  Run(exe, "decode");
  std::istringstream in(Read("decoded.txt"));
  std::vector<int64_t> out;
  for (std::string w; in >> w;) out.push_back(strtoll(w.c_str(), nullptr, 10));
  return out;
}

std::string CobolOracle::Run(const std::string& exe, const std::string& arg) {
  std::string out;
  FILE* f = popen(("cd '" + dir_ + "' && ./" + exe + " " + arg).c_str(), "r");
  if (f == nullptr) return out;
  char buf[4096];
  for (size_t n; (n = fread(buf, 1, sizeof(buf), f)) > 0;) out.append(buf, n);
  pclose(f);
  return out;
}

std::string CobolOracle::Read(const std::string& file) const {
  std::ifstream in(file[0] == '/' ? file : dir_ + "/" + file, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

void CobolOracle::Write(const std::string& file, const std::string& data) const {
  std::ofstream(dir_ + "/" + file, std::ios::binary | std::ios::trunc) << data;
}

}  // namespace zq_test
