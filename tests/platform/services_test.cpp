// Memory, messages, clock, random numbers, processor and the headless window.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

#include "lumrmisc/platform/clock.h"
#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/cpu.h"
#include "lumrmisc/platform/cpu_internal.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/memory.h"
#include "lumrmisc/platform/memory_internal.h"
#include "lumrmisc/platform/messages.h"
#include "lumrmisc/platform/random.h"
#include "lumrmisc/platform/window.h"

namespace lumr {
namespace {

// A block that is filled to its end with a pattern, and checked.
class PatternBlock {
 public:
  explicit PatternBlock(std::size_t size)
      : data_(static_cast<unsigned char*>(AllocateBlock(size))), size_(size) {
    Fill(0);
  }
  ~PatternBlock() { ReleaseBlock(data_, size_); }
  PatternBlock(const PatternBlock&) = delete;
  PatternBlock& operator=(const PatternBlock&) = delete;

  std::size_t Size() const { return size_; }
  void GrowTo(std::size_t size) {
    const std::size_t used = size_;
    data_ = static_cast<unsigned char*>(GrowBlock(data_, size_, used, size));
    size_ = size;
    Fill(used);
  }
  bool IsIntact() const {
    for (std::size_t i = 0; i < size_; ++i) {
      if (data_[i] != PatternAt(i)) return false;
    }
    return true;
  }

