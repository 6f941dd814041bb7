// Message catalogues: translation of user-visible messages through compiled
// catalogue files ("messages.mo"), and message source (".po") files.
//
// The process catalogue is looked up once, on the first translation, in the
// option block's library directory for the language of the environment's
// locale (LC_ALL, else LC_MESSAGES, else LANG; e.g. "de_DE.UTF-8" gives
// ll_CC "de_DE" and ll "de"), trying in order:
//   <libdir>/locale/<ll_CC>/LC_MESSAGES/messages.mo
//   <libdir>/locale/<ll>/LC_MESSAGES/messages.mo
//   <libdir>/<ll_CC>/messages.mo
//   <libdir>/<ll>/messages.mo
//   <libdir>/messages.mo
// The first file that loads is used. Without one every message is its own
// translation.
#ifndef ZQ_CATALOG_H
#define ZQ_CATALOG_H

#include <string>
#include <unordered_map>
#include <vector>

#include "zq/export.h"

// The translation of `msgid` from the process catalogue, or `msgid` itself.
// The text returned stays valid for the life of the process. Narrow texts
// are UTF-8 both ways.
ZQ_EXPORT const unsigned short* lgettext(const unsigned short* msgid);
ZQ_EXPORT const char* lgettext(const char* msgid);

// Replaces the process catalogue by the catalogue file `path`; false (and
// no catalogue: identity) when it cannot be read. A null path forgets the
// catalogue and searches again on the next translation.
ZQ_EXPORT bool LoadMessageCatalog(const char* path);

// One compiled catalogue: the GNU ".mo" format of either byte order.
class ZQ_EXPORT ZQMessageCatalog {
 public:
  // Reads `path`; false (catalogue empty) for a missing, truncated or
  // malformed file.
  bool Load(const char* path);
  // Reads a catalogue held in memory.
  bool LoadFromMemory(const void* data, size_t size);
  // The translation of `msgid` (UTF-8), or null when there is none. For a
  // plural entry this is the singular translation.
  const char* Find(const char* msgid) const;
  size_t size() const { return map_.size(); }
  // The charset named by the catalogue header ("UTF-8" when not named).
  const std::string& Charset() const { return charset_; }

 private:
  std::unordered_map<std::string, std::string> map_;
  std::string charset_ = "UTF-8";
};

// One entry of a message source file.
struct ZQ_EXPORT ZQPoEntry {
  std::vector<std::string> comments;  // comment lines as written, with "#",
                                      // except the flag lines ("#,")
  std::vector<std::string> flags;     // flags of "#," lines, e.g. "c-format"
  std::string msgctxt;                // context; empty when none
  bool has_msgctxt = false;
  std::string msgid;
  std::string msgid_plural;           // empty when not a plural entry
  std::vector<std::string> msgstr;    // one text, or one per plural form
  bool fuzzy = false;                 // the flag "fuzzy", kept apart
};

// A message source file: entries in file order, texts unescaped (UTF-8).
class ZQ_EXPORT ZQPoFile {
 public:
  // Reads `path`; false with a reason ("<file>:<line>: <problem>") in
  // Error() on a syntax error.
  bool Read(const char* path);
  bool Parse(const std::string& text);
  // Writes the entries in source form; false when the file cannot be written.
  bool Write(const char* path) const;
  std::string Format() const;
  // Compiled catalogue bytes (".mo", little-endian, sorted, without hash
  // table) of the translated, non-fuzzy entries and the header.
  std::string Compile() const;

  std::vector<ZQPoEntry>& entries() { return entries_; }
  const std::vector<ZQPoEntry>& entries() const { return entries_; }
  const std::string& Error() const { return error_; }

 private:
  std::vector<ZQPoEntry> entries_;
  std::string error_;
};

#endif  // ZQ_CATALOG_H
