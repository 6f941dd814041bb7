// ZQDType property strings: Print writes the type name and every property
// that differs from the type's catalogue defaults; the reader applies such a
// string clause by clause to the catalogue row of its type.
//
// A property string is one quoted token: "'" name {";" clause} "'", in which
// quotes and backslashes are escaped with a backslash. Values that are texts
// (names, pictures, characters) are quoted and escaped a second time inside,
// and ";" inside them is written "\x3b", so that any text survives the
// round trip.
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <strings.h>

#include "types/datatype_table.h"
#include "zq/assoc.h"
#include "zq/dtype.h"
#include "zq/zqglob.h"
#include "zq/zqstring.h"

namespace {

const char kBoolWords[] = "True.False.true.false";

// One named property of the string, with the clause forms it accepts.
struct PropertyName {
  const char* key;
  uint32_t bit;
  bool has_invalid;  // "<key>_invalid" clears the meaningful bit
  bool has_valid;    // "<key>_valid" sets it
};

const PropertyName kProperties[] = {
    {"order", ZQP_MSBFIRST, true, false},     {"signed", ZQP_SIGNED, true, false},
    {"nulls", ZQP_NULLS, true, true},         {"length", ZQP_LENGTH, true, false},
    {"precision", ZQP_PRECISION, true, false}, {"scale", ZQP_SCALE, true, true},
    {"picture", ZQP_PICTURE, true, false},    {"signstyle", ZQP_SIGNSTYLE, true, true},
    {"signpos", ZQP_SIGNPOS, true, true},     {"decimal", ZQP_DECIMAL, true, true},
    {"padchar", ZQP_PADCHAR, true, false},    {"varlen", ZQP_VARLEN, true, false},
    {"decsep", ZQP_DECSEP, true, false},      {"thsndsep", ZQP_THSNDSEP, true, true},
    {"negtype", ZQP_NEGTYPE, true, false},    {"identity", ZQP_IDENTITY, false, true},
    {"align", ZQP_ALIGN, false, false},
};

// Appends `text` escaped for the enclosing quoted property string.
void AppendOuter(ZQString& out, const ZQString& text) {
  for (long i = 0; i < text.length(); ++i) {
    char c = text[i];
    if (c == '\'' || c == '\\') out += '\\';
    out += c;
  }
}

// Appends `n` bytes of `text` as a value token: escaped (and quoted when
// `quote`), with ";" hidden from the clause splitter, then escaped again for
// the enclosing string.
void AppendValue(ZQString& out, const char* text, long n, bool quote) {
  ZQString raw(text, static_cast<int>(n));
  ZQString printed;
  raw.Print(printed, quote);
  ZQString inner;
  for (long i = 0; i < printed.length(); ++i) {
    if (printed[i] == ';') {
      inner += "\\x3b";
    } else {
      inner += printed[i];
    }
  }
  AppendOuter(out, inner);
}

// Appends a quoted name value: "\'" name "\'".
void AppendName(ZQString& out, const char* text) {
  out += "\\'";
  AppendValue(out, text, text == nullptr ? 0 : static_cast<long>(std::strlen(text)), false);
  out += "\\'";
}

void AppendFormat(ZQString& out, const char* format, long v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, format, v);
  out += buf;
}

// strtol in base 0, with the range of a 32-bit long.
int32_t ToLong(const ZQString& value) {
  long v = std::strtol(value.c_str(), nullptr, 0);
  if (v > INT32_MAX) return INT32_MAX;
  if (v < INT32_MIN) return INT32_MIN;
  return static_cast<int32_t>(v);
}

bool ToBool(const ZQString& value) { return ZQGlob::StrToBool(value.c_str(), kBoolWords); }

bool EndsWith(const std::string& s, const char* suffix, std::string& stem) {
  size_t n = std::strlen(suffix);
  if (s.size() < n || strcasecmp(s.c_str() + s.size() - n, suffix) != 0) return false;
  stem = s.substr(0, s.size() - n);
  return true;
}

const PropertyName* FindProperty(const std::string& key) {
  for (const PropertyName& p : kProperties) {
    if (strcasecmp(p.key, key.c_str()) == 0) return &p;
  }
  return nullptr;
}

bool Is(const std::string& key, const char* word) { return strcasecmp(key.c_str(), word) == 0; }

// The text between blanks and tabs at both ends of bytes [from, to) of `s`.
std::string Trimmed(const ZQString& s, long from, long to) {
  while (from < to && (s[from] == ' ' || s[from] == '\t')) ++from;
  while (to > from && (s[to - 1] == ' ' || s[to - 1] == '\t')) --to;
  return std::string(s.c_str() + from, static_cast<size_t>(to - from));
}

}  // namespace

