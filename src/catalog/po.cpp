// Message source files (".po"): reading, writing and compiling.
#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "platform/fs.h"
#include "zq/catalog.h"

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

std::string Trim(const std::string& s) {
  std::string::size_type a = 0, b = s.size();
  while (a < b && IsBlank(s[a])) ++a;
  while (b > a && IsBlank(s[b - 1])) --b;
  return s.substr(a, b - a);
}

// Reads one quoted string starting at `s[pos]` (the opening quote) and
// appends its unescaped content; only blanks may follow the closing quote.
bool ReadQuoted(const std::string& s, std::string::size_type pos, std::string& out,
                std::string& problem) {
  if (pos >= s.size() || s[pos] != '"') {
    problem = "expected a quoted string";
    return false;
  }
  ++pos;
  for (;;) {
    if (pos >= s.size()) {
      problem = "unterminated string";
      return false;
    }
    char c = s[pos++];
    if (c == '"') break;
    if (c != '\\') {
      out += c;
      continue;
    }
    if (pos >= s.size()) {
      problem = "unterminated string";
      return false;
    }
    char e = s[pos++];
    switch (e) {
      case 'n': out += '\n'; break;
      case 't': out += '\t'; break;
      case 'r': out += '\r'; break;
      case 'a': out += '\a'; break;
      case 'b': out += '\b'; break;
      case 'f': out += '\f'; break;
      case 'v': out += '\v'; break;
      case '\\': case '"': case '\'': case '?': out += e; break;
      case 'x': {
        int v = 0, digits = 0;
        while (pos < s.size() && std::isxdigit(static_cast<unsigned char>(s[pos]))) {
          char h = s[pos++];
          v = v * 16 + (h <= '9' ? h - '0' : (h | 0x20) - 'a' + 10);
          v &= 0xFF;
          ++digits;
        }
        if (digits == 0) {
          problem = "invalid escape sequence";
          return false;
        }
        out += static_cast<char>(v);
        break;
      }
      default:
        if (e >= '0' && e <= '7') {
          int v = e - '0';
          for (int k = 0; k < 2 && pos < s.size() && s[pos] >= '0' && s[pos] <= '7'; ++k) {
            v = v * 8 + (s[pos++] - '0');
          }
          out += static_cast<char>(v & 0xFF);
        } else {
          problem = "invalid escape sequence";
          return false;
        }
    }
  }
  while (pos < s.size() && IsBlank(s[pos])) ++pos;
  if (pos < s.size()) {
    problem = "unexpected text after the string";
    return false;
  }
  return true;
}

std::string Quote(const std::string& text) {
  std::string out = "\"";
  for (unsigned char c : text) {
    switch (c) {
      case '\n': out += "\\n"; break;
      case '\t': out += "\\t"; break;
      case '\r': out += "\\r"; break;
      case '\a': out += "\\a"; break;
      case '\b': out += "\\b"; break;
      case '\f': out += "\\f"; break;
      case '\v': out += "\\v"; break;
      case '\\': out += "\\\\"; break;
      case '"': out += "\\\""; break;
      default:
        if (c < 32 || c == 127) {
          char buf[8];
          std::snprintf(buf, sizeof buf, "\\%03o", c);
          out += buf;
        } else {
          out += static_cast<char>(c);
        }
    }
  }
  return out + "\"";
}

// Writes `keyword "text"`, splitting a text with inner line feeds into one
// quoted line per text line after an empty first string.
void WriteField(std::string& out, const std::string& keyword, const std::string& text) {
  std::string::size_type nl = text.find('\n');
  if (nl == std::string::npos || nl + 1 == text.size()) {
    out += keyword + " " + Quote(text) + "\n";
    return;
  }
  out += keyword + " \"\"\n";
  std::string::size_type start = 0;
  while (start < text.size()) {
    std::string::size_type end = text.find('\n', start);
    end = end == std::string::npos ? text.size() : end + 1;
    out += Quote(text.substr(start, end - start)) + "\n";
    start = end;
  }
}

