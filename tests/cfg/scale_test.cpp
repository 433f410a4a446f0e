// Long and deeply nested scripts: time grows with their length, and their nesting costs no stack.
#include <malloc.h>
#include <pthread.h>

#include <algorithm>
#include <ctime>
#include <functional>

#include "tests/cfg/script_test.h"

// There under sanitizers, where glibc's allocator is not asked.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));

namespace varnok {
namespace {

using Scale = testing::ScriptTest;

/// Processor time of a job, the best of three.
double Seconds(const std::function<void()>& job) {
  double best = 1e9;
  for (int i = 0; i < 3; ++i) {
    std::clock_t start = std::clock();
    job();
    best = std::min(best, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
  }
  return best;
}

/// Blocks of ten lines that set, test and clear tags of their own, in nested blocks, with distinct tags.
std::string LongScript(int lines, int tags) {
  std::string script;
  for (int block = 0; block < lines / 10; ++block) {
    std::string tag = "TAG_" + std::to_string(block % tags);
    script += "SET " + tag + "\nIFSET " + tag + "\n  IFSET NONE " + tag +
              "\n    DISPLAY never\n  ELSE\n    IFSET " + tag + "\n      CLEAR " + tag +
              "\n    ENDIF\n  ENDIF\nENDIF\nSET " + tag + "\n";
  }
  return script;
}

TEST_F(Scale, TimeGrowsWithTheLengthOfTheScript) {
  double quarter = Seconds([&] { EXPECT_EQ(Run(LongScript(5'000, 500)), kSuccess); });
  double whole = Seconds([&] { EXPECT_EQ(Run(LongScript(20'000, 2'000)), kSuccess); });
  EXPECT_EQ(parser.TagCount(), 2'000u);
  EXPECT_LT(whole, 10 * quarter) << "four times the lines; a square law would take sixteen times as long";
}

TEST_F(Scale, ScriptTakesEightyBytesALineWithItsText) {
  std::string script = LongScript(29'700, 2'970);
  auto lines = static_cast<double>(std::count(script.begin(), script.end(), '\n'));
  auto held = [] {
    if (__sanitizer_get_current_allocated_bytes != nullptr)
      return static_cast<double>(__sanitizer_get_current_allocated_bytes());
    struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
  };
  EXPECT_EQ(Load(script), kSuccess);
  parser.Free();
  double before = held();
  ASSERT_EQ(parser.ParseFile(u"T.CFG", nullptr), kSuccess);
  EXPECT_LE((held() - before) / lines, 80) << "as the allocator counts";
}

TEST_F(Scale, SdrFileIsReplacedWithoutASearch) {
  PoolPtr<CCfgCommand> refresh, sdrName;
  machine.files["S.CFG"] = "BMC_REFRESH\nSDRNAME x";
  CFileCfg script("S.CFG");
  for (auto* command : {&refresh, &sdrName})
    ASSERT_EQ(CCfgCommand::MakeCommand(&script, *command, &parser), kSuccess);
  struct : CCfgFileInputCommand {
  } file;
  auto fill = [&](int count) {
    for (int i = 0; i < count; ++i) parser.AddUpdateCommand(*refresh, nullptr, true);
    for (int i = 0; i < count; ++i) parser.AddUpdateCommand(*sdrName, &file, true);
    parser.Free();
  };
  EXPECT_LT(Seconds([&] { fill(20'000); }), 40 * Seconds([&] { fill(2'000); }))
      << "ten times the lines; a square law would take a hundred times";
}

TEST_F(Scale, NestingCostsNoStack) {
  constexpr int kDepth = 20'000;
  std::string open, close;
  for (int i = 0; i < kDepth; ++i) {
    open += i % 2 == 0 ? "IFSET a\n" : "IFSET b\nELSE\n";
    close += "ENDIF\n";
  }
  std::function<void()> body = [&] {
    EXPECT_EQ(Run("SET a\n" + open + "DISPLAY inner\n" + close), kSuccess);
    parser.DebugPrint();
    EXPECT_EQ(machine.console.substr(0, 6), "inner\n");
    EXPECT_EQ(Load(open), 0xC000000000090013);
    EXPECT_EQ(Load("SET a\n" + open + "NOSUCH\n" + close), cfg_status::kUnknownCommand);
    parser.Free();
  };
  auto run = [](void* job) -> void* {
    (*static_cast<std::function<void()>*>(job))();
    return nullptr;
  };
  // A stack as small as a firmware application's.
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 128 * 1024), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &body), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

}  // namespace
}  // namespace varnok
