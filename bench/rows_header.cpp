// Header values: 100,000 subjects and the like, decoded to UTF-8 and encoded.
#include <algorithm>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/mailtext/headerencode.h"
#include "lumrmisc/mailtext/headerword.h"
#include "ours.h"
#include "peers.h"

namespace lumr::bench {
namespace {

CStringW WideOf(std::string_view utf8) {
  CBuffer wide;
  ConvertToOtherCodeType2(CT_UTF8, utf8, CT_UNICODE, wide);
  return CStringW(wide.Units());
}

// The lines of a text as subjects of at most 30 characters, each with a zero byte behind it.
std::string Subjects(std::string text) {
  constexpr std::size_t kMost = 30;
  std::string subjects;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    std::string_view line = std::string_view(text).substr(begin, end - begin);
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.remove_suffix(1);
    line.remove_prefix(std::min(line.find_first_not_of("> \t"), line.size()));
    std::size_t size = 0;
    for (std::size_t count = 0; size < line.size(); ++size) {
      count += (static_cast<unsigned char>(line[size]) & 0xC0) != 0x80;
      if (count > kMost) break;
    }
    line = line.substr(0, size);
    while (!line.empty() && line.back() == ' ') line.remove_suffix(1);
    if (!line.empty()) subjects.append(line).append(1, '\0');
    begin = end + 1;
  }
  return subjects;
}

// Whether a word with padding stands before another one: GMime loses what is behind it.
bool HasInnerPadding(std::string_view value) {
  const std::size_t padding = value.find("=?=");
  return padding != value.npos && value.find("=?", padding + 3) != value.npos;
}

// The same subjects as they stand in mail, as far as both sides can read them.
template <CodeType codeType, HeaderWordKind kind>
std::string EncodedSubjects(std::string text) {
  std::string out;
  ForEachValue(Subjects(std::move(text)), [&out](std::string_view subject) {
    CStringA value;
    AppendHeaderText(WideOf(subject), {codeType, kind}, value);
    if (!HasInnerPadding(value)) out.append(value).append(1, '\0');
  });
  return out;
}

// What values mean: encoders cut words in different places.
std::string Meaning(std::string_view values) {
  std::string out;
  ForEachValue(values, [&out](std::string_view value) {
    out.append(DecodeHeaderValueUtf8(value)).append(1, '\0');
  });
  return out;
}

// function(value, out) appends what it makes of a value.
template <typename Function>
Contender EachValue(Function function) {
  return {"LumrMisc", [function](std::string_view) -> Operation {
            return [function, out = std::string()](std::string_view values) mutable {
              out.clear();
              ForEachValue(values, [&](std::string_view value) {
                function(value, out);
                out += '\0';
              });
              return std::string_view(out);
            };
          }};
}

Contender Decoder() {
  return EachValue(
      [](std::string_view value, std::string& out) { out += DecodeHeaderValueUtf8(value); });
}

template <CodeType codeType>
Contender Encoder() {
  return EachValue(
      [wide = CBuffer(), value = CStringA()](std::string_view text, std::string& out) mutable {
        ConvertToOtherCodeType2(CT_UTF8, text, CT_UNICODE, wide);
        value.clear();
        AppendHeaderText(wide.Units(), {codeType}, value);
        out += value;
      });
}

template <CodeType codeType, HeaderWordKind kind>
Row DecodeRow(const char* task) {
  return {task,
          {{Corpus::kJapanese, "UTF-8", 3}},
          Decoder(),
          {GmimeHeaderDecode()},
          &EncodedSubjects<codeType, kind>};
}

template <CodeType codeType>
Row EncodeRow(const char* task) {
  return {task,
          {{Corpus::kJapanese, "UTF-8"}},
          Encoder<codeType>(),
          {GmimeHeaderEncode(CharSetCode2Name(codeType))},
          &Subjects,
          &Meaning};
}

}  // namespace

std::vector<Row> HeaderRows() {
  return {
      DecodeRow<CT_JIS, HeaderWordKind::kBase64>("Header decode, ISO-2022-JP B"),
      DecodeRow<CT_UTF8, HeaderWordKind::kBase64>("Header decode, UTF-8 B"),
      DecodeRow<CT_UTF8, HeaderWordKind::kQuoted>("Header decode, UTF-8 Q"),
      DecodeRow<CT_SJIS, HeaderWordKind::kBase64>("Header decode, Shift_JIS B"),
      EncodeRow<CT_JIS>("Header encode, ISO-2022-JP"),
      EncodeRow<CT_UTF8>("Header encode, UTF-8"),
  };
}

}  // namespace lumr::bench