 private:
  static unsigned char PatternAt(std::size_t i) {
    return static_cast<unsigned char>(i * 7 + (i >> 8));
  }
  void Fill(std::size_t from) {
    for (std::size_t i = from; i < size_; ++i) data_[i] = PatternAt(i);
  }
  unsigned char* data_;
  std::size_t size_;
};

TEST(Blocks, KeepTheirContentOverGrowthFromAnySizeToAnyOther) {
  static constexpr std::size_t kSizes[] = {1,    15,   1022,  1023,  1024,   1025,   1151,   1152,
                                           4095, 4096, 65535, 65536, 131073, 500000, 1048577};
  for (const std::size_t from : kSizes) {
    for (const std::size_t to : kSizes) {
      if (to <= from) continue;
      PatternBlock block(from);
      block.GrowTo(to);
      EXPECT_TRUE(block.IsIntact()) << from << " to " << to;
    }
  }
}

// Two at a time, so that neither can always be extended where it stands. A growth that copies at
// each step would not come to an end.
TEST(Blocks, GrowBySmallSteps) {
  PatternBlock a(16);
  PatternBlock b(16);
  for (std::size_t size = 32; size <= 16u << 20; size += 16) {
    a.GrowTo(size + 2);
    b.GrowTo(size + 2);
  }
  EXPECT_TRUE(a.IsIntact());
  EXPECT_TRUE(b.IsIntact());
}

TEST(Blocks, StayAsTheyAreWhenGrowthFails) {
  for (const std::size_t size : std::initializer_list<std::size_t>{16, 1023, 1024, 200000}) {
    PatternBlock block(size);
    internal::allocationFault = [] { return true; };
    EXPECT_THROW(block.GrowTo(size + 1), std::bad_alloc);
    EXPECT_THROW(AllocateBlock(size), std::bad_alloc);
    internal::allocationFault = nullptr;
    EXPECT_EQ(block.Size(), size);
    EXPECT_TRUE(block.IsIntact());
    block.GrowTo(size + 5000);
    EXPECT_TRUE(block.IsIntact());
  }
}

struct MessageRow {
  unsigned id;
  std::u16string_view japanese;
  std::u16string_view english;
};
constexpr MessageRow kMessages[] = {
#include "lumrmisc/platform/messages_table.inc"
};

// The directives of a printf format, in order.
std::string Directives(std::u16string_view text) {
  std::string directives;
  for (std::size_t pos = text.find(u'%'); pos != text.npos; pos = text.find(u'%', pos)) {
    const std::size_t end = text.find_first_of(u"sduXx%", pos + 1);
    if (end == text.npos) return "unfinished";
    while (pos <= end) directives += static_cast<char>(text[pos++]);
  }
  return directives;
}

TEST(Messages, AreWholeInShiftJisAndInAsciiAndAlikeInBoth) {
  for (const MessageRow& row : kMessages) {
    SCOPED_TRACE(row.id);
    CStringA text;
    ASSERT_TRUE(SetCurrentCodePage(932));
    EXPECT_TRUE(EncodeInCurrentCodePage(row.japanese, text));
    EXPECT_TRUE(
        std::all_of(row.english.begin(), row.english.end(), [](char16_t c) { return c < 0x80; }));
    EXPECT_EQ(Directives(row.japanese), Directives(row.english));
    EXPECT_FALSE(row.english.empty());
  }
}

TEST(Messages, ComeInTheLanguageThatTheCodePageHolds) {
  using enum MessageLanguage;
  const struct {
    unsigned id;
    MessageLanguage language;
    unsigned codePage;
    std::string_view expected;
  } cases[] = {
      {3500, kJapanese, 932, "\x89\x70\x95\xB6"},
      {3500, kJapanese, 1252, "English"},
      {3500, kJapanese, 20127, "English"},
      {3500, kJapanese, 936, "\xD3\xA2\xCE\xC4"},
      {3500, kEnglish, 932, "English"},
      {3503, kJapanese, 932, "\x93\xFA\x96\x7B\x8C\xEA (\x83\x56\x83\x74\x83\x67JIS)"},
      {3503, kJapanese, 1251, "Japanese (Shift_JIS)"},
      {3504, kJapanese, 1252, "Unicode (UTF-7)"},
      {3300 + 99, kJapanese, 932, ""},
      {0, kEnglish, 932, ""},
      {~0u, kEnglish, 932, ""},
  };
  for (const auto& c : cases) {
    SetMessageLanguage(c.language);
    ASSERT_TRUE(SetCurrentCodePage(c.codePage));
    EXPECT_EQ(MessageText(c.id), c.expected) << c.id << " in " << c.codePage;
  }
  SetMessageLanguage(kJapanese);
  SetCurrentCodePage(932);
  EXPECT_EQ(MessageTextUtf8(3500), "\xE8\x8B\xB1\xE6\x96\x87");
}

TEST(Clock, TellsLocalTimeByItsDistanceFromUtc) {
  using namespace std::chrono;
  for (const long long at :
       {0LL, 951782399LL, 951782400LL, 1709164800LL, 1720000000LL, 4102444799LL}) {
    const CTime time{seconds(at)};
    const LocalTime local = LocalTimeOf(time);
    const year_month_day date(year(local.year), month(static_cast<unsigned>(local.month)),
                              day(static_cast<unsigned>(local.day)));
    const auto sum = sys_days(date) + hours(local.hour) + minutes(local.minute) +
                     seconds(local.second) - minutes(local.utcOffsetMinutes);
    EXPECT_EQ(sum, time) << at;
    EXPECT_LE(std::abs(local.utcOffsetMinutes), 16 * 60);
  }
}

TEST(Random, FillsAllOfAMemory) {
  std::string bytes(3000, '\0');
  FillRandom(bytes.data(), bytes.size() - 16);
  const std::string zeros(16, '\0');
  EXPECT_EQ(bytes.substr(bytes.size() - 16), zeros);
  EXPECT_GT(bytes.find(zeros), bytes.size() - 16 - 8);  // the last random bytes may be zero too
  EXPECT_NE(RandomSeed(), RandomSeed());
}

TEST(Cpu, HidesWhatIsAboveTheLimit) {
  const CpuFeatures all = Cpu();
  internal::LimitCpu(internal::CpuLevel::kSse41);
  EXPECT_EQ(Cpu().ssse3, all.ssse3);
  EXPECT_FALSE(Cpu().avx2);
  internal::LimitCpu(internal::CpuLevel::kPortable);
  EXPECT_FALSE(Cpu().ssse3 || Cpu().sse41 || Cpu().neon);
  internal::LimitCpu(internal::CpuLevel::kAll);
  EXPECT_EQ(Cpu().avx2, all.avx2);
}

TEST(HeadlessWindow, MeasuresEightPixelsAColumnInEveryCodePage) {
  const struct {
    std::string_view bytes;
    std::u16string_view units;
    int columns;
  } cases[] = {
      {"", u"", 0},
      {"abc", u"abc", 3},
      {"\x82\xA0\x88\x9F", u"\u3042\u4E9C", 4},
      {"\xB1\xB2", u"\uFF71\uFF72", 2},
      {"\x83\xBF\x84\x40", u"\u03B1\u0410", 4},  // narrow in Unicode, two bytes in Shift_JIS
  };
  HeadlessWindow window(40, 10);
  EXPECT_EQ(window.ClientArea(), (CRect{0, 0, 320, 160}));
  CMeasuringContext* const context = window.TakeMeasuringContext();
  for (const auto& c : cases) {
    // At an odd address, too.
    std::string units = "x";
    units.append(reinterpret_cast<const char*>(c.units.data()), c.units.size() * 2);
    EXPECT_EQ(context->TextWidth(c.bytes, 932), c.columns * 8) << c.columns;
    EXPECT_EQ(context->TextWidth(std::string_view(units).substr(1), 1200), c.columns * 8)
        << c.columns;
  }
  window.ReleaseMeasuringContext(context);
}

TEST(AskUser, AsksTheWindowAndElseTheHandler) {
  struct Answering : HeadlessWindow {
    int Ask(const MessageBoxRequest& request) override { return request.cancelButton; }
  } answering;
  HeadlessWindow silent;
  const MessageBoxRequest request;
  EXPECT_EQ(AskUser(nullptr, request), kNoDialogs);
  SetMessageBoxHandler([](CWnd*, const MessageBoxRequest&) { return 2; });
  EXPECT_EQ(AskUser(nullptr, request), 2);
  EXPECT_EQ(AskUser(&silent, request), 2);
  EXPECT_EQ(AskUser(&answering, request), -1);
  SetMessageBoxHandler(nullptr);
}

}  // namespace
}  // namespace lumr
