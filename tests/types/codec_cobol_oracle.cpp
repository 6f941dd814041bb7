// Helpers that compile and run the COBOL fixture programs.
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

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
  if (dir_ != "/tmp") {
    const std::string cmd = "rm -rf '" + dir_ + "'";
    if (system(cmd.c_str()) != 0) perror("rm");
  }
}

bool CobolOracle::Available() { return system("command -v cobc >/dev/null 2>&1") == 0; }

bool CobolOracle::Compile(const std::string& name, const std::string& exe, const std::string& flags,
                          const std::string& from, const std::string& to) {
  std::string src = Read(std::string(ZQ_COBOL_DIR) + "/" + name);
  if (src.empty()) return false;
  if (!from.empty()) {
    for (size_t p = src.find(from); p != std::string::npos; p = src.find(from, p + to.size())) {
      src.replace(p, from.size(), to);
    }
  }
  Write(dir_ + "/" + exe + ".cbl", src);
  const std::string cmd =
      "cd '" + dir_ + "' && cobc -x -free " + flags + " -o " + exe + " " + exe + ".cbl";
  return system(cmd.c_str()) == 0;
}

std::string CobolOracle::Run(const std::string& exe, const std::string& arg) {
  const std::string cmd = "cd '" + dir_ + "' && ./" + exe + " " + arg;
  std::string out;
  FILE* f = popen(cmd.c_str(), "r");
  if (f == nullptr) return out;
  char buf[4096];
  size_t n;
  while ((n = fread(buf, 1, sizeof(buf), f)) > 0) out.append(buf, n);
  pclose(f);
  return out;
}

std::string CobolOracle::Read(const std::string& file) const {
  const std::string path = file[0] == '/' ? file : dir_ + "/" + file;
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

void CobolOracle::Write(const std::string& file, const std::string& data) const {
  const std::string path = file[0] == '/' ? file : dir_ + "/" + file;
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << data;
}

}  // namespace zq_test
