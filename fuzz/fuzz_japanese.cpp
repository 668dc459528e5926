// Any bytes as Japanese text: the pieces give the same as the whole, nothing is written beyond
// what is promised, what is reported lies in the text, and what has no loss comes back. Then the
// same bytes as lines, as text to search in, and as katakana.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "lumrmisc/charset/japanese.h"
#include "lumrmisc/charset/japanese_internal.h"
#include "lumrmisc/charset/linescan.h"

namespace {

using lumr::JapaneseConversion;

constexpr JapaneseConversion kConversions[] = {
    JapaneseConversion::kSJisToEuc, JapaneseConversion::kEucToSJis, JapaneseConversion::kSJisToJis,
    JapaneseConversion::kJisToSJis};
constexpr JapaneseConversion kBack[] = {
    JapaneseConversion::kEucToSJis, JapaneseConversion::kSJisToEuc, JapaneseConversion::kJisToSJis,
    JapaneseConversion::kSJisToJis};
constexpr decltype(&lumr::ConvertSJisToEuc) kWhole[] = {
    lumr::ConvertSJisToEuc, lumr::ConvertEucToSJis, lumr::ConvertSJisToJis, lumr::ConvertJisToSJis};

void Require(bool holds) {
  if (!holds) __builtin_trap();
}

struct Converted {
  std::string bytes;
  std::vector<lumr::ConversionLoss> losses;
  bool operator==(const Converted&) const = default;
};

Converted InPieces(JapaneseConversion conversion, std::string_view text, std::size_t pieceSize) {
  Converted result;
  lumr::CConversionReport report(text.size());
  lumr::JapaneseConverter converter(conversion);
  bool last = text.empty();
  for (std::size_t begin = 0; !last; begin += pieceSize) {
    const std::string_view piece = text.substr(begin, pieceSize);
    last = piece.size() == text.size() - begin;
    const std::size_t bound = converter.MaxOutput(piece.size());
    const auto in = std::make_unique<char[]>(piece.size());
    std::copy(piece.begin(), piece.end(), in.get());
    const auto out = std::make_unique<char[]>(bound);
    char* const end = converter.Convert({in.get(), piece.size()}, last, out.get(), &report);
    Require(static_cast<std::size_t>(end - out.get()) <= bound);
    result.bytes.append(out.get(), end);
  }
  Require(converter.Pending() == 0 && converter.Lost() == report.Fits() + report.Replaced());
  result.losses = report.First();
  long long offset = 0;
  for (const lumr::ConversionLoss& loss : result.losses) {
    Require(loss.inputOffset >= offset && loss.inputLength > 0);
    offset = loss.inputOffset + loss.inputLength;
    Require(loss.outputOffset <= static_cast<long long>(result.bytes.size()));
  }
  Require(offset <= static_cast<long long>(text.size()));
  return result;
}

void CheckConversion(int index, std::string_view text, std::size_t pieceSize) {
  const JapaneseConversion conversion = kConversions[index];
  const Converted there = InPieces(conversion, text, pieceSize);
  lumr::CConversionReport report(text.size());
  lumr::CBuffer whole;
  kWhole[index](text.data(), static_cast<int>(text.size()), whole, &report);
  Require((there == Converted{std::string(whole.Bytes()), report.First()}));
  if (!there.losses.empty()) return;
  const Converted back = InPieces(kBack[index], there.bytes, pieceSize);
  Require(back.losses.empty());
  // ISO-2022-JP says one text in many ways: it must be the same text.
  Require(conversion == JapaneseConversion::kJisToSJis
              ? InPieces(conversion, back.bytes, pieceSize) == there
              : back.bytes == text);
}

void CheckLines(std::string_view text, lumr::CodeType codeType) {
  const char* pos = text.data();
  const char* const end = pos + text.size();
  const char* lineEnd = nullptr;
  int breakLen = 0;
  while (lumr::GetNextLine(pos, static_cast<int>(end - pos), codeType, lineEnd, breakLen)) {
    Require(lineEnd >= pos && lineEnd + breakLen <= end && (breakLen > 0 || lineEnd == end));
    pos = lineEnd + breakLen;
  }
  Require(pos == end);
}

void CheckSearch(std::string_view text, std::size_t cut, lumr::CodeType codeType) {
  const std::string_view word = text.substr(0, cut);
  const std::string_view rest = text.substr(word.size());
  const auto find = [&](int forward) {
    return lumr::txtnnstr(codeType, forward, rest.data(), static_cast<int>(rest.size()),
                          word.data(), static_cast<int>(word.size()), 0);
  };
  const char* const first = find(1);
  const char* const last = find(0);
  Require((first == nullptr) == (last == nullptr) && first <= last);
  if (first == nullptr) return;
  const std::size_t length = lumr::IsCodeTypeUnicode(codeType) ? word.size() / 2 * 2 : word.size();
  Require(first >= rest.data() && last + length <= rest.data() + rest.size());
  Require(std::memcmp(first, word.data(), length) == 0);
  Require(std::memcmp(last, word.data(), length) == 0);
}

void CheckCharacters(std::string_view text) {
  const int length = static_cast<int>(text.size());
  lumr::CStringA full(text);
  const int found = lumr::FindHankakuKatakana(text.data(), length);
  Require(lumr::KatakanaHanToZen(full) == (found >= 0));
  Require(full.size() <= 2 * text.size());
  Require(lumr::FindHankakuKatakana(full.data(), static_cast<int>(full.size())) < 0);
  if (found >= 0) Require(lumr::GetHankakuKatakanaLen(text.data() + found, length - found) > 0);
  const int depends = lumr::FindMachineDependChar(text.data(), length);
  if (depends < 0) return;
  const int run = lumr::GetMachineDependCharLen(text.data() + depends, length - depends);
  Require(run >= 2 && depends + run <= length);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  constexpr lumr::CodeType kCodeTypes[] = {lumr::CT_SJIS, lumr::CT_GB2312, lumr::CT_WIN1252,
                                           lumr::CT_UNICODE};
  const std::size_t pieceSize = 1 + data[1] % 40u;
  const auto copy = std::make_unique<char[]>(size - 2);
  std::memcpy(copy.get(), data + 2, size - 2);
  const std::string_view text(copy.get(), size - 2);
  CheckConversion(data[0] % 4, text, pieceSize);
  CheckLines(text, kCodeTypes[data[0] / 4 % 4]);
  CheckSearch(text, pieceSize, kCodeTypes[data[0] / 4 % 4]);
  CheckCharacters(text);
  return 0;
}
