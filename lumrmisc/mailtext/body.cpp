#include "lumrmisc/mailtext/body.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/mailtext/transfer.h"
#include "lumrmisc/mailtext/transfer_internal.h"

namespace lumr {
namespace {

// ---- Transfer encodings ----

struct EncoderRow {
  std::string_view label;
  void (*encode)(std::string_view data, int textMode, CBuffer& out);
};
constexpr EncoderRow kEncoders[] = {
    {"base64", [](std::string_view data, int, CBuffer& out) { EncodeBase64(data, 76, out); }},
    {"quoted-printable", [](std::string_view data, int textMode,
                            CBuffer& out) { EncodeQuotedPrintable(data, textMode, out); }},
    {"x-uuencode",
     [](std::string_view data, int, CBuffer& out) { EncodeUuencode({}, {}, data, out); }},
};

// ---- Quoting ----

// Units of text at any address. A trail byte is 40 hex or above in every code page, so none is
// ever a line break, and bytes need no look at two-byte characters.
template <typename Unit>
class UnitText {
 public:
  explicit UnitText(std::string_view bytes)
      : bytes_(bytes.data()), size_(bytes.size() / sizeof(Unit)) {}

  std::size_t Size() const { return size_; }
  std::size_t SizeInBytes() const { return size_ * sizeof(Unit); }
  const char* At(std::size_t pos) const { return bytes_ + pos * sizeof(Unit); }

  // The position behind the first line break from pos on; Size() + 1 when there is none.
  std::size_t BehindBreak(std::size_t pos) const {
    for (; pos < size_; ++pos) {
      if (IsUnit(pos, '\n')) return pos + 1;
      if (IsUnit(pos, '\r')) return pos + (pos + 1 < size_ && IsUnit(pos + 1, '\n') ? 2 : 1);
    }
    return size_ + 1;
  }

 private:
  bool IsUnit(std::size_t pos, char c) const {
    Unit unit;
    std::memcpy(&unit, At(pos), sizeof unit);
    return unit == static_cast<Unit>(c);
  }

  const char* bytes_;
  std::size_t size_;
};

template <typename Unit>
int CountBreaks(const UnitText<Unit>& text) {
  int count = 0;
  for (std::size_t pos = text.BehindBreak(0); pos <= text.Size(); pos = text.BehindBreak(pos)) {
    ++count;
  }
  return count;
}

// mark in bytes.
template <typename Unit>
int QuoteLines(std::string_view mark, std::string_view bytes, CBuffer& out) {
  const UnitText<Unit> text(bytes);
  out.Empty();
  if (text.Size() == 0) return 0;
  const int breaks = CountBreaks(text);
  const std::size_t size =
      text.SizeInBytes() + mark.size() * (static_cast<std::size_t>(breaks) + 1);
  if (size > std::numeric_limits<int>::max()) throw std::bad_alloc();
  char* end = out.GetBuffer(static_cast<int>(size));
  const auto write = [&end](const char* from, std::size_t count) {
    if (count > 0) std::memcpy(end, from, count);
    end += count;
  };
  for (std::size_t pos = 0; pos < text.Size();) {
    const std::size_t next = std::min(text.BehindBreak(pos), text.Size());
    write(mark.data(), mark.size());
    write(text.At(pos), (next - pos) * sizeof(Unit));
    pos = next;
  }
  out.ReleaseBuffer(static_cast<int>(end - out.GetBuffer()));
  return breaks;
}

}  // namespace

void EncodeBody(const char* transferEncoding, const unsigned char* data, int length, int textMode,
                CBuffer& out) {
  EncodeBody(CountedText(transferEncoding), transfer::DataView(data, length), textMode, out);
}

void EncodeBody(std::string_view transferEncoding, std::string_view data, int textMode,
                CBuffer& out) {
  for (const EncoderRow& row : kEncoders) {
    if (transfer::EqualNoCase(row.label, transferEncoding)) return row.encode(data, textMode, out);
  }
  out = data;
}

const char* GetDefaultSendEncoding(int isText, int plainAllowed, CodeType codeType) {
  if (isText == 0 || plainAllowed == 0) return "base64";
  const bool isSevenBit = codeType == CT_ASCII || codeType == CT_JIS || codeType == CT_UTF7;
  return isSevenBit ? "7bit" : "8bit";
}

int EncodeBodyForSend(int asciiAsJis, CodeType& codeType, CStringA& transferEncoding, CBuffer& body,
                      CConversionReport* report) {
  const CodeType edited = CodeTypeSave2Edit(codeType);
  codeType = CodeType2DefSend(codeType);
  const bool converts = !body.IsEmpty() && edited != codeType;
  if (converts) {
    CBuffer converted;
    ConvertToOtherCodeType2(edited, body.Bytes(), codeType, converted, 0, report);
    body.CopyFrom(converted);
  }
  if (asciiAsJis != 0 && codeType == CT_ASCII) codeType = CT_JIS;
  transferEncoding = GetDefaultSendEncoding(1, 1, codeType);
  return converts ? 1 : 0;
}

int InsertQuoteMark(CodeType codeType, const char* mark, const char* text, int length,
                    CBuffer& out) {
  const std::string_view bytes = transfer::DataView(text, length);
  if (IsCodeTypeUnicode(codeType)) return QuoteLines<char16_t>(CountedUnits(mark), bytes, out);
  return QuoteLines<char>(CountedText(mark), bytes, out);
}

int InsertQuoteMark(std::string_view mark, std::string_view text, CBuffer& out) {
  return QuoteLines<char>(mark, text, out);
}

int InsertQuoteMark(std::u16string_view mark, std::u16string_view text, CBuffer& out) {
  return QuoteLines<char16_t>(BytesOf(mark), BytesOf(text), out);
}

}  // namespace lumr