// ---- writing ---------------------------------------------------------------------

void ZQDType::Print(ZQString& out) const {
  const ZQDType ref(type_);
  const char* name = TypeName();
  // "_invalid" when the type has the property and this descriptor not;
  // "_settable=" whenever the settable bits differ.
  auto invalid = [&](const char* key, uint32_t bit) {
    if ((ref.meaningful_ & bit) != 0 && (meaningful_ & bit) == 0) {
      out += ";";
      out += key;
      out += "_invalid";
    }
  };
  auto settable = [&](const char* key, uint32_t bit) {
    if ((ref.settable_ & bit) != (settable_ & bit)) {
      out += ";";
      out += key;
      out += "_settable=";
      out += ZQGlob::BoolToStr((settable_ & bit) != 0);
    }
  };
  auto boolean = [&](const char* clause, bool mine, bool theirs) {
    if (mine != theirs) {
      out += clause;
      out += ZQGlob::BoolToStr(mine);
    }
  };
  auto number = [&](const char* format, long mine, long theirs) {
    if (mine != theirs) AppendFormat(out, format, mine);
  };
  auto character = [&](const char* clause, unsigned short mine, unsigned short theirs) {
    if (mine != theirs) {
      char c = static_cast<char>(mine & 0xFF);
      out += clause;
      AppendValue(out, &c, 1, true);
    }
  };
  auto code = [&](const char* clause, long mine, long theirs, const char* word) {
    if (mine != theirs) {
      out += clause;
      // A value without a word (0, or several bits) is written empty and
      // reads back as 0.
      if (word != nullptr) out += word;
    }
  };

  out += "'";
  out += name;
  if (generic_ != ref.generic_) {
    out += ";gentype=";
    const char* generic = TypeNameOf(generic_);
    AppendName(out, generic == nullptr ? zq::types::kCatalogue[0].name : generic);
  }
  if (alias_ != -1 && std::strcmp(Alias(), name) != 0) {
    out += ";alias= ";
    AppendName(out, Alias());
  }

  invalid("order", ZQP_MSBFIRST);
  settable("order", ZQP_MSBFIRST);
  out += MSBFirst() ? ";order= MSB" : ";order= LSB";

  invalid("signed", ZQP_SIGNED);
  settable("signed", ZQP_SIGNED);
  boolean(";signed= ", Signed(), ref.Signed());

  if ((ref.meaningful_ & ZQP_NULLS) != (meaningful_ & ZQP_NULLS))
    out += (meaningful_ & ZQP_NULLS) != 0 ? ";nulls_valid" : ";nulls_invalid";
  settable("nulls", ZQP_NULLS);
  boolean(";nulls= ", Nulls(), ref.Nulls());

  invalid("scale", ZQP_SCALE);
  settable("scale", ZQP_SCALE);
  number(";scale= %ld", scale_, ref.scale_);
  number(";maxscale=%ld", max_scale_, ref.max_scale_);
  number(";minscale=%ld", min_scale_, ref.min_scale_);

  invalid("padchar", ZQP_PADCHAR);
  settable("padchar", ZQP_PADCHAR);
  if (pad_char_ != ref.pad_char_) {
    char rendered[8];
    GetPadChar(rendered);
    out += ";padchar= ";
    // The value is unquoted once by the clause reader and once more by
    // SetPadChar; a quote, a backslash or white space needs both layers.
    char c = static_cast<char>(pad_char_ & 0xFF);
    bool twice = c == '\'' || c == '\\' || (c != ' ' && c != 0 && std::isspace(static_cast<unsigned char>(c)));
    if (twice) {
      AppendValue(out, rendered, static_cast<long>(std::strlen(rendered)), true);
    } else {
      AppendValue(out, &c, 1, true);
    }
  }

  invalid("thsndsep", ZQP_THSNDSEP);
  settable("thsndsep", ZQP_THSNDSEP);
  character(";thsndsep= ", thsnd_sep_, ref.thsnd_sep_);

  invalid("decsep", ZQP_DECSEP);
  settable("decsep", ZQP_DECSEP);
  character(";decsep= ", dec_sep_, ref.dec_sep_);

  invalid("varlen", ZQP_VARLEN);
  settable("varlen", ZQP_VARLEN);
  boolean(";varlen= ", VariableLength(), ref.VariableLength());

  if ((ref.meaningful_ & ZQP_IDENTITY) == 0 && (meaningful_ & ZQP_IDENTITY) != 0)
    out += ";identity_valid";
  settable("identity", ZQP_IDENTITY);
  boolean(";identity= ", Identity(), ref.Identity());

  invalid("decimal", ZQP_DECIMAL);
  settable("decimal", ZQP_DECIMAL);
  number(";decimal=%ld", dec_places_, ref.dec_places_);
  number(";maxdec=%ld", max_dec_, ref.max_dec_);
  number(";mindec=%ld", min_dec_, ref.min_dec_);

  number(";signstylemask=%ld", sign_style_mask_, ref.sign_style_mask_);
  invalid("signstyle", ZQP_SIGNSTYLE);
  settable("signstyle", ZQP_SIGNSTYLE);
  code(";signstyle=", sign_style_, ref.sign_style_, NegstyleToChar(sign_style_, false));

  // Alignment alone is written by its display text; the reader takes either.
  number(";alignmask=%ld", align_mask_, ref.align_mask_);
  if ((ref.meaningful_ & ZQP_ALIGN) != (meaningful_ & ZQP_ALIGN)) {
    out += ";align_valid=";
    out += ZQGlob::BoolToStr((meaningful_ & ZQP_ALIGN) != 0);
  }
  settable("align", ZQP_ALIGN);
  code(";align=", align_, ref.align_, AlignToChar(align_, true));

  number(";signposmask=%ld", sign_pos_mask_, ref.sign_pos_mask_);
  invalid("signpos", ZQP_SIGNPOS);
  settable("signpos", ZQP_SIGNPOS);
  code(";signpos=", sign_pos_, ref.sign_pos_, NegposToChar(sign_pos_, false));

  // The negative type is written with the sign-position words; kept so for
  // compatibility with stored strings.
  number(";negtypemask=%ld", neg_type_mask_, ref.neg_type_mask_);
  invalid("negtype", ZQP_NEGTYPE);
  settable("negtype", ZQP_NEGTYPE);
  code(";negtype=", neg_type_, ref.neg_type_, NegposToChar(neg_type_, false));

  if (AutoInc()) out += ";autoinc";
  if (Currency()) out += ";currency";
  if (RowVersion()) out += ";rowversion";
  if (Display()) out += ";display";

  invalid("picture", ZQP_PICTURE);
  settable("picture", ZQP_PICTURE);
  if (picture_ != ref.picture_) {
    out += ";picture=";
    const char* picture = Picture();
    AppendName(out, picture == nullptr ? "" : picture);
  }

  invalid("length", ZQP_LENGTH);
  settable("length", ZQP_LENGTH);
  AppendFormat(out, ";length=%ld", length_);
  number(";maxlength=%ld", max_length_, ref.max_length_);
  number(";minlength=%ld", min_length_, ref.min_length_);

  invalid("precision", ZQP_PRECISION);
  settable("precision", ZQP_PRECISION);
  number(";precision=%ld", precision_, ref.precision_);
  number(";maxprecision=%ld", max_precision_, ref.max_precision_);
  number(";minprecision=%ld", min_precision_, ref.min_precision_);
  out += "'";
}

