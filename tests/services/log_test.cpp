// ZQLogger and the per-thread log of ZQGlob.
#include <dirent.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <regex>
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
  std::string line;
  while (std::getline(in, line)) lines.push_back(line);
  return lines;
}

// Descriptors of this process open on `path`.
int OpenDescriptors(const std::string& path) {
  int count = 0;
  DIR* d = opendir("/proc/self/fd");
  if (d == nullptr) return -1;
  while (dirent* e = readdir(d)) {
    char target[4096];
    std::string link = std::string("/proc/self/fd/") + e->d_name;
    ssize_t n = readlink(link.c_str(), target, sizeof target - 1);
    if (n > 0 && std::string(target, static_cast<size_t>(n)) == path) ++count;
  }
  closedir(d);
  return count;
}

// The fields after the date-time stamp: " %3d %6d %c %-64.64s " message.
const std::regex kLine(R"(^(.+) ([ \d]{2}\d) ([ \d-]{5}\d) (.) (.{64}) (.*)$)");

TEST(Logging, LineFormatMasksLastMessageAndUnopenableFile) {
  zqtest::TempDir dir;
  std::string path = dir.File("one.log");
  EXPECT_EQ(ZQGlob::LogMessage(1, BATCH_INVALID, "before open %d", 1), BATCH_INVALID);
  EXPECT_EQ(ZQGlob::LogFileName(), nullptr);
  int level = 99;
  EXPECT_EQ(ZQGlob::LastLogMessage(&level), nullptr);
  EXPECT_EQ(level, 0);
  ASSERT_TRUE(ZQGlob::OpenLog(path.c_str(), 0xFFFF));
  EXPECT_STREQ(ZQGlob::LogFileName(), path.c_str());
  EXPECT_TRUE(ZQGlob::AutoFlushLog());
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
  EXPECT_EQ(level, 0);
  ZQGlob::LogMessage(2, BATCH_OK, "not kept");
  EXPECT_EQ(ZQGlob::LastLogMessage(&level), nullptr);
  ZQGlob::LogMask(0x3);
  EXPECT_EQ(ZQGlob::LogMask(), 3);
  ZQGlob::LogMessage(4, BATCH_OK, "level 4 remembered, not written");
  ZQGlob::LogMessage(1, BATCH_OK, "level 1 written, not remembered? no: %s", "remembered");
  EXPECT_STREQ(ZQGlob::LastLogMessage(&level), "level 1 written, not remembered? no: remembered");
  ZQGlob::CloseLog();
  EXPECT_EQ(ZQGlob::LogFileName(), nullptr);
  EXPECT_EQ(ZQGlob::LogMessage(1, BATCH_END, "after close"), BATCH_END);

  std::vector<std::string> lines = Lines(path);
  ASSERT_EQ(lines.size(), 5u);
  std::smatch m;
  struct Want {
    int level, code;
    char kind;
    std::string source, message;
  } want[] = {
      {4, 19, 'O', "Global", "file x.dat missing"},
      {512, 0, 'O', "Global", "wide 7 narrow"},
      {2, 4, 'E', std::string(64, 's'), "long source"},
      {2, 4, 'E', "src", "short source"},
      {1, 0, 'O', "Global", "level 1 written, not remembered? no: remembered"},
  };
  for (size_t i = 0; i < lines.size(); ++i) {
    ASSERT_TRUE(std::regex_match(lines[i], m, kLine)) << lines[i];
    EXPECT_EQ(std::stoi(m[2]), want[i].level);
    EXPECT_EQ(std::stoi(m[3]), want[i].code);
    EXPECT_EQ(m[4].str()[0], want[i].kind);
    std::string source = want[i].source;
    source.resize(64, ' ');
    EXPECT_EQ(m[5].str(), source);
    EXPECT_EQ(m[6].str(), want[i].message);
  }
  EXPECT_EQ(lines[0].substr(m[1].length(), 13), "   4     19 O");
  // A file that cannot be opened gives no log.
  EXPECT_FALSE(ZQGlob::OpenLog("/nonexistent-dir/zq.log", 0xFFFF));
  EXPECT_EQ(ZQGlob::LogFileName(), nullptr);
  EXPECT_EQ(ZQGlob::LogMessage(1, BATCH_IOERROR, "nothing"), BATCH_IOERROR);
  EXPECT_FALSE(ZQGlob::AutoFlushLog());
  EXPECT_FALSE(ZQGlob::OpenLog(nullptr, 0xFFFF));
  EXPECT_EQ(ZQLogger::GetLogger("", 1), nullptr);
  ZQLogger::FreeLogger(nullptr);
}

