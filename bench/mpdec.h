// libmpdec, the arbitrary-precision decimal engine of Python's `decimal`, as
// a benchmark peer. Debian 12 ships it only inside the interpreter's
// `_decimal` extension, with the library's functions kept local to it; when
// that extension still carries its full symbol table (a Python built from
// source, as pyenv builds it), the functions are found there by name and
// called directly, the way the interpreter calls them.
#ifndef ZQ_BENCH_MPDEC_H
#define ZQ_BENCH_MPDEC_H

#include <dlfcn.h>
#include <elf.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

namespace mpdec {

// The library's value and context records (64-bit configuration).
struct Value {
  uint8_t flags;
  int64_t exp;
  int64_t digits;
  int64_t len;
  int64_t alloc;
  uint64_t* data;
};

struct Context {
  int64_t prec;
  int64_t emax;
  int64_t emin;
  uint32_t traps;
  uint32_t status;
  uint32_t newtrap;
  int round;
  int clamp;
  int allcr;
};

struct Api {
  Value* (*qnew)();
  void (*del)(Value*);
  void (*defaultcontext)(Context*);
  void (*qset_string)(Value*, const char*, const Context*, uint32_t*);
  int64_t (*to_sci_size)(char**, const Value*, int);
  void (*qadd)(Value*, const Value*, const Value*, const Context*, uint32_t*);
  int (*qcmp)(const Value*, const Value*, uint32_t*);
  std::string version;
};

// Name -> value of every symbol in the ELF64 file's full symbol table.
inline std::map<std::string, uint64_t> ReadSymbols(const char* path) {
  std::map<std::string, uint64_t> out;
  FILE* f = std::fopen(path, "rb");
  if (f == nullptr) return out;
  std::vector<char> b;
  char chunk[1 << 16];
  size_t n;
  while ((n = std::fread(chunk, 1, sizeof chunk, f)) > 0) b.insert(b.end(), chunk, chunk + n);
  std::fclose(f);
  if (b.size() < sizeof(Elf64_Ehdr)) return out;
  Elf64_Ehdr eh;
  std::memcpy(&eh, b.data(), sizeof eh);
  if (std::memcmp(eh.e_ident, ELFMAG, SELFMAG) != 0 || eh.e_ident[EI_CLASS] != ELFCLASS64 ||
      eh.e_shoff + uint64_t{eh.e_shnum} * sizeof(Elf64_Shdr) > b.size()) {
    return out;
  }
  std::vector<Elf64_Shdr> sh(eh.e_shnum);
  std::memcpy(sh.data(), b.data() + eh.e_shoff, sh.size() * sizeof(Elf64_Shdr));
  for (const Elf64_Shdr& s : sh) {
    if (s.sh_type != SHT_SYMTAB || s.sh_link >= sh.size()) continue;
    const Elf64_Shdr& names = sh[s.sh_link];
    if (s.sh_offset + s.sh_size > b.size() || names.sh_offset + names.sh_size > b.size()) continue;
    for (uint64_t k = 0; k + sizeof(Elf64_Sym) <= s.sh_size; k += sizeof(Elf64_Sym)) {
      Elf64_Sym sym;
      std::memcpy(&sym, b.data() + s.sh_offset + k, sizeof sym);
      if (sym.st_name >= names.sh_size) continue;
      const char* name = b.data() + names.sh_offset + sym.st_name;
      out[std::string(name, strnlen(name, names.sh_size - sym.st_name))] = sym.st_value;
    }
  }
  return out;
}

// Loads the peer from the interpreter library `python` and the extension
// `module`; false with the reason in `why` when either is missing or the
// extension has no symbol table.
inline bool Load(const char* python, const char* module, Api* api, std::string* why) {
  // The extension refers to the interpreter's objects, which must be loaded
  // first; the interpreter itself is never started.
  if (dlopen(python, RTLD_NOW | RTLD_GLOBAL) == nullptr) {
    *why = dlerror();
    return false;
  }
  void* h = dlopen(module, RTLD_NOW | RTLD_LOCAL);
  if (h == nullptr) {
    *why = dlerror();
    return false;
  }
  const std::map<std::string, uint64_t> syms = ReadSymbols(module);
  void* init = dlsym(h, "PyInit__decimal");
  auto anchor = syms.find("PyInit__decimal");
  if (init == nullptr || anchor == syms.end()) {
    *why = std::string(module) + " has no symbol table";
    return false;
  }
  char* base = static_cast<char*>(init) - anchor->second;
  bool ok = true;
  auto find = [&](const char* name, auto* fn) {
    auto it = syms.find(name);
    if (it == syms.end() || it->second == 0) {
      *why = std::string("no ") + name + " in " + module;
      ok = false;
      return;
    }
    *fn = reinterpret_cast<std::remove_pointer_t<decltype(fn)>>(base + it->second);
  };
  find("mpd_qnew", &api->qnew);
  find("mpd_del", &api->del);
  find("mpd_defaultcontext", &api->defaultcontext);
  find("mpd_qset_string", &api->qset_string);
  find("mpd_to_sci_size", &api->to_sci_size);
  find("mpd_qadd", &api->qadd);
  find("mpd_qcmp", &api->qcmp);
  const char* (*version)() = nullptr;
  find("mpd_version", &version);
  if (ok) api->version = version();
  return ok;
}

}  // namespace mpdec

#endif  // ZQ_BENCH_MPDEC_H