// ---- reading ---------------------------------------------------------------------

void ZQDType::Read(ZQString& src) {
  alias_ = -1;
  picture_ = -1;
  ZQString def;
  if (src.Tell() == 0 && src[0L] != '\'') {
    def = src;
  } else {
    def.Extract(src);
  }

  long n = def.length();
  long end = 0;
  while (end < n && def[end] != ';' && def[end] != '\n') ++end;
  std::string name = Trimmed(def, 0, end);
  const zq::types::CatalogueRow* row =
      zq::types::FindRowByName(name.c_str(), static_cast<long>(name.size()));
  *this = row == nullptr ? ZQDT_TEXT : row->type;

  while (end < n && def[end] == ';') {
    long start = end + 1;
    end = start;
    while (end < n && def[end] != ';') ++end;
    ZQString clause(def.c_str() + start, static_cast<int>(end - start));
    ApplyClause(clause);
  }
}

void ZQDType::ApplyClause(const ZQString& clause) {
  std::string key;
  if (!NextKeyword(key, clause)) {
    std::string word = Trimmed(clause, 0, clause.length());
    if (Is(word, "autoinc")) {
      AutoInc(true);
    } else if (Is(word, "currency")) {
      Currency(true);
    } else if (Is(word, "rowversion")) {
      RowVersion(true);
    } else if (Is(word, "display")) {
      Display(true);
    } else {
      std::string stem;
      const PropertyName* p = nullptr;
      if (EndsWith(word, "_invalid", stem) && (p = FindProperty(stem)) != nullptr &&
          p->has_invalid) {
        meaningful_ &= ~p->bit;
      } else if (EndsWith(word, "_valid", stem) && (p = FindProperty(stem)) != nullptr &&
                 p->has_valid) {
        meaningful_ |= p->bit;
      }
    }
    return;
  }

  // Blanks around the keyword do not count.
  size_t first = key.find_first_not_of(" \t");
  key.erase(0, first == std::string::npos ? key.size() : first);
  ZQString value;
  value.Extract(clause);
  std::string stem;
  if (EndsWith(key, "_settable", stem)) {
    if (const PropertyName* p = FindProperty(stem)) SetBit(settable_, p->bit, ToBool(value));
  } else if (Is(key, "varlen")) {
    VariableLength(ToBool(value));
  } else if (Is(key, "identity")) {
    Identity(ToBool(value));
  } else if (Is(key, "padchar")) {
    SetPadChar(value.c_str());
  } else if (Is(key, "decsep")) {
    DecimalSeparator(static_cast<unsigned char>(value[0L]));
  } else if (Is(key, "thsndsep")) {
    ThousandSeparator(static_cast<unsigned char>(value[0L]));
  } else if (Is(key, "length")) {
    // Always through the coupling setter, even when the value restates the
    // length: "BCD", "Magic PC Number" and "Display sign trailing separate"
    // have catalogue pairs that their own coupling does not keep, so a fresh
    // one of those reads back with the precision its length implies.
    Length(ToLong(value));
  } else if (Is(key, "minlength")) {
    min_length_ = ToLong(value);
  } else if (Is(key, "maxlength")) {
    max_length_ = ToLong(value);
  } else if (Is(key, "precision")) {
    precision_ = ToLong(value);
  } else if (Is(key, "minprecision")) {
    min_precision_ = ToLong(value);
  } else if (Is(key, "maxprecision")) {
    max_precision_ = ToLong(value);
  } else if (Is(key, "scale")) {
    scale_ = static_cast<int16_t>(ToLong(value));
  } else if (Is(key, "minscale")) {
    min_scale_ = static_cast<int16_t>(ToLong(value));
  } else if (Is(key, "maxscale")) {
    max_scale_ = static_cast<int16_t>(ToLong(value));
  } else if (Is(key, "decimal")) {
    DecimalPlaces(static_cast<short>(ToLong(value)));
  } else if (Is(key, "mindec")) {
    min_dec_ = static_cast<int16_t>(ToLong(value));
  } else if (Is(key, "maxdec")) {
    max_dec_ = static_cast<int16_t>(ToLong(value));
  } else if (Is(key, "signstylemask")) {
    sign_style_mask_ = ToLong(value);
  } else if (Is(key, "signposmask")) {
    sign_pos_mask_ = ToLong(value);
  } else if (Is(key, "negtypemask")) {
    neg_type_mask_ = ToLong(value);
  } else if (Is(key, "alignmask")) {
    align_mask_ = ToLong(value);
  } else if (Is(key, "signstyle")) {
    sign_style_ = CharToNegstyle(value.c_str());
  } else if (Is(key, "signpos")) {
    sign_pos_ = CharToNegpos(value.c_str());
  } else if (Is(key, "negtype")) {
    neg_type_ = CharToNegtype(value.c_str());
  } else if (Is(key, "align")) {
    align_ = CharToAlign(value.c_str());
  } else if (Is(key, "align_valid")) {
    SetBit(meaningful_, ZQP_ALIGN, ToBool(value));
  } else if (Is(key, "usage")) {
    usage_ = static_cast<int16_t>(ToLong(value));
  } else if (Is(key, "signed")) {
    Signed(ToBool(value));
  } else if (Is(key, "nulls")) {
    Nulls(ToBool(value));
  } else if (Is(key, "picture")) {
    Picture(value.c_str());
  } else if (Is(key, "alias")) {
    Alias(value.c_str());
  } else if (Is(key, "order")) {
    // Case-sensitive, on the first three characters only.
    const char* v = value.c_str();
    while (*v == ' ' || *v == '\t') ++v;
    if (std::strncmp(v, "MSB", 3) == 0) {
      MSBFirst(true);
    } else if (std::strncmp(v, "LSB", 3) == 0) {
      MSBFirst(false);
    }
  } else if (Is(key, "gentype")) {
    DATATYPE t;
    if (TypeByName(value.c_str(), t)) generic_ = t;
  }
}

void ZQDType::Define(const char* text) {
  ZQString def;
  if (text == nullptr) text = "";
  if (*text == '\'') {
    def = text;
  } else {
    // Enclose in quotes; inner quotes gain a backslash, escape pairs stay.
    long n = static_cast<long>(std::strlen(text));
    def += '\'';
    for (long i = 0; i < n; ++i) {
      if (text[i] == '\\' && i + 1 < n) {
        def += text[i];
        def += text[++i];
      } else if (text[i] == '\'' && i != 0 && i != n - 1) {
        def += '\\';
        def += '\'';
      } else {
        def += text[i];
      }
    }
    def += '\'';
  }
  Read(def);
}
