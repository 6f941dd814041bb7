// INI files through ZQGlob's profile readers, and the option block built from them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "services/test_util.h"
#include "zq/options.h"
#include "zq/zqglob.h"

TEST(Profile, ReadsValuesTheWindowsWay) {
  zqtest::TempDir dir;
  std::string long_value(100000, 'v');
  std::string ini = dir.Write("test.ini",
      "top=outside any section\r\n[Main]\r\n  Name  =  Value with blanks  \r\n"
      "; name=commented\r\ndup=first\r\ndup=second\r\nquoted=\"  inside  \"\r\n"
      "single='x'\r\nhalf=\"open\r\nempty=\r\nnum=  -42xyz\r\nbig=99999999999\r\n"
      "long=" + long_value + "\r\nnovalue\r\n[ other ]\nk=1\n[MAIN]\nlate=yes\ndup=third\n");
  std::string absent = dir.File("absent.ini");
  const struct { const char *section, *key, *def; const std::string& file; int size; std::string want; }
      cases[] = {
      {"main", "name", "d", ini, 256, "Value with blanks"},
      {"MAIN", "NAME", "d", ini, 256, "Value with blanks"},
      {"Main", "dup", "d", ini, 256, "first"},       {"Main", "late", "d", ini, 256, "yes"},
      {"Main", "quoted", "d", ini, 256, "  inside  "}, {"Main", "single", "d", ini, 256, "x"},
      {"Main", "half", "d", ini, 256, "\"open"},     {"Main", "empty", "d", ini, 256, ""},
      {"Main", "; name", "d", ini, 256, "d"},        {"Main", "top", "d", ini, 256, "d"},
      {"Main", "novalue", "d", ini, 256, "d"},       {"other", "k", "d", ini, 256, "1"},
      {"Main", "long", "d", ini, 200000, long_value},
      {"Main", "long", "d", ini, 10, std::string(9, 'v')}, {"Main", "name", "d", ini, 1, ""},
      {"Missing", "name", "default  ", ini, 256, "default"},
      {"Main", "missing", nullptr, ini, 256, ""},    {"Main", "name", "dflt", absent, 256, "dflt"},
      {nullptr, nullptr, "", ini, 64, std::string("Main\0other\0", 11)},
      {"other", nullptr, "", ini, 64, std::string("k\0", 2)},
  };
  for (const auto& c : cases) {
    std::vector<char> out(static_cast<size_t>(c.size) + 1, '#');
    int n = ZQGlob::ReadProfileString(c.section, c.key, c.def, out.data(), c.size, c.file.c_str());
    std::string row = std::string(c.section ? c.section : "-") + "/" + (c.key ? c.key : "-");
    EXPECT_EQ(std::string(out.data(), static_cast<size_t>(n)), c.want) << row;
    EXPECT_EQ(out[static_cast<size_t>(n)], '\0') << row;
    EXPECT_EQ(out[static_cast<size_t>(c.size)], '#') << row << ": wrote past the caller's size";
  }
  EXPECT_EQ(ZQGlob::ReadProfileString("Main", "name", "d", nullptr, 10, ini.c_str()), 0);
  const struct { const char *key, *file; int want; } ints[] = {
      {"num", ini.c_str(), -42}, {"name", ini.c_str(), 0}, {"missing", ini.c_str(), 7},
      {"num", nullptr, 7}};
  for (const auto& c : ints) {
    EXPECT_EQ(ZQGlob::ReadProfileInt("Main", c.key, 7, c.file), c.want) << c.key;
  }
}

TEST(OptionBlock, SettingsComeFromZQLIBAndTheInitFile) {
  zqtest::TempDir dir;
  zqtest::EnvVar zqlib("ZQLIB", dir.path);
  {
    ZQOptionBlock opt;  // a directory without "initfile.nam" gives the defaults
    EXPECT_STREQ(opt.LibDir(), dir.path.c_str());
    EXPECT_STREQ(opt.InitFile(), "");
    EXPECT_STREQ(opt.ProductName(), "");
    EXPECT_EQ(opt.DecSep(), '.');
    EXPECT_EQ(opt.ThsndSep(), '\0');
    EXPECT_EQ(opt.Special(), 3);
  }
  std::string ini = dir.Write("zq.ini", "[UserInfo]\nowner=" + std::string(100, 'o') +
                                            "\norganization=Acme\noptimizationlevel=5\n"
                                            "[Internal]\nspecial=2\n");
  dir.Write("initfile.nam", ini + "  \r\nsecond line ignored\n");
  ZQOptionBlock opt;
  EXPECT_STREQ(opt.InitFile(), ini.c_str());
  EXPECT_EQ(std::string(opt.UserName()), std::string(64, 'o'));
  EXPECT_STREQ(opt.Organization(), "Acme");
  EXPECT_STREQ(opt.ProductName(), "Third party conversion product");
  EXPECT_EQ(opt.Special(), 5);  // the later key wins
  std::string other = dir.Write("other.ini",
                                "[userinfo]\nproductname=Converter\nlibrarypath=/opt/zq\n"
                                "optimizationlevel=\n[internal]\nspecial=2\n");
  opt.InitFile(other.c_str());
  EXPECT_STREQ(opt.ProductName(), "Converter");
  EXPECT_STREQ(opt.LibDir(), "/opt/zq");
  EXPECT_STREQ(opt.UserName(), "");
  EXPECT_EQ(opt.Special(), 2);  // an empty entry leaves the field alone
  opt.InitFile("   ");
  EXPECT_STREQ(opt.InitFile(), "");
  EXPECT_STREQ(opt.ProductName(), "");
  EXPECT_EQ(opt.Special(), 3);
}