void Put32(std::string& out, uint32_t v) {
  for (int i = 0; i < 4; ++i) out += static_cast<char>((v >> (8 * i)) & 0xFF);
}

}  // namespace

bool ZQPoFile::Read(const char* path) {
  entries_.clear();
  std::string text;
  if (!zq::platform::ReadWholeFile(path, text)) {
    error_ = std::string(path != nullptr ? path : "") + ": cannot be read";
    return false;
  }
  if (!Parse(text)) {
    error_ = std::string(path) + ":" + error_;
    return false;
  }
  return true;
}

bool ZQPoFile::Parse(const std::string& text) {
  entries_.clear();
  error_.clear();
  ZQPoEntry entry;
  bool has_msgid = false;
  bool has_msgstr = false;
  std::string* field = nullptr;  // the text a continuation line extends
  int line_no = 0;
  int msgid_line = 0;  // where the current entry's msgid stands
  auto fail = [&](const std::string& problem) {
    error_ = std::to_string(line_no) + ": " + problem;
    entries_.clear();
    return false;
  };
  auto finish = [&]() {
    entries_.push_back(std::move(entry));
    entry = ZQPoEntry();
    has_msgid = has_msgstr = false;
    field = nullptr;
  };
  std::string::size_type pos = 0;
  while (pos <= text.size()) {
    std::string::size_type end = text.find('\n', pos);
    if (end == std::string::npos) end = text.size();
    std::string line = Trim(text.substr(pos, end - pos));
    pos = end + 1;
    ++line_no;
    if (line.empty()) {
      if (end == text.size()) break;
      continue;
    }
    if (line[0] == '#') {
      if (has_msgstr) finish();
      if (has_msgid) return fail("comment inside an entry");
      field = nullptr;
      if (line.size() > 1 && line[1] == ',') {
        std::string::size_type start = 2;
        while (start <= line.size()) {
          std::string::size_type comma = line.find(',', start);
          if (comma == std::string::npos) comma = line.size();
          std::string flag = Trim(line.substr(start, comma - start));
          if (flag == "fuzzy") {
            entry.fuzzy = true;
          } else if (!flag.empty()) {
            entry.flags.push_back(flag);
          }
          start = comma + 1;
        }
      } else {
        entry.comments.push_back(line);
      }
      continue;
    }
    if (line[0] == '"') {
      if (field == nullptr) return fail("string without a keyword");
      std::string problem;
      if (!ReadQuoted(line, 0, *field, problem)) return fail(problem);
      continue;
    }
    std::string::size_type sp = 0;
    while (sp < line.size() && !IsBlank(line[sp]) && line[sp] != '"') ++sp;
    std::string keyword = line.substr(0, sp);
    while (sp < line.size() && IsBlank(line[sp])) ++sp;
    std::string value;
    std::string problem;
    if (keyword == "msgctxt") {
      if (has_msgstr) finish();
      if (has_msgid || entry.has_msgctxt) return fail("misplaced msgctxt");
      entry.has_msgctxt = true;
      field = &entry.msgctxt;
    } else if (keyword == "msgid") {
      if (has_msgstr) finish();
      if (has_msgid) return fail("missing msgstr");
      has_msgid = true;
      msgid_line = line_no;
      field = &entry.msgid;
    } else if (keyword == "msgid_plural") {
      if (!has_msgid || has_msgstr || !entry.msgid_plural.empty()) {
        return fail("misplaced msgid_plural");
      }
      field = &entry.msgid_plural;
    } else if (keyword == "msgstr") {
      if (!has_msgid || has_msgstr) return fail("misplaced msgstr");
      if (!entry.msgid_plural.empty()) return fail("a plural entry needs msgstr[0]");
      has_msgstr = true;
      entry.msgstr.emplace_back();
      field = &entry.msgstr.back();
    } else if (keyword.compare(0, 7, "msgstr[") == 0 && keyword.back() == ']') {
      std::string index = keyword.substr(7, keyword.size() - 8);
      if (!has_msgid || entry.msgid_plural.empty()) return fail("msgstr[] without msgid_plural");
      if (index != std::to_string(entry.msgstr.size())) return fail("msgstr[] out of order");
      has_msgstr = true;
      entry.msgstr.emplace_back();
      field = &entry.msgstr.back();
    } else {
      return fail("unknown keyword \"" + keyword + "\"");
    }
    if (!ReadQuoted(line, sp, *field, problem)) return fail(problem);
  }
  if (has_msgid && !has_msgstr) {
    line_no = msgid_line;
    return fail("missing msgstr");
  }
  if (has_msgstr) finish();
  return true;
}

