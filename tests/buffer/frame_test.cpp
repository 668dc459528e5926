#include "lumrmisc/buffer/frame.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <thread>

#include "lumrmisc/buffer/trace.h"
#include "lumrmisc/platform/files.h"
#include "lumrmisc/platform/mbcs.h"

namespace lumr {
namespace {

TEST(Frame, AllocatesOrThrows) {
  char* block = static_cast<char*>(lu_malloc(0));
  EXPECT_NE(block, nullptr);
  block = static_cast<char*>(lu_realloc(block, 100));
  block[99] = 'x';
  EXPECT_THROW(block = static_cast<char*>(lu_realloc(block, 0x7FFFFFC1)), std::bad_alloc);
  EXPECT_EQ(block[99], 'x');
  lu_free(block);
  EXPECT_THROW(lu_free(lu_malloc(static_cast<unsigned>(-1))), std::bad_alloc);
}

TEST(Frame, MeasuresBoundedStrings) {
  const struct {
    const char* text;
    int max, expected;
  } narrow[] = {{"abc", 2, 2}, {"abc", 9, 3}, {"abc", 0, 0}, {"abc", -5, -5}, {nullptr, 3, 0}};
  for (const auto& c : narrow) EXPECT_EQ(lu_strnlen(c.text, c.max), c.expected) << c.max;
  const struct {
    const char16_t* text;
    int max, expected;
  } wide[] = {{u"abc", 7, 6}, {u"abc", 5, 4},   {u"abc", 99, 6},
              {u"abc", 1, 0}, {u"abc", -5, -6}, {nullptr, 4, 0}};
  for (const auto& c : wide) EXPECT_EQ(lu_wcsnlen(c.text, c.max), c.expected) << c.max;
  EXPECT_TRUE(IsEmpty("") && IsEmpty(u"") && !IsEmpty(" ") && !IsEmpty(u" "));
  EXPECT_TRUE(IsEmpty(static_cast<const char*>(nullptr)));
  EXPECT_TRUE(IsEmpty(static_cast<const char16_t*>(nullptr)));
}

TEST(Frame, GivesPrimes) {
  constexpr unsigned kLargest = 4294967291u;
  const unsigned cases[][2] = {{0, 0},
                               {3, 3},
                               {4, 5},
                               {5, 5},
                               {6, 7},
                               {9, 11},
                               {12, 13},
                               {49, 53},
                               {961, 967},
                               {kLargest - 11, kLargest},
                               {kLargest + 4, kLargest}};
  for (const auto& c : cases) EXPECT_EQ(GetPrimeUpper(c[0]), c[1]) << c[0];
}

TEST(Frame, ExceptionsGiveTheirMessage) {
  const CStrException full("disk full"), none(static_cast<const char*>(nullptr));
  const CStrException kana("\x83\x41\x83\x43");
  const CLeaveOnlyException leave;
  const struct {
    const CException& exception;
    unsigned max;
    int result;
    const char* expected;
  } cases[] = {
      {full, 5, 1, "disk"}, {full, 10, 1, "disk full"}, {full, 1, 1, ""},  {full, 0, 0, "*******"},
      {none, 9, 1, ""},     {kana, 4, 1, "\x83\x41"},   {leave, 9, 0, ""}, {leave, 0, 0, "*******"},
  };
  for (const auto& c : cases) {
    char message[12] = "*******";
    unsigned context = 3;
    EXPECT_EQ(c.exception.GetErrorMessage(message, c.max, &context), c.result) << c.expected;
    EXPECT_STREQ(message, c.expected);
    EXPECT_EQ(context, 3u);
    EXPECT_EQ(c.exception.GetErrorMessage(nullptr, c.max), 0);
  }
}

class Trace : public testing::Test {
 protected:
  void TearDown() override { SetTraceOutput(0); }
  // What was written between the two time lines.
  static std::string Written() {
    SetTraceOutput(0);
    std::string text;
    ReadWholeFile(TemporaryFolder() + u"LumoraTraceOutput.txt", text);
    const std::size_t first = text.find("\r\n") + 2;
    const std::size_t last = text.rfind("\r\n", text.size() - 3) + 2;
    const std::string time = text.substr(last, text.size() - last - 2);
    EXPECT_EQ(time.size(), 19u) << text;
    EXPECT_EQ(time.find_first_not_of("0123456789-: "), std::string::npos);
    return text.substr(first, last - first);
  }
};

TEST_F(Trace, WritesIndentedScopes) {
  EXPECT_EQ(SetTraceOutput(1) + IsTraceOutput(), 2);
  {
    CTraceFunction outer("Outer");
    const char* const none = nullptr;
    outer(none);
    outer("never, in mode %d", 0);
    {
      CTraceFunction load("Load");
      load("%s %d", "size", 5);
      load.SetMode(3);
      load("a");
      load("%s", "");
      load();
      load("b");
      std::thread([] { CTraceFunction elsewhere("Other"); }).join();
    }
    CTraceFunction third("T");
    outer.SetMode(1);
    outer("x");
    outer("%s", "");
    outer();
    outer.SetMode(2);
    outer("y");
    outer();
    SetTraceOutput(1);
  }
  EXPECT_EQ(Written(),
            "+++ Outer +++\r\n"
            "    +++ Load +++  size 5\r\n"
            "--- Other ---\r\n"
            "    --- Load ---  a\r\n"
            "                  \r\n"
            "                  b\r\n"
            "               x\r\n"
            "               \r\n"
            "... Outer ...  y\r\n"
            "... Outer ...\r\n"
            "    --- T ---\r\n"
            "--- Outer ---\r\n");
}

TEST_F(Trace, LeavesOutWhatHappensWhileOff) {
  {
    CTraceFunction early("Early");
    early("entered while off");
    SetTraceOutput(1);
    early.SetMode(2);
    early("late");
    EXPECT_EQ(early.GetFuncSpace().size(), 10u);
    CTraceFunction inner("Inner");
    SetTraceOutput(0);
    inner("off");
    EXPECT_EQ(IsTraceOutput(), 0);
  }
  EXPECT_EQ(Written(), "...  ...  late\r\n");
  SetTraceOutput(1);
  EXPECT_EQ(Written(), "");
}

}  // namespace
}  // namespace lumr
