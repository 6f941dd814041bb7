// Layout files: one field per line, a name and a property string.
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "zq/ebcdic.h"
#include "zq/zqglob.h"
#include "zq/zqstring.h"
#include "zqrec.h"

namespace zqrec {
namespace {

bool IEquals(const std::string& a, const char* b) {
  return strcasecmp(a.c_str(), b) == 0;
}

std::string Trim(const std::string& s) {
  size_t b = 0, e = s.size();
  while (b < e && (s[b] == ' ' || s[b] == '\t')) ++b;
  while (e > b && (s[e - 1] == ' ' || s[e - 1] == '\t')) --e;
  return s.substr(b, e - b);
}

bool EndsWith(const std::string& s, const char* suffix, std::string* stem) {
  const size_t n = std::strlen(suffix);
  if (s.size() <= n || strcasecmp(s.c_str() + s.size() - n, suffix) != 0) return false;
  *stem = s.substr(0, s.size() - n);
  return true;
}

// Property stems that take "_settable", "_invalid" or "_valid".
const char* const kStems[] = {"order", "signed", "nulls", "length", "precision",
                              "scale", "picture", "signstyle", "signpos", "decimal",
                              "padchar", "varlen", "decsep", "thsndsep", "negtype",
                              "identity", "align"};

bool IsStem(const std::string& s) {
  for (const char* stem : kStems) {
    if (IEquals(s, stem)) return true;
  }
  return false;
}

enum class ValueKind { kNumber, kBool, kSignStyle, kSignPos, kNegType, kAlign, kOrder,
                       kTypeName, kAny };

struct Key {
  const char* name;
  ValueKind kind;
};

const Key kKeys[] = {
    {"varlen", ValueKind::kBool},        {"identity", ValueKind::kBool},
    {"padchar", ValueKind::kAny},        {"decsep", ValueKind::kAny},
    {"thsndsep", ValueKind::kAny},       {"length", ValueKind::kNumber},
    {"minlength", ValueKind::kNumber},   {"maxlength", ValueKind::kNumber},
    {"precision", ValueKind::kNumber},   {"minprecision", ValueKind::kNumber},
    {"maxprecision", ValueKind::kNumber}, {"scale", ValueKind::kNumber},
    {"minscale", ValueKind::kNumber},    {"maxscale", ValueKind::kNumber},
    {"decimal", ValueKind::kNumber},     {"mindec", ValueKind::kNumber},
    {"maxdec", ValueKind::kNumber},      {"signstylemask", ValueKind::kNumber},
    {"signposmask", ValueKind::kNumber}, {"negtypemask", ValueKind::kNumber},
    {"alignmask", ValueKind::kNumber},   {"signstyle", ValueKind::kSignStyle},
    {"signpos", ValueKind::kSignPos},    {"negtype", ValueKind::kNegType},
    {"align", ValueKind::kAlign},        {"align_valid", ValueKind::kBool},
    {"usage", ValueKind::kNumber},       {"signed", ValueKind::kBool},
    {"nulls", ValueKind::kBool},         {"picture", ValueKind::kAny},
    {"alias", ValueKind::kAny},          {"order", ValueKind::kOrder},
    {"gentype", ValueKind::kTypeName},
};

// The value of a clause with its quotes and escapes removed.
std::string Unquote(const std::string& v) {
  ZQString src(v.c_str(), static_cast<int>(v.size()));
  ZQString out;
  src.Rewind();
  out.Extract(src);
  return std::string(out.c_str(), out.length());
}

// Checks one "key=value" or flag clause; false with `error` set.
bool CheckClause(const std::string& clause, size_t* rel_col, std::string* error) {
  const size_t eq = clause.find('=');
  const size_t lead = clause.find_first_not_of(" \t");
  *rel_col = lead == std::string::npos ? 0 : lead;
  std::string stem;
  if (eq == std::string::npos) {
    const std::string word = Trim(clause);
    if (word.empty()) {
      *error = "expected a property after \";\"";
      return false;
    }
    if (IEquals(word, "autoinc") || IEquals(word, "currency") ||
        IEquals(word, "rowversion") || IEquals(word, "display")) {
      return true;
    }
    if ((EndsWith(word, "_invalid", &stem) || EndsWith(word, "_valid", &stem)) && IsStem(stem)) {
      return true;
    }
    *error = "unknown property flag \"" + word + "\"";
    return false;
  }
  const std::string key = Trim(clause.substr(0, eq));
  const std::string value = Trim(clause.substr(eq + 1));
  const size_t value_col = clause.find_first_not_of(" \t", eq + 1);
  if (EndsWith(key, "_settable", &stem) && IsStem(stem)) {
    if (value != "True" && value != "False" && value != "true" && value != "false") {
      *rel_col = value_col == std::string::npos ? eq + 1 : value_col;
      *error = "expected True or False for \"" + key + "\"";
      return false;
    }
    return true;
  }
  const Key* found = nullptr;
  for (const Key& k : kKeys) {
    if (IEquals(key, k.name)) found = &k;
  }
  if (found == nullptr) {
    *error = "unknown property \"" + key + "\"";
    return false;
  }
  *rel_col = value_col == std::string::npos ? eq + 1 : value_col;
  const std::string v = Unquote(value);
  switch (found->kind) {
    case ValueKind::kNumber: {
      errno = 0;
      char* end = nullptr;
      std::strtol(v.c_str(), &end, 0);
      if (v.empty() || *end != '\0' || errno != 0) {
        *error = "expected a number for \"" + key + "\", found \"" + v + "\"";
        return false;
      }
      return true;
    }
    case ValueKind::kBool:
      if (v != "True" && v != "False" && v != "true" && v != "false") {
        *error = "expected True or False for \"" + key + "\", found \"" + v + "\"";
        return false;
      }
      return true;
    case ValueKind::kSignStyle:
      if (ZQDType::CharToNegstyle(v.c_str()) == 0) {
        *error = "unknown sign style \"" + v +
                 "\" (expected ibm, mfcobol, wang, unisys, rmcobol, acucobol, ...)";
        return false;
      }
      return true;
    case ValueKind::kSignPos:
      if (ZQDType::CharToNegpos(v.c_str()) == 0) {
        *error = "unknown sign position \"" + v +
                 "\" (expected osfirst, oslast, first, last or none)";
        return false;
      }
      return true;
    case ValueKind::kNegType:
      if (ZQDType::CharToNegtype(v.c_str()) == 0) {
        *error = "unknown negative type \"" + v + "\"";
        return false;
      }
      return true;
    case ValueKind::kAlign:
      if (ZQDType::CharToAlign(v.c_str()) == 0) {
        *error = "unknown alignment \"" + v + "\"";
        return false;
      }
      return true;
    case ValueKind::kOrder: {
      const std::string t = v.substr(v.find_first_not_of(" \t") == std::string::npos
                                         ? v.size()
                                         : v.find_first_not_of(" \t"));
      if (t.compare(0, 3, "MSB") != 0 && t.compare(0, 3, "LSB") != 0) {
        *error = "expected MSB or LSB for \"order\", found \"" + v + "\"";
        return false;
      }
      return true;
    }
    case ValueKind::kTypeName: {
      DATATYPE t;
      if (!ZQDType::TypeByName(v.c_str(), t)) {
        *error = "unknown type name \"" + v + "\"";
        return false;
      }
      return true;
    }
    case ValueKind::kAny:
      return true;
  }
  return true;
}

bool KindOf(DATATYPE t, Kind* kind) {
  switch (static_cast<int>(t)) {
    case 4: case 101: case 110: case 145:
      *kind = Kind::kPacked; return true;
    case 112: case 138: case 139: case 140: case 141:
      *kind = Kind::kZoned; return true;
    case 174:
      *kind = Kind::kBcd; return true;
    case 1: case 2: case 12: case 117: case 142: case 146: case 147: case 149: case 150:
      *kind = Kind::kInteger; return true;
    case 3: case 104: case 105: case 106: case 108: case 109: case 115: case 116:
    case 132: case 133: case 143: case 144: case 168: case 173: case 175: case 176:
      *kind = Kind::kFloat; return true;
    case 6: case 124: case 130: case 169:
      *kind = Kind::kDate; return true;
    case 7: case 125: case 131: case 170: case 171:
      *kind = Kind::kTime; return true;
    case 0: case 10: case 126: case 127: case 128: case 136: case 137: case 148:
      *kind = Kind::kText; return true;
    case 155:
      *kind = Kind::kHex; return true;
    default:
      return false;
  }
}

std::string Where(const std::string& path, int line, size_t col) {
  std::ostringstream s;
  s << path << ":" << line << ":" << col + 1 << ": ";
  return s.str();
}

}  // namespace

bool FindCodePage(const std::string& name, CodePage* cp, std::string* error) {
  std::string lower;
  for (char c : name) {
    if (c != '-' && c != '_') lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  // EBCDIC code pages by number: cp037, IBM-1047, ebcdic273 and the like.
  for (const char* prefix : {"ebcdiccp", "ebcdic", "ibm", "cp"}) {
    const size_t n = std::strlen(prefix);
    if (lower.compare(0, n, prefix) == 0 && lower.size() > n &&
        lower.find_first_not_of("0123456789", n) == std::string::npos) {
      const int number = std::atoi(lower.c_str() + n);
      if (ZQEbcdic::IsSupported(number)) {
        cp->name = name;
        cp->ebcdic = number;
        cp->to_iso = ZQEbcdic::ToISOTable(number);
        cp->from_iso = ZQEbcdic::FromISOTable(number);
        cp->space = cp->from_iso[0x20];
        cp->cset = ZQ_CSET_ISO8859_1;
        return true;
      }
      break;
    }
  }
  std::basic_string<unsigned short> wide;
  for (char c : name) wide += static_cast<unsigned char>(c);
  const ZQ_CSET cs = ZQGlob::EncodingByName(wide.c_str());
  if (cs == ZQ_CSET_UNKNOWN || cs == ZQ_CSET_UCS2) {
    *error = "unknown encoding \"" + name +
             "\" (expected an EBCDIC code page such as cp037 or cp1047, or a code set "
             "such as ISO-8859-1, CP1252, UTF-8 or Shift_JIS)";
    return false;
  }
  if (!ZQGlob::ValidateEncoding(cs)) {
    *error = "the encoding \"" + name + "\" cannot be loaded";
    return false;
  }
  cp->name = name;
  cp->ebcdic = 0;
  cp->cset = cs;
  cp->to_iso = cp->from_iso = nullptr;
  cp->space = 0x20;
  return true;
}

bool ParseProperties(const std::string& text, ZQDType* type, size_t* column,
                     std::string* error) {
  if (text.empty() || text[0] != '\'') {
    *column = 0;
    *error = "expected a property string in single quotes, such as 'Packed decimal;length=5'";
    return false;
  }
  // Find the closing quote; a backslash protects the character after it.
  size_t close = std::string::npos;
  for (size_t i = 1; i < text.size(); ++i) {
    if (text[i] == '\\') {
      ++i;
    } else if (text[i] == '\'') {
      close = i;
      break;
    }
  }
  if (close == std::string::npos) {
    *column = text.size();
    *error = "expected a closing single quote at the end of the property string";
    return false;
  }
  // Split into the type name and clauses at unescaped semicolons.
  std::vector<std::pair<size_t, std::string>> parts;
  size_t start = 1;
  std::string cur;
  for (size_t i = 1; i < close; ++i) {
    if (text[i] == '\\' && i + 1 < close) {
      cur += text[i];
      cur += text[++i];
    } else if (text[i] == ';') {
      parts.emplace_back(start, cur);
      cur.clear();
      start = i + 1;
    } else {
      cur += text[i];
    }
  }
  parts.emplace_back(start, cur);
  const std::string type_name = Trim(parts[0].second);
  DATATYPE t;
  if (!ZQDType::TypeByName(type_name.c_str(), t)) {
    *column = 1;
    *error = "expected a type name (see \"zqrec types\"), found \"" + type_name + "\"";
    return false;
  }
  for (size_t i = 1; i < parts.size(); ++i) {
    size_t rel = 0;
    if (!CheckClause(parts[i].second, &rel, error)) {
      *column = parts[i].first + rel;
      return false;
    }
  }
  ZQString def(text.c_str(), static_cast<int>(close + 1));
  *type = def;
  return true;
}

void ApplyDefaultCodePage(Layout* layout, const CodePage& cp) {
  for (Field& f : layout->fields) {
    // Text and zoned digits are characters; every other kind is binary.
    if (f.kind != Kind::kText && f.kind != Kind::kZoned) {
      f.cp = CodePage();
      continue;
    }
    if (!f.has_codepage) f.cp = cp;
    if (f.cp.ebcdic != 0 && f.kind == Kind::kText) layout->any_ebcdic = true;
  }
}

bool LoadLayout(const std::string& path, Layout* layout, std::string* error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    *error = path + ": cannot open the layout: " + std::strerror(errno);
    return false;
  }
  layout->path = path;
  std::string line;
  int lineno = 0;
  int offset = 0;
  int declared_length = 0;
  int length_line = 0;
  while (std::getline(in, line)) {
    ++lineno;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    size_t p = line.find_first_not_of(" \t");
    if (p == std::string::npos || line[p] == '#') continue;
    size_t e = line.find_first_of(" \t", p);
    const std::string name = line.substr(p, e == std::string::npos ? std::string::npos : e - p);
    size_t v = e == std::string::npos ? line.size() : line.find_first_not_of(" \t", e);
    if (v == std::string::npos) v = line.size();
    if (name == "record-length" || name == "filler-byte") {
      size_t ve = line.find_first_of(" \t#", v);
      const std::string value = line.substr(v, ve == std::string::npos ? std::string::npos : ve - v);
      char* end = nullptr;
      errno = 0;
      const long n = std::strtol(value.c_str(), &end, 0);
      const bool is_length = name == "record-length";
      if (value.empty() || *end != '\0' || errno != 0 || n < (is_length ? 1 : 0) ||
          n > (is_length ? (1L << 30) : 255)) {
        *error = Where(path, lineno, v) +
                 (is_length ? "expected a record length in bytes (a positive number)"
                            : "expected a byte value from 0 to 255, such as 0x40");
        return false;
      }
      size_t rest = ve == std::string::npos ? std::string::npos : line.find_first_not_of(" \t", ve);
      if (rest != std::string::npos && line[rest] != '#') {
        *error = Where(path, lineno, rest) + "expected the end of the line";
        return false;
      }
      if (is_length) {
        declared_length = static_cast<int>(n);
        length_line = lineno;
      } else {
        layout->filler = static_cast<unsigned char>(n);
      }
      continue;
    }
    for (const Field& other : layout->fields) {
      if (other.name == name) {
        *error = Where(path, lineno, p) + "the field name \"" + name +
                 "\" is already used on line " + std::to_string(other.line);
        return false;
      }
    }
    if (v >= line.size()) {
      *error = Where(path, lineno, line.size()) +
               "expected a property string in single quotes after the field name";
      return false;
    }
    Field f;
    f.name = name;
    f.line = lineno;
    size_t col = 0;
    std::string msg;
    const std::string rest = line.substr(v);
    if (!ParseProperties(rest, &f.type, &col, &msg)) {
      *error = Where(path, lineno, v + col) + msg;
      return false;
    }
    // Skip past the property string, then read "encoding=NAME" options.
    size_t close = 1;
    while (close < rest.size() && rest[close] != '\'') close += rest[close] == '\\' ? 2 : 1;
    size_t q = v + close + 1;
    while (q < line.size()) {
      q = line.find_first_not_of(" \t", q);
      if (q == std::string::npos || line[q] == '#') break;
      size_t qe = line.find_first_of(" \t", q);
      const std::string opt = line.substr(q, qe == std::string::npos ? std::string::npos : qe - q);
      if (opt.compare(0, 9, "encoding=") != 0 || opt.size() == 9) {
        *error = Where(path, lineno, q) + "expected encoding=NAME or the end of the line";
        return false;
      }
      if (!FindCodePage(opt.substr(9), &f.cp, &msg)) {
        *error = Where(path, lineno, q + 9) + msg;
        return false;
      }
      f.has_codepage = true;
      q = qe == std::string::npos ? line.size() : qe;
    }
    if (!KindOf(f.type.Type(), &f.kind)) {
      *error = Where(path, lineno, v + 1) + "the type \"" + f.type.TypeName() +
               "\" is not supported by zqrec (see \"zqrec types\")";
      return false;
    }
    if (f.has_codepage && f.kind != Kind::kText && f.kind != Kind::kZoned) {
      *error = Where(path, lineno, v + close + 1) +
               "encoding= applies to text and zoned decimal fields only";
      return false;
    }
    if (f.type.VariableLength()) {
      *error = Where(path, lineno, v + 1) +
               "variable-length fields are not supported; give the field a fixed length";
      return false;
    }
    f.length = static_cast<int>(f.type.Length());
    if (f.length < 1) {
      *error = Where(path, lineno, v + 1) + "expected a field length of at least 1 byte";
      return false;
    }
    f.offset = offset;
    f.scale = f.type.Scale();
    f.raw = f.type;
    f.raw.Scale(0);
    if (f.kind == Kind::kDate || f.kind == Kind::kTime) {
      // Without a picture of its own the field prints ISO dates and 24-hour
      // times rather than the locale's default mask, so output is the same
      // everywhere and four-digit years survive.
      std::string lower = rest.substr(0, close + 1);
      for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      const char* pic = f.type.Picture();
      if (lower.find("picture") != std::string::npos && pic != nullptr && *pic != '\0') {
        f.picture = pic;
      } else {
        f.picture = f.kind == Kind::kDate ? "yyyy-mm-dd" : "H24:MM:SS";
      }
    }
    offset += f.length;
    layout->fields.push_back(f);
  }
  if (layout->fields.empty()) {
    *error = path + ": expected at least one field (a name and a property string)";
    return false;
  }
  layout->fields_length = offset;
  if (declared_length != 0 && declared_length < offset) {
    *error = Where(path, length_line, 0) + "the record length " +
             std::to_string(declared_length) + " is shorter than the fields, which take " +
             std::to_string(offset) + " bytes";
    return false;
  }
  layout->record_length = declared_length != 0 ? declared_length : offset;
  return true;
}

}  // namespace zqrec