std::string ZQPoFile::Format() const {
  std::string out;
  bool first = true;
  for (const ZQPoEntry& e : entries_) {
    if (!first) out += '\n';
    first = false;
    for (const std::string& c : e.comments) {
      if (c.compare(0, 2, "#|") != 0) out += c + "\n";
    }
    if (e.fuzzy || !e.flags.empty()) {
      out += "#";
      if (e.fuzzy) out += ", fuzzy";
      for (const std::string& f : e.flags) out += ", " + f;
      out += "\n";
    }
    for (const std::string& c : e.comments) {
      if (c.compare(0, 2, "#|") == 0) out += c + "\n";
    }
    if (e.has_msgctxt) WriteField(out, "msgctxt", e.msgctxt);
    WriteField(out, "msgid", e.msgid);
    if (!e.msgid_plural.empty()) {
      WriteField(out, "msgid_plural", e.msgid_plural);
      std::size_t forms = std::max<std::size_t>(e.msgstr.size(), 2);
      for (std::size_t i = 0; i < forms; ++i) {
        WriteField(out, "msgstr[" + std::to_string(i) + "]",
                   i < e.msgstr.size() ? e.msgstr[i] : std::string());
      }
    } else {
      WriteField(out, "msgstr", e.msgstr.empty() ? std::string() : e.msgstr[0]);
    }
  }
  return out;
}

bool ZQPoFile::Write(const char* path) const {
  return zq::platform::WriteWholeFile(path, Format());
}

std::string ZQPoFile::Compile() const {
  std::vector<std::pair<std::string, std::string>> pairs;
  for (const ZQPoEntry& e : entries_) {
    if (e.fuzzy || e.msgstr.empty() || e.msgstr[0].empty()) continue;
    std::string key = e.has_msgctxt ? e.msgctxt + '\x04' + e.msgid : e.msgid;
    if (!e.msgid_plural.empty()) key += std::string(1, '\0') + e.msgid_plural;
    std::string value = e.msgstr[0];
    for (std::size_t i = 1; i < e.msgstr.size(); ++i) value += std::string(1, '\0') + e.msgstr[i];
    pairs.emplace_back(std::move(key), std::move(value));
  }
  std::sort(pairs.begin(), pairs.end());
  pairs.erase(std::unique(pairs.begin(), pairs.end(),
                          [](const std::pair<std::string, std::string>& a,
                             const std::pair<std::string, std::string>& b) {
                            return a.first == b.first;
                          }),
              pairs.end());
  uint32_t n = static_cast<uint32_t>(pairs.size());
  uint32_t originals = 28;
  uint32_t translations = originals + 8 * n;
  uint32_t data = translations + 8 * n;
  std::string out;
  Put32(out, 0x950412deu);
  Put32(out, 0);
  Put32(out, n);
  Put32(out, originals);
  Put32(out, translations);
  Put32(out, 0);  // no hash table
  Put32(out, data);
  std::string strings;
  std::string tables[2];
  for (int t = 0; t < 2; ++t) {
    for (const auto& p : pairs) {
      const std::string& s = t == 0 ? p.first : p.second;
      Put32(tables[t], static_cast<uint32_t>(s.size()));
      Put32(tables[t], data + static_cast<uint32_t>(strings.size()));
      strings += s;
      strings += '\0';
    }
  }
  return out + tables[0] + tables[1] + strings;
}
