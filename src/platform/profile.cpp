#include "platform/profile.h"

#include <strings.h>

#include "platform/fs.h"

namespace zq {
namespace platform {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

std::string Trim(const std::string& s, std::string::size_type from, std::string::size_type to) {
  while (from < to && IsBlank(s[from])) ++from;
  while (to > from && IsBlank(s[to - 1])) --to;
  return s.substr(from, to - from);
}

bool SameName(const std::string& a, const char* b) { return strcasecmp(a.c_str(), b) == 0; }

}  // namespace

void ProfileFile::Parse(const std::string& text) {
  sections_.clear();
  Section* current = nullptr;
  std::string::size_type pos = 0;
  while (pos < text.size()) {
    std::string::size_type end = text.find('\n', pos);
    if (end == std::string::npos) end = text.size();
    std::string line = Trim(text, pos, end);
    pos = end + 1;
    if (line.empty() || line[0] == ';') continue;
    if (line[0] == '[') {
      std::string::size_type close = line.find(']');
      if (close == std::string::npos) close = line.size();
      sections_.push_back(Section{Trim(line, 1, close), {}});
      current = &sections_.back();
      continue;
    }
    std::string::size_type eq = line.find('=');
    if (current == nullptr || eq == std::string::npos) continue;
    std::string key = Trim(line, 0, eq);
    std::string value = Trim(line, eq + 1, line.size());
    if (value.size() >= 2 && (value[0] == '"' || value[0] == '\'') &&
        value.back() == value[0]) {
      value = value.substr(1, value.size() - 2);
    }
    current->entries.push_back(Entry{key, value});
  }
}

bool ProfileFile::Load(const char* path) {
  std::string text;
  if (!ReadWholeFile(path, text)) {
    sections_.clear();
    return false;
  }
  Parse(text);
  return true;
}

bool ProfileFile::Get(const char* section, const char* key, std::string& value) const {
  if (section == nullptr || key == nullptr) return false;
  for (const Section& s : sections_) {
    if (!SameName(s.name, section)) continue;
    for (const Entry& e : s.entries) {
      if (SameName(e.key, key)) {
        value = e.value;
        return true;
      }
    }
  }
  return false;
}

std::vector<std::string> ProfileFile::Sections() const {
  std::vector<std::string> names;
  for (const Section& s : sections_) {
    bool seen = false;
    for (const std::string& n : names) seen = seen || SameName(n, s.name.c_str());
    if (!seen) names.push_back(s.name);
  }
  return names;
}

bool ProfileFile::Keys(const char* section, std::vector<std::string>& keys) const {
  keys.clear();
  bool found = false;
  if (section == nullptr) return false;
  for (const Section& s : sections_) {
    if (!SameName(s.name, section)) continue;
    found = true;
    for (const Entry& e : s.entries) {
      bool seen = false;
      for (const std::string& k : keys) seen = seen || SameName(k, e.key.c_str());
      if (!seen) keys.push_back(e.key);
    }
  }
  return found;
}

}  // namespace platform
}  // namespace zq
