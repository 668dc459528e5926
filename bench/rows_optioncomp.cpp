// Searching whatever the case, width and kind of kana.
#include "lumrmisc/charset/linescan.h"
#include "lumrmisc/search/optioncomp.h"
#include "ours.h"
#include "peers.h"

namespace lumr::bench {
namespace {

// "Cloud" in half-width katakana; the corpus has many words of katakana, and this one nowhere.
constexpr std::u16string_view kWord = u"ｸﾗｳﾄﾞ";
constexpr std::string_view kWordSjis = "\xB8\xD7\xB3\xC4\xDE";
constexpr std::string_view kWordSjisFull = "\x83\x4E\x83\x89\x83\x45\x83\x68";
constexpr std::u16string_view kWordFull = u"クラウド";

std::string_view BytesOf(std::u16string_view text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}

std::string EndsInSjisWord(std::string text) {
  return text.append(kWordSjisFull);
}

std::string EndsInWideWord(std::string text) {
  return text.append(BytesOf(kWordFull));
}

// Places are each contender's own: bytes, units, units of a folded text.
std::string Found(std::string_view position) {
  return position == "-1" ? "not found" : "found";
}

template <CodeType codeType>
std::string FindLoosely(std::string_view text) {
  const std::string_view word = codeType == CT_SJIS ? kWordSjis : BytesOf(kWord);
  int length = 0;
  return std::to_string(COptionComp2(1, 1, 1).FindString(text, word, codeType, 1, 1, &length));
}

template <CodeType codeType>
std::string FindExactly(std::string_view text) {
  const std::string_view word = codeType == CT_SJIS ? kWordSjisFull : BytesOf(kWordFull);
  return std::to_string(COptionComp2().FindString(text, word, codeType, 1, 1, nullptr));
}

template <CodeType codeType>
Contender Txtnnstr() {
  return {"txtnnstr", [](std::string_view) -> Operation {
            return [result = std::string()](std::string_view text) mutable -> std::string_view {
              const std::string_view word =
                  codeType == CT_SJIS ? kWordSjisFull : BytesOf(kWordFull);
              const char* const found =
                  txtnnstr(codeType, 1, text.data(), Length(text), word.data(), Length(word), 0);
              result = std::to_string(found == nullptr ? -1 : found - text.data());
              return result;
            };
          }};
}

std::vector<Contender> Peers(const std::string& charset) {
  return {Marked(15, IcuStringSearch(charset, kWord)), Marked(1.5, IcuFoldAndFind(charset, kWord))};
}

}  // namespace

std::vector<Row> OptionCompRows() {
  const std::vector<Input> sjis = {{Corpus::kJapanese, "CP932", 1}};
  const std::vector<Input> wide = {{Corpus::kJapanese, "UTF-16LE", 1}};
  const Contender ourSjis = OursPlain(&FindLoosely<CT_SJIS>);
  const Contender ourWide = OursPlain(&FindLoosely<CT_UNICODE>);
  return {
      {"FindString ignoring all, absent", sjis, ourSjis, Peers("CP932"), nullptr, &Found},
      {"FindString ignoring all, at the end", sjis, ourSjis, Peers("CP932"), &EndsInSjisWord,
       &Found},
      {"FindString ignoring all, absent", wide, ourWide, Peers("UTF-16LE"), nullptr, &Found},
      {"FindString ignoring all, at the end", wide, ourWide, Peers("UTF-16LE"), &EndsInWideWord,
       &Found},
      {"FindString as it is",
       sjis,
       OursPlain(&FindExactly<CT_SJIS>),
       {Marked(0.95, Txtnnstr<CT_SJIS>())},
       &EndsInSjisWord},
      {"FindString as it is",
       wide,
       OursPlain(&FindExactly<CT_UNICODE>),
       {Marked(0.95, Txtnnstr<CT_UNICODE>())},
       &EndsInWideWord},
  };
}

}  // namespace lumr::bench
