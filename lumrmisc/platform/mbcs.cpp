#include "lumrmisc/platform/mbcs.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <iterator>

namespace lumr {

namespace {

struct BytePair {
  std::uint8_t upper;
  std::uint8_t lower;
};

// The letters of a code page: single bytes, and runs of two-byte Latin capitals.
struct MbcsRow {
  unsigned codePage;
  const BytePair* letters;
  std::size_t letterCount;
  MbcsPage::LetterRun wideLetters[2];
};

namespace tables {
#include "lumrmisc/platform/tables/mbcs.inc"
}  // namespace tables

struct ByteRange {
  std::uint8_t first;
  std::uint8_t last;
};

// Lead and trail bytes, as the C runtime of Windows has them. Unused ranges are empty.
struct DoubleByteRow {
  unsigned codePage;
  ByteRange leads[2];
  ByteRange trails[3];
};
constexpr ByteRange kNone = {1, 0};
constexpr DoubleByteRow kDoubleByteRows[] = {
    {932, {{0x81, 0x9F}, {0xE0, 0xFC}}, {{0x40, 0x7E}, {0x80, 0xFC}, kNone}},
    {936, {{0x81, 0xFE}, kNone}, {{0x40, 0x7E}, {0x80, 0xFE}, kNone}},
    {949, {{0x81, 0xFE}, kNone}, {{0x41, 0x5A}, {0x61, 0x7A}, {0x81, 0xFE}}},
    {950, {{0x81, 0xFE}, kNone}, {{0x40, 0x7E}, {0xA1, 0xFE}, kNone}},
    {51949, {{0x81, 0xFE}, kNone}, {{0x41, 0x5A}, {0x61, 0x7A}, {0x81, 0xFE}}},
};

}  // namespace

struct MbcsPages {
  static constexpr std::size_t kCount = std::size(tables::kMbcsRows);

  static constexpr void Mark(MbcsPage& page, ByteRange range, std::uint8_t flag) {
    for (unsigned byte = range.first; byte <= range.last; ++byte) page.flags_[byte] |= flag;
  }

  static constexpr MbcsPage Make(const MbcsRow& row) {
    MbcsPage page;
    page.codePage_ = row.codePage;
    for (unsigned byte = 0; byte < 256; ++byte) {
      page.lower_[byte] = page.upper_[byte] = static_cast<std::uint8_t>(byte);
    }
    for (std::size_t i = 0; i < row.letterCount; ++i) {
      page.lower_[row.letters[i].upper] = row.letters[i].lower;
      page.upper_[row.letters[i].lower] = row.letters[i].upper;
    }
    std::copy(std::begin(row.wideLetters), std::end(row.wideLetters), page.wideLetters_);
    for (const DoubleByteRow& bytes : kDoubleByteRows) {
      if (bytes.codePage != row.codePage) continue;
      page.doubleByte_ = true;
      for (const ByteRange range : bytes.leads) Mark(page, range, MbcsPage::kLead);
      for (const ByteRange range : bytes.trails) Mark(page, range, MbcsPage::kTrail);
    }
    return page;
  }

  static constexpr auto MakeAll() {
    std::array<MbcsPage, kCount> pages;
    for (std::size_t i = 0; i < kCount; ++i) pages[i] = Make(tables::kMbcsRows[i]);
    return pages;
  }
};

namespace {

constexpr auto kPages = MbcsPages::MakeAll();
static_assert(kPages[0].CodePage() == 932, "the page that is current until another one is set");

constinit thread_local const MbcsPage* currentPage = &kPages[0];
constinit std::atomic<unsigned> ansiCodePage = 932;

}  // namespace

bool MbcsPage::IsTrailInContext(std::string_view text, std::size_t pos) const {
  if (pos >= text.size()) return false;
  // Behind a byte that is no lead byte a character begins, whatever that byte is.
  std::size_t start = pos;
  while (start > 0 && IsLead(text[start - 1])) --start;
  while (start < pos) start += CharLength(text, start);
  return start > pos;
}

unsigned MbcsPage::ToLower(unsigned character) const {
  if (character < 0x100) return lower_[character];
  for (const LetterRun& run : wideLetters_) {
    if (character - run.firstUpper < run.count) return character - run.firstUpper + run.firstLower;
  }
  return character;
}

unsigned MbcsPage::ToUpper(unsigned character) const {
  if (character < 0x100) return upper_[character];
  for (const LetterRun& run : wideLetters_) {
    if (character - run.firstLower < run.count) return character - run.firstLower + run.firstUpper;
  }
  return character;
}

// Compares character by character, each one folded.
template <typename Fold>
int MbcsPage::CompareFolded(std::string_view a, std::string_view b, Fold fold) const {
  std::size_t posA = 0;
  std::size_t posB = 0;
  while (posA < a.size() && posB < b.size()) {
    const unsigned characterA = CharacterAt(a, posA);
    const unsigned characterB = CharacterAt(b, posB);
    if (characterA != characterB) {
      const int difference =
          static_cast<int>(fold(characterA)) - static_cast<int>(fold(characterB));
      if (difference != 0) return difference;
    }
    posA += CharLength(a, posA);
    posB += CharLength(b, posB);
  }
  const std::size_t leftA = a.size() - posA;
  const std::size_t leftB = b.size() - posB;
  return leftA == leftB ? 0 : leftA < leftB ? -1 : 1;
}

int MbcsPage::Compare(std::string_view a, std::string_view b) const {
  return CompareFolded(a, b, [](unsigned character) { return character; });
}

int MbcsPage::CompareNoCase(std::string_view a, std::string_view b) const {
  return CompareFolded(a, b, [this](unsigned character) { return ToLower(character); });
}

bool MbcsPage::EqualNoCase(std::string_view a, std::string_view b) const {
  // Case never changes the length of a character.
  return a.size() == b.size() && CompareNoCase(a, b) == 0;
}

const MbcsPage* FindMbcsPage(unsigned codePage) {
  if (codePage == 0) codePage = AnsiCodePage();
  const auto found = std::find_if(kPages.begin(), kPages.end(), [codePage](const MbcsPage& page) {
    return page.CodePage() == codePage;
  });
  return found == kPages.end() ? nullptr : &*found;
}

unsigned CurrentCodePage() {
  return currentPage->CodePage();
}
const MbcsPage& CurrentMbcsPage() {
  return *currentPage;
}

bool SetCurrentCodePage(unsigned codePage) {
  const MbcsPage* const page = FindMbcsPage(codePage);
  if (page == nullptr) return false;
  currentPage = page;
  return true;
}

unsigned AnsiCodePage() {
  return ansiCodePage.load(std::memory_order_relaxed);
}

bool SetAnsiCodePage(unsigned codePage) {
  if (codePage == 0 || FindMbcsPage(codePage) == nullptr) return false;
  ansiCodePage.store(codePage, std::memory_order_relaxed);
  return true;
}

}  // namespace lumr