TEST(Logging, EightThreadsShareOneFileWithTheirOwnMasks) {
  zqtest::TempDir dir;
  std::string path = dir.File("shared.log");
  const int kThreads = 8, kMessages = 300;
  std::vector<std::thread> threads;
  std::vector<ZQLogger*> seen(kThreads);
  std::vector<int> descriptors(kThreads);
  std::atomic<int> arrived{0};
  auto wait_for_all = [&](int round) {  // round n: every thread has called this n times
    for (++arrived; arrived < round * kThreads;) std::this_thread::yield();
  };
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      // Thread t writes levels 1, 2 and 4 but lets through only its mask.
      int mask = (t % 2 == 0) ? 1 : 2;
      EXPECT_TRUE(ZQGlob::OpenLog(path.c_str(), mask));
      wait_for_all(1);  // all eight hold the log now
      descriptors[t] = OpenDescriptors(path);
      ZQGlob::AutoFlushLog(t != 0);
      for (int i = 0; i < kMessages; ++i) {
        int level = 1 << (i % 3);
        ZQGlob::LogMessage(level, BATCH_OK, "thread %d message %d level %d %s", t, i, level,
                           std::string(static_cast<size_t>(i % 50), 'p').c_str());
      }
      EXPECT_EQ(ZQGlob::LogMask(), mask);
      seen[t] = ZQLogger::GetLogger(path.c_str(), mask);
      ZQLogger::FreeLogger(seen[t]);
      wait_for_all(2);
      ZQGlob::CloseLog();
    });
  }
  for (auto& th : threads) th.join();
  for (int t = 1; t < kThreads; ++t) EXPECT_EQ(seen[t], seen[0]);
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(descriptors[t], 1) << "one shared descriptor";
  EXPECT_EQ(OpenDescriptors(path), 0) << "the file stays open after the last CloseLog";
  std::vector<int> counts(kThreads, 0);
  std::regex body(R"(thread (\d) message (\d+) level (\d) (p*))");
  for (const std::string& line : Lines(path)) {
    std::smatch m, b;
    ASSERT_TRUE(std::regex_match(line, m, kLine)) << line;
    std::string msg = m[6];
    ASSERT_TRUE(std::regex_match(msg, b, body)) << line;
    int t = std::stoi(b[1]), i = std::stoi(b[2]), level = std::stoi(b[3]);
    EXPECT_EQ(level, 1 << (i % 3));
    EXPECT_EQ(b[4].length(), i % 50);
    EXPECT_EQ(level, (t % 2 == 0) ? 1 : 2) << line;
    ++counts[t];
  }
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(counts[t], kMessages / 3) << t;
}

TEST(Logging, SharedLoggerClosesAfterTheLastRelease) {
  zqtest::TempDir dir;
  std::string path = dir.File("ref.log");
  ZQLogger* a = ZQLogger::GetLogger(path.c_str(), 1);
  ZQLogger* b = ZQLogger::GetLogger(path.c_str(), 6);
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a, b);
  EXPECT_EQ(a->RefCount(), 2);
  EXPECT_EQ(a->LogMask(), 6);  // the newest opener's mask
  EXPECT_EQ(OpenDescriptors(path), 1);
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
