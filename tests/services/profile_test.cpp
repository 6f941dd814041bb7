// INI files through ZQGlob::ReadProfileString/ReadProfileInt, and the option
// block that is built from them.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "services/test_util.h"
#include "zq/options.h"
#include "zq/zqglob.h"

namespace {

std::string Read(const char* section, const char* key, const char* def, const std::string& file,
                 int size = 256) {
  std::vector<char> out(static_cast<size_t>(size) + 1, '#');
  int n = ZQGlob::ReadProfileString(section, key, def, out.data(), size, file.c_str());
  EXPECT_EQ(static_cast<size_t>(n), std::strlen(out.data()));
  EXPECT_EQ(out[static_cast<size_t>(size)], '#') << "wrote past the caller's size";
  return out.data();
}

TEST(Profile, ReadsValuesTheWindowsWay) {
  zqtest::TempDir dir;
  std::string ini = dir.File("test.ini");
  std::string long_value(100000, 'v');
  zqtest::WriteFile(ini,
                    "top=outside any section\r\n[Main]\r\n  Name  =  Value with blanks  \r\n"
                    "; name=commented\r\ndup=first\r\ndup=second\r\nquoted=\"  inside  \"\r\n"
                    "single='x'\r\nhalf=\"open\r\nempty=\r\nnum=  -42xyz\r\nbig=99999999999\r\n"
                    "long=" + long_value + "\r\nnovalue\r\n"
                    "[ other ]\nk=1\n[MAIN]\nlate=yes\ndup=third\n");
  EXPECT_EQ(Read("main", "name", "d", ini), "Value with blanks");
  EXPECT_EQ(Read("MAIN", "NAME", "d", ini), "Value with blanks");
  EXPECT_EQ(Read("Main", "dup", "d", ini), "first");
  EXPECT_EQ(Read("Main", "late", "d", ini), "yes");
  EXPECT_EQ(Read("Main", "quoted", "d", ini), "  inside  ");
  EXPECT_EQ(Read("Main", "single", "d", ini), "x");
  EXPECT_EQ(Read("Main", "half", "d", ini), "\"open");
  EXPECT_EQ(Read("Main", "empty", "d", ini), "");
  EXPECT_EQ(Read("Main", "; name", "d", ini), "d");
  EXPECT_EQ(Read("Main", "top", "d", ini), "d");
  EXPECT_EQ(Read("Main", "novalue", "d", ini), "d");
  EXPECT_EQ(Read("other", "k", "d", ini), "1");
  EXPECT_EQ(Read("Main", "long", "d", ini, 200000), long_value);
  EXPECT_EQ(Read("Main", "long", "d", ini, 10), std::string(9, 'v'));
  EXPECT_EQ(Read("Main", "name", "d", ini, 1), "");
  EXPECT_EQ(Read("Missing", "name", "default  ", ini), "default");
  EXPECT_EQ(Read("Main", "missing", nullptr, ini), "");
  EXPECT_EQ(Read("Main", "name", "dflt", dir.File("absent.ini")), "dflt");
  char list[64];
  std::memset(list, '#', sizeof list);
  int n = ZQGlob::ReadProfileString(nullptr, nullptr, "", list, sizeof list, ini.c_str());
  EXPECT_EQ(std::string(list, static_cast<size_t>(n) + 1), std::string("Main\0other\0\0", 12));
  n = ZQGlob::ReadProfileString("other", nullptr, "", list, sizeof list, ini.c_str());
  EXPECT_EQ(std::string(list, static_cast<size_t>(n) + 1), std::string("k\0\0", 3));
  EXPECT_EQ(ZQGlob::ReadProfileString("Main", "name", "d", nullptr, 10, ini.c_str()), 0);

  EXPECT_EQ(ZQGlob::ReadProfileInt("Main", "num", 7, ini.c_str()), -42);
  EXPECT_EQ(ZQGlob::ReadProfileInt("Main", "name", 7, ini.c_str()), 0);
  EXPECT_EQ(ZQGlob::ReadProfileInt("Main", "missing", 7, ini.c_str()), 7);
  EXPECT_EQ(ZQGlob::ReadProfileInt("other", "k", 7, ini.c_str()), 1);
  EXPECT_EQ(ZQGlob::ReadProfileInt("Main", "num", 7, nullptr), 7);
}

TEST(OptionBlock, SettingsComeFromZQLIBAndTheInitFile) {
  {
    zqtest::EnvVar zqlib("ZQLIB", nullptr);
    ZQOptionBlock opt;
    EXPECT_STREQ(opt.LibDir(), "");
    EXPECT_STREQ(opt.InitFile(), "");
    EXPECT_STREQ(opt.ProductName(), "");
    EXPECT_STREQ(opt.UserName(), "");
    EXPECT_EQ(opt.DecSep(), '.');
    EXPECT_EQ(opt.ThsndSep(), '\0');
    EXPECT_EQ(opt.Special(), 3);
  }
  zqtest::TempDir dir;
  zqtest::EnvVar zqlib("ZQLIB", dir.path().c_str());
  {
    ZQOptionBlock opt;  // a directory without "initfile.nam"
    EXPECT_STREQ(opt.LibDir(), dir.path().c_str());
    EXPECT_STREQ(opt.InitFile(), "");
    EXPECT_STREQ(opt.ProductName(), "");
  }
  std::string ini = dir.File("zq.ini");
  zqtest::WriteFile(dir.File("initfile.nam"), ini + "  \r\nsecond line ignored\n");
  zqtest::WriteFile(ini,
                    "[UserInfo]\n"
                    "owner=" + std::string(100, 'o') + "\n"
                    "organization=Acme\n"
                    "optimizationlevel=5\n"
                    "[Internal]\n"
                    "special=2\n");
  {
    ZQOptionBlock opt;
    EXPECT_STREQ(opt.InitFile(), ini.c_str());
    EXPECT_EQ(std::string(opt.UserName()), std::string(64, 'o'));
    EXPECT_STREQ(opt.Organization(), "Acme");
    EXPECT_STREQ(opt.ProductName(), "Third party conversion product");
    EXPECT_STREQ(opt.LibDir(), dir.path().c_str());
    EXPECT_EQ(opt.Special(), 5);  // the later key wins

    std::string other = dir.File("other.ini");
    zqtest::WriteFile(other,
                      "[userinfo]\nproductname=Converter\nlibrarypath=/opt/zq\n"
                      "optimizationlevel=\n[internal]\nspecial=2\n");
    opt.InitFile(other.c_str());
    EXPECT_STREQ(opt.InitFile(), other.c_str());
    EXPECT_STREQ(opt.ProductName(), "Converter");
    EXPECT_STREQ(opt.LibDir(), "/opt/zq");
    EXPECT_STREQ(opt.UserName(), "");
    EXPECT_EQ(opt.Special(), 2);  // an empty entry leaves the field alone

    opt.InitFile("   ");
    EXPECT_STREQ(opt.InitFile(), "");
    EXPECT_STREQ(opt.ProductName(), "");
    EXPECT_EQ(opt.Special(), 3);
  }
}

}  // namespace
