// Reading INI (profile) files: "[section]" headers and "key=value" lines.
//
// Section and key names compare without regard to case; the first matching
// key wins (sections of the same name are searched in file order); blanks
// around names and values are trimmed and one pair of matching surrounding
// quotes is removed from a value; lines whose first non-blank character is
// ";" are comments; CR LF line ends are accepted; lines have no length limit.
#ifndef ZQ_PLATFORM_PROFILE_H
#define ZQ_PLATFORM_PROFILE_H

#include <string>
#include <vector>

namespace zq {
namespace platform {

// The parsed form of one profile file.
class ProfileFile {
 public:
  // Parses `text`; always succeeds (malformed lines are skipped).
  void Parse(const std::string& text);
  // Reads and parses `path`; false when the file cannot be read.
  bool Load(const char* path);

  // The value of `key` in `section`; false when either is missing.
  bool Get(const char* section, const char* key, std::string& value) const;
  // Section names in file order, each once.
  std::vector<std::string> Sections() const;
  // Key names of `section` in file order, each once; false when missing.
  bool Keys(const char* section, std::vector<std::string>& keys) const;

 private:
  struct Entry {
    std::string key;
    std::string value;
  };
  struct Section {
    std::string name;
    std::vector<Entry> entries;
  };
  std::vector<Section> sections_;
};

}  // namespace platform
}  // namespace zq

#endif  // ZQ_PLATFORM_PROFILE_H
