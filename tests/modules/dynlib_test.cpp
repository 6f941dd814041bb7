// Loading shared objects: the two explained failures and symbol lookup.
#include "platform/dynlib.h"

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include <gtest/gtest.h>

namespace {

using zq::platform::LoadError;
using zq::platform::LoadFailure;

TEST(DynLib, ExplainsWhyALoadFailed) {
  std::string dir = testing::TempDir() + "zq_dynlib_" + std::to_string(getpid());
  mkdir(dir.c_str(), 0755);
  std::ofstream(dir + "/text.so") << "not a shared object\n";
  std::ofstream(dir + "/empty.so");
  mkdir((dir + "/folder.so").c_str(), 0755);

  struct {
    std::string name;
    LoadFailure want;
  } cases[] = {
      {dir + "/missing.so", LoadFailure::kNotFound},
      {"zq_no_such_module_anywhere.so", LoadFailure::kNotFound},
      {dir + "/text.so", LoadFailure::kNotValid},
      {dir + "/empty.so", LoadFailure::kNotValid},
      {dir + "/folder.so", LoadFailure::kNotValid},
      {"/bin/sh", LoadFailure::kNotValid},  // an executable, not a library
      {"", LoadFailure::kNotFound},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    LoadError error;
    void* lib = zq::platform::LoadLibrary(c.name.c_str(), &error);
    EXPECT_EQ(lib, nullptr);
    EXPECT_EQ(static_cast<int>(error.failure), static_cast<int>(c.want)) << error.text;
    EXPECT_FALSE(error.text.empty());
  }
  EXPECT_EQ(zq::platform::LoadLibrary(nullptr, nullptr), nullptr);
}

TEST(DynLib, LoadsAndResolves) {
  std::string path = std::string(ZQ_BINARY_DIR) + "/lib/zqenccp1250.so";
  LoadError error;
  void* lib = zq::platform::LoadLibrary(path.c_str(), &error);
  ASSERT_NE(lib, nullptr) << error.text;
  EXPECT_EQ(error.failure, LoadFailure::kNone);
  void* entry = zq::platform::FindSymbol(lib, "zq_mbtowc");
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(zq::platform::DirectoryOfAddress(entry), std::string(ZQ_BINARY_DIR) + "/lib");
  EXPECT_EQ(zq::platform::DirectoryOfAddress(nullptr), "");
  EXPECT_EQ(zq::platform::FindSymbol(lib, "zq_no_such_entry"), nullptr);
  EXPECT_EQ(zq::platform::FindSymbol(nullptr, "zq_mbtowc"), nullptr);
  // Loaded twice, released twice: the second load gives the same object.
  void* again = zq::platform::LoadLibrary(path.c_str(), nullptr);
  EXPECT_EQ(again, lib);
  zq::platform::FreeLibrary(again);
  zq::platform::FreeLibrary(lib);
  zq::platform::FreeLibrary(nullptr);
}

}  // namespace
