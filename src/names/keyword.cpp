// Keyword scanning of "keyword = value" texts and lookup in word lists.
#include <vector>

#include "zq/assoc.h"
#include "zq/strutil.h"
#include "zq/zqstring.h"

bool NextKeyword(char* keyword, const ZQString& text) {
  long restart = text.Tell();
  int len = 0;
  if (keyword == nullptr) return false;
  keyword[0] = '\0';
  for (;;) {
    int c = text();
    if (c < 0) {
      text.Seek(restart);
      keyword[0] = '\0';
      return false;
    }
    if (c == '\n') {
      int next = text.Peek();
      if (next == '.') {
        // A line beginning with a point ends the keyword section.
        keyword[0] = '\0';
        text.Seek(restart);
        return false;
      }
      if (next == '#') {
        // Skip the comment line, stopping at its newline so that the next
        // line is examined in turn.
        while ((c = text()) >= 0 && c != '\n') {
        }
        if (c == '\n') text.Previous();
        restart = text.Tell();
      }
      len = 0;
      continue;
    }
    if (c == ';' || c == '\r' || c == '\t') {
      len = 0;
      continue;
    }
    if (c == '=' && len > 0) {
      while ((c = text.Peek()) == ' ' || c == '\t') text();
      while (len > 0 && (keyword[len - 1] == ' ' || keyword[len - 1] == '\t')) --len;
      if (len == 0) continue;
      keyword[len] = '\0';
      return true;
    }
    // Blanks before the keyword are not part of it.
    if (c == ' ' && len == 0) continue;
    keyword[len++] = static_cast<char>(c);
  }
}

bool NextKeyword(std::string& keyword, const ZQString& text) {
  std::vector<char> buf(static_cast<std::size_t>(text.length()) + 1);
  bool found = NextKeyword(buf.data(), text);
  keyword = buf.data();
  return found;
}

int FindKeyword(const char* const* list, const char* word) {
  if (list == nullptr || word == nullptr) return -1;
  for (int i = 0; list[i] != nullptr; ++i) {
    if (strcmpi(list[i], word) == 0) return i;
  }
  return -1;
}
