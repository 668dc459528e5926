// Any text and word under any options in any code type: positions are inside the text and on its
// borders, and in Shift_JIS and UTF-16 those of the plainly written rules. The first byte chooses
// options and code type, the second one the length of the word.
#include <cstdint>
#include <string_view>
#include <vector>

#include "tests/search/optioncomp_model.h"

namespace {

using lumr::CodeType;
using lumr::model::Options;
using lumr::model::Reader;

void Require(bool holds) {
  if (!holds) __builtin_trap();
}

constexpr CodeType kCodeTypes[] = {lumr::CT_SJIS,    lumr::CT_UNICODE, lumr::CT_EUC,
                                   lumr::CT_BIG5,    lumr::CT_EUCKR,   lumr::CT_GB2312,
                                   lumr::CT_WIN1252, lumr::CT_UNKNOWN};

// A block of its own size, so that a read outside it is seen.
using Block = std::vector<char>;

std::string_view View(const Block& block) {
  return {block.data(), block.size()};
}

void CheckModel(const Options& options, bool wide, std::string_view text, std::string_view word,
                int forward, int position, int length) {
  static const Reader readers[] = {Reader(false), Reader(true)};
  if (wide) {
    text.remove_suffix(text.size() % 2);
    word.remove_suffix(word.size() % 2);
  }
  const auto places = readers[wide].Places(text, word, options);
  Require((position < 0) == places.empty());
  if (places.empty()) return;
  const Reader::Place& place = forward != 0 ? places.front() : places.back();
  Require(place.pos == position && place.length == length);
}

void CheckBorders(CodeType codeType, std::string_view text, int position, int length) {
  if (position < 0) return Require(length == 0);
  const auto begin = static_cast<std::size_t>(position);
  const std::size_t end = begin + static_cast<std::size_t>(length);
  Require(length > 0 && end <= text.size());
  if (lumr::IsCodeTypeUnicode(codeType)) return Require(begin % 2 == 0 && length % 2 == 0);
  const lumr::MbcsPage& page =
      *lumr::FindMbcsPage(lumr::CharSetCode2CodePage(lumr::CodeTypeSave2Edit(codeType)));
  Require(!page.IsTrailInContext(text, begin) && !page.IsTrailInContext(text, end));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const CodeType codeType = kCodeTypes[data[0] / 8 % std::size(kCodeTypes)];
  const Options options(data[0] % 8);
  const auto* const bytes = reinterpret_cast<const char*>(data);
  const std::size_t middle = std::min<std::size_t>(2 + data[1] % 32, size);
  const Block word(bytes + 2, bytes + middle);
  const Block text(bytes + middle, bytes + size);
  const lumr::COptionComp2 comparison = options.Comparison();
  const bool hasModel = codeType == lumr::CT_SJIS || codeType == lumr::CT_UNICODE;
  const int textSize = static_cast<int>(text.size());
  const int wordSize = static_cast<int>(word.size());
  bool found = false;
  for (const int forward : {0, 1}) {
    int length = 0;
    const int position = comparison.FindString(text.data(), textSize, word.data(), wordSize,
                                               codeType, forward, 1, &length);
    found = position >= 0;
    if (options.UsesTable()) CheckBorders(codeType, View(text), position, length);
    if (options.UsesTable() && hasModel) {
      CheckModel(options, codeType == lumr::CT_UNICODE, View(text), View(word), forward, position,
                 length);
    }
    lumr::CArray<lumr::CBuffer> words(1);
    words[0].Set(word.data(), wordSize);
    int anyLength = 0;
    Require(comparison.FindStringsOr(text.data(), textSize, words, codeType, forward, 1,
                                     &anyLength) == position);
    Require(anyLength == length);
    Require((comparison.FindStringsAnd(text.data(), textSize, words, codeType) == 0) == found);
  }
  int whole = 0;
  const int starts =
      comparison.StartsWith(text.data(), textSize, word.data(), wordSize, codeType, whole);
  const int ends = comparison.EndsWith(text.data(), textSize, word.data(), wordSize, codeType);
  Require(found || !options.UsesTable() || (starts == 0 && ends == 0));
  Require(whole == 0 || (starts != 0 && ends != 0) || !options.UsesTable());
  return 0;
}
