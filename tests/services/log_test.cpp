// ZQLogger and the per-thread log of ZQGlob.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "services/test_util.h"
#include "zq/zqglob.h"
#include "zq/zqlog.h"

namespace {

std::vector<std::string> Lines(const std::string& path) {
  std::vector<std::string> lines;
  std::istringstream in(zqtest::ReadFile(path));
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// Descriptors of this process open on `path`.
int OpenDescriptors(const std::string& path) {
  int count = 0;
  std::error_code ec;
  for (const auto& e : std::filesystem::directory_iterator("/proc/self/fd")) {
    count += std::filesystem::read_symlink(e.path(), ec) == path;
  }
  return count;
}

TEST(Logging, LineFormatMasksLastMessageAndUnopenableFile) {
  zqtest::TempDir dir;
  std::string path = dir.File("one.log");
  int level = 99;
  EXPECT_EQ(ZQGlob::LastLogMessage(&level), nullptr);
  EXPECT_EQ(level, 0);
  ASSERT_TRUE(ZQGlob::OpenLog(path.c_str(), 0xFFFF));
  EXPECT_EQ(ZQGlob::LogMessage(4, BATCH_CANTOPEN, "file %s missing", "x.dat"), BATCH_CANTOPEN);
  static const unsigned short kWide[] = {'w', 'i', 'd', 'e', ' ', '%', 'd', ' ', '%', 'S', 0};
  EXPECT_EQ(ZQGlob::LogMessage(512, BATCH_OK, kWide, 7, "narrow"), BATCH_OK);
  ZQLogger* logger = ZQLogger::GetLogger(path.c_str(), 0xFFFF);
  ASSERT_NE(logger, nullptr);
  logger->WriteLog(2, BATCH_IOERROR, std::string(70, 's').c_str(), 'E', "long source");
  logger->WriteLog(2, BATCH_IOERROR, "src", 'E', "short source");
  ZQLogger::FreeLogger(logger);
  ZQGlob::LogMask(0);  // nothing is written, but levels 4 and 8 are remembered
  EXPECT_EQ(ZQGlob::LogMessage(8, BATCH_NOMEMORY, "kept %d", 8), BATCH_NOMEMORY);
  EXPECT_STREQ(ZQGlob::LastLogMessage(&level), "kept 8");
  EXPECT_EQ(level, 8);
  EXPECT_EQ(ZQGlob::LastLogMessage(&level), nullptr);  // fetched once
  ZQGlob::LogMessage(2, BATCH_OK, "not kept");
  EXPECT_EQ(ZQGlob::LastLogMessage(&level), nullptr);
  ZQGlob::LogMask(0x3);
  ZQGlob::LogMessage(4, BATCH_OK, "level 4 remembered, not written");
  ZQGlob::LogMessage(1, BATCH_OK, "written and %s", "remembered");
  EXPECT_STREQ(ZQGlob::LastLogMessage(&level), "written and remembered");
  ZQGlob::CloseLog();
  EXPECT_EQ(ZQGlob::LogFileName(), nullptr);
  EXPECT_EQ(ZQGlob::LogMessage(1, BATCH_END, "after close"), BATCH_END);
  // After the date-time stamp: " %3d %6d %c %-64.64s %s" of level, code, kind, source, message.
  auto pad = [](std::string source) { source.resize(64, ' '); return source; };
  const std::string want[] = {"   4     19 O " + pad("Global") + " file x.dat missing",
                              " 512      0 O " + pad("Global") + " wide 7 narrow",
                              "   2      4 E " + std::string(64, 's') + " long source",
                              "   2      4 E " + pad("src") + " short source",
                              "   1      0 O " + pad("Global") + " written and remembered"};
  std::vector<std::string> lines = Lines(path);
  ASSERT_EQ(lines.size(), 5u);
  for (size_t i = 0; i < lines.size(); ++i) {
    size_t stamp = lines[i].size() - std::min(lines[i].size(), want[i].size());
    EXPECT_TRUE(stamp > 0 && lines[i].substr(stamp) == want[i]) << lines[i] << "\nwant " << want[i];
  }
  // A file that cannot be opened gives no log.
  EXPECT_FALSE(ZQGlob::OpenLog("/nonexistent-dir/zq.log", 0xFFFF) || ZQGlob::OpenLog(nullptr, 0xFFFF));
  EXPECT_EQ(ZQGlob::LogFileName(), nullptr);
  EXPECT_EQ(ZQLogger::GetLogger("", 1), nullptr);
}

TEST(Logging, EightThreadsShareOneFileWithTheirOwnMasks) {
  zqtest::TempDir dir;
  std::string path = dir.File("shared.log");
  const int kThreads = 8, kMessages = 150;
  std::vector<std::thread> threads;
  std::vector<int> descriptors(kThreads);
  std::atomic<int> arrived{0};
  auto message = [](int t, int i) {
    return "thread " + std::to_string(t) + " message " + std::to_string(i) + std::string(i % 50, 'p');
  };
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      int mask = (t % 2 == 0) ? 1 : 2;  // levels 1, 2 and 4 are written; the mask lets one through
      EXPECT_TRUE(ZQGlob::OpenLog(path.c_str(), mask));
      for (++arrived; arrived < kThreads;) std::this_thread::yield();  // all hold the log now
      descriptors[t] = OpenDescriptors(path);
      ZQGlob::AutoFlushLog(t != 0);
      for (int i = 0; i < kMessages; ++i) {
        ZQGlob::LogMessage(1 << (i % 3), BATCH_OK, "%s", message(t, i).c_str());
      }
      ZQGlob::CloseLog();
    });
  }
  for (auto& th : threads) th.join();
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(descriptors[t], 1) << "one shared descriptor";
  EXPECT_EQ(OpenDescriptors(path), 0) << "the file stays open after the last CloseLog";
  std::vector<int> counts(kThreads, 0);
  for (const std::string& line : Lines(path)) {
    int t = -1, i = 0;
    size_t at = line.find(" thread ");
    if (at != std::string::npos) sscanf(line.c_str() + at, " thread %d message %d", &t, &i);
    ASSERT_TRUE(t >= 0 && t < kThreads) << line;
    EXPECT_EQ(line.substr(at + 1), message(t, i)) << "whole lines, none mixed";
    EXPECT_EQ(i % 3, t % 2) << "only the writer's mask passes: " << line;
    ++counts[t];
  }
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(counts[t], kMessages / 3) << t;
}

TEST(Logging, SharedLoggerClosesAfterTheLastRelease) {
  zqtest::TempDir dir;
  std::string path = dir.File("ref.log");
  ZQLogger* a = ZQLogger::GetLogger(path.c_str(), 1);
  ZQLogger* b = ZQLogger::GetLogger(path.c_str(), 6);
  ASSERT_TRUE(a != nullptr && a == b);
  EXPECT_EQ(a->LogMask(), 6);  // the newest opener's mask
  ZQLogger copy(*a);  // its own descriptor, closed with it
  EXPECT_EQ(OpenDescriptors(path), 2);
  copy.WriteLog(2, BATCH_OK, "copy", 'I', "through the copy");
  ZQLogger::FreeLogger(a);
  EXPECT_EQ(OpenDescriptors(path), 2);
  ZQLogger::FreeLogger(b);
  EXPECT_EQ(OpenDescriptors(path), 1);
  EXPECT_EQ(Lines(path).size(), 1u);
}

}  // namespace
