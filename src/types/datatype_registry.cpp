// Process-wide registries of ZQDType: the list of type display names, the
// aliases and the pictures. Descriptors hold 16-bit indices into the alias
// and picture registries, so equal texts are stored once. Each registry has
// its own mutex; entries are never removed, so a returned text stays valid
// for the life of the process.
#include <ace/Guard_T.h>
#include <ace/Thread_Mutex.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "types/datatype_table.h"
#include "zq/dtype.h"

namespace zq {
namespace types {
namespace {

// Indices are signed 16-bit, so a registry holds at most 32768 texts.
constexpr size_t kMaxEntries = 32768;

class TextRegistry {
 public:
  int16_t Find(const char* text) {
    ACE_Guard<ACE_Thread_Mutex> guard(lock_);
    auto it = index_.find(text);
    if (it != index_.end()) return it->second;
    if (texts_.size() >= kMaxEntries) return -1;
    int16_t index = static_cast<int16_t>(texts_.size());
    texts_.push_back(std::make_unique<std::string>(text));
    index_.emplace(*texts_.back(), index);
    return index;
  }

  const char* Text(int16_t index) {
    if (index < 0) return nullptr;
    ACE_Guard<ACE_Thread_Mutex> guard(lock_);
    if (static_cast<size_t>(index) >= texts_.size()) return nullptr;
    return texts_[index]->c_str();
  }

 private:
  ACE_Thread_Mutex lock_;
  std::vector<std::unique_ptr<std::string>> texts_;
  std::unordered_map<std::string, int16_t> index_;
};

TextRegistry& Pictures() {
  static TextRegistry registry;
  return registry;
}

TextRegistry& Aliases() {
  static TextRegistry registry;
  return registry;
}

}  // namespace

int16_t PictureIndex(const char* text) { return Pictures().Find(text); }
const char* PictureText(int16_t index) { return Pictures().Text(index); }
int16_t AliasIndex(const char* name) { return Aliases().Find(name); }
const char* AliasName(int16_t index) { return Aliases().Text(index); }

}  // namespace types
}  // namespace zq

const char* const* ZQDType::GetAllTypedefs() {
  static ACE_Thread_Mutex lock;
  static const char* names[zq::types::kCatalogueSize + 1];
  static bool built = false;
  ACE_Guard<ACE_Thread_Mutex> guard(lock);
  if (!built) {
    for (int i = 0; i < zq::types::kCatalogueSize; ++i) names[i] = zq::types::kCatalogue[i].name;
    names[zq::types::kCatalogueSize] = nullptr;
    built = true;
  }
  return names;
}
