#include "lumrmisc/mailtext/headerencode.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <vector>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/mailtext/base64_internal.h"
#include "lumrmisc/mailtext/headercoder_internal.h"
#include "lumrmisc/mailtext/headertext_internal.h"
#include "lumrmisc/mailtext/transfer_internal.h"

namespace lumr {
namespace {

using header::CodedCharacter;
using header::CodeSet;
using Characters = std::span<const CodedCharacter>;

constexpr std::size_t kMaxLine = 76;
constexpr std::size_t kMaxWord = 75;  // RFC 2047, 2
constexpr std::string_view kFold = "\r\n ";
constexpr auto kBase64Pairs = transfer::MakePairs(transfer::kBase64Alphabet);

constexpr std::array<bool, 256> ByteSet(std::string_view more) {
  std::array<bool, 256> set{};
  for (unsigned c = 0; c < 0x80; ++c) {
    const char byte = static_cast<char>(c);
    set[c] = IsAsciiLetter(byte) || IsAsciiDigit(byte) || more.find(byte) != more.npos;
  }
  return set;
}
// What a word of kind Q holds as it is: the characters that RFC 2047, 5 allows in names. They are
// good everywhere.
constexpr auto kPlainInWord = ByteSet("!*+-/");
constexpr auto kPlainInParameter = ByteSet("!#$&+-.^_`|~");  // RFC 2231: attribute-char
constexpr auto kToken = ByteSet("!#$%&*+-.^_`|~");           // RFC 2045
constexpr auto kAtom = ByteSet("!#$%&'*+-/=?^_`{|}~");       // RFC 5322

// ---- The costs of characters ----

// What characters take in one of the encodings, added up one by one.
class Cost {
 public:
  enum class Form { kBase64, kQuoted, kPercent };

  explicit Cost(Form form) : form_(form) {}

  void Add(const CodedCharacter& coded) {
    if (coded.set != set_) AddBytes(header::EscapeTo(coded.set));
    set_ = coded.set;
    AddBytes({reinterpret_cast<const char*>(coded.bytes), coded.size});
  }

  // With the escape sequence that ends a text in ASCII.
  std::size_t Total() const {
    Cost closed = *this;
    if (set_ != CodeSet::kAscii) closed.AddBytes(header::EscapeTo(CodeSet::kAscii));
    return form_ == Form::kBase64 ? (closed.size_ + 2) / 3 * 4 : closed.size_;
  }

  // Whether Base64 text of these characters ends without padding.
  bool IsUnpadded() const {
    Cost closed = *this;
    if (set_ != CodeSet::kAscii) closed.AddBytes(header::EscapeTo(CodeSet::kAscii));
    return form_ != Form::kBase64 || closed.size_ % 3 == 0;
  }

 private:
  void AddBytes(std::string_view bytes) {
    if (form_ == Form::kBase64) {
      size_ += bytes.size();
      return;
    }
    const auto& plain = form_ == Form::kQuoted ? kPlainInWord : kPlainInParameter;
    for (const char byte : bytes) {
      const bool isOne =
          plain[static_cast<unsigned char>(byte)] || (byte == ' ' && form_ == Form::kQuoted);
      size_ += isOne ? 1 : 3;
    }
  }

  Form form_;
  CodeSet set_ = CodeSet::kAscii;
  std::size_t size_ = 0;  // bytes in Base64, else characters
};

std::size_t CostOf(Cost::Form form, Characters characters) {
  Cost cost(form);
  for (const CodedCharacter& coded : characters) cost.Add(coded);
  return cost.Total();
}

// The number of characters from the first one on that fit in room: up to a border where no joined
// character follows, or, where a base has more of them than fit, up to any (0: not even one). Of
// the last few borders one without padding is taken: GMime and others put the Base64 text of
// adjacent words together and lose what stands behind padding.
std::size_t CountFitting(Cost::Form form, Characters characters, std::size_t room, bool mayPart) {
  Cost cost(form);
  std::size_t whole = 0;
  std::size_t unpadded = 0;
  std::size_t i = 0;
  for (; i < characters.size(); ++i) {
    if (i > 0 && !characters[i].isJoined) {
      whole = i;
      if (cost.IsUnpadded()) unpadded = i;
    }
    cost.Add(characters[i]);
    if (cost.Total() > room) break;
  }
  if (i == characters.size()) return i;
  if (whole == 0 && mayPart) return i;
  return unpadded * 2 >= whole ? unpadded : whole;
}

// ---- Writing ----

template <char prefix>
void AppendEscaped(std::string_view bytes, const std::array<bool, 256>& plain, CStringA& out) {
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    if (plain[value]) {
      out += byte;
    } else if (prefix == '=' && byte == ' ') {
      out += '_';
    } else {
      out += {prefix, transfer::kHexDigits[value >> 4], transfer::kHexDigits[value & 15]};
    }
  }
}

void AppendBase64(std::string_view bytes, CStringA& out) {
  const std::size_t groups = bytes.size() / 3;
  const std::size_t size = out.size();
  out.resize(size + groups * 4);
  transfer::EncodeGroups(kBase64Pairs, bytes.data(), groups, out.data() + size);
  bytes.remove_prefix(groups * 3);
  if (bytes.empty()) return;
  char last[3] = {};
  bytes.copy(last, bytes.size());
  char text[4];
  transfer::EncodeGroups(kBase64Pairs, last, 1, text);
  out.append(text, bytes.size() + 1).append(3 - bytes.size(), '=');
}

// A field under construction and the column of its last line.
class FieldWriter {
 public:
  explicit FieldWriter(CStringA& field)
      : field_(field), column_(field.size() - (field.rfind('\n') + 1)) {}

  void Fold() {
    field_ += kFold;
    column_ = 1;
  }

  // A piece that is not cut, behind a space or a fold unless it is the first one. On the same line
  // so many characters must fit behind it.
  void Token(std::string_view token, bool isFirst, std::size_t behind = 0) {
    const std::size_t size = token.size() + behind + (isFirst ? 0 : 1);
    if (column_ + size > kMaxLine && column_ > 1) {
      Fold();
    } else if (!isFirst) {
      field_ += ' ';
      ++column_;
    }
    field_ += token;
    column_ += token.size();
  }

  // Behind what stands, whose writer has left room for it.
  void Semicolon() {
    field_ += ';';
    ++column_;
  }

  // What is left on the line behind a space, or behind none.
  std::size_t Room(bool isFirst) const {
    const std::size_t used = column_ + (isFirst ? 0 : 1);
    return used < kMaxLine ? kMaxLine - used : 0;
  }
  bool IsAtLineStart() const { return column_ <= 1; }

 private:
  CStringA& field_;
  std::size_t column_;
};

bool IsAtBegin(std::string_view field) {
  return field.empty() || field.back() == ' ';
}

// ---- Header text ----

class TextEncoder {
 public:
  TextEncoder(const HeaderEncoding& encoding, CStringA& field)
      : encoding_(encoding),
        codeType_(header::WordCodeType(encoding.codeType)),
        label_(CharSetCode2Name(codeType_)),
        writer_(field),
        isFirst_(IsAtBegin(field)) {}

  int Append(std::u16string_view text) {
    for (std::size_t pos = 0; pos < text.size();) {
      const std::size_t end = TokenEnd(text, pos);
      if (IsPlain(text.substr(pos, end - pos))) {
        plain_.assign(text.begin() + static_cast<std::ptrdiff_t>(pos),
                      text.begin() + static_cast<std::ptrdiff_t>(end));
        writer_.Token(plain_, isFirst_);
        isFirst_ = false;
        pos = std::min(end + 1, text.size());
      } else {
        pos = AppendRun(text, pos, end);
      }
    }
    return isExact_ ? 1 : 0;
  }

 private:
  // Tokens end at single spaces: folding keeps those only, so that other spaces belong to one.
  static std::size_t TokenEnd(std::u16string_view text, std::size_t pos) {
    for (std::size_t i = pos + 1; i + 1 < text.size(); ++i) {
      if (text[i] == u' ' && text[i - 1] != u' ' && text[i + 1] != u' ') return i;
    }
    return text.size();
  }

  // Whether a token may stand as it is. What begins like an encoded word would be read as one.
  bool IsPlain(std::u16string_view token) const {
    if (token.size() > kMaxWord || token.front() == u' ' || token.back() == u' ') return false;
    if (token.find(u"=?") != token.npos) return false;
    return std::all_of(token.begin(), token.end(), [this](char16_t unit) {
      return encoding_.isName ? unit < 0x80 && kAtom[unit] : unit >= 0x20 && unit < 0x7F;
    });
  }

  // Tokens from pos to end and those behind them, as far as they are not plain, in encoded words;
  // gives where the next one begins. White space between two words is not read, so that
  // the spaces go with the words.
  std::size_t AppendRun(std::u16string_view text, std::size_t pos, std::size_t end) {
    while (end < text.size()) {
      const std::size_t next = TokenEnd(text, end + 1);
      if (IsPlain(text.substr(end + 1, next - end - 1))) break;
      end = next;
    }
    characters_.clear();
    header::CodeCharacters(text.substr(pos, end - pos), codeType_, characters_);
    for (const CodedCharacter& coded : characters_) isExact_ = isExact_ && coded.isExact;
    AppendWords(characters_);
    return std::min(end + 1, text.size());
  }

  bool IsBase64(Characters characters) const {
    if (encoding_.kind != HeaderWordKind::kSmaller) {
      return encoding_.kind == HeaderWordKind::kBase64;
    }
    return codeType_ == CT_JIS ||
           CostOf(Cost::Form::kBase64, characters) < CostOf(Cost::Form::kQuoted, characters);
  }

  void AppendWords(Characters characters) {
    const bool isBase64 = IsBase64(characters);
    const Cost::Form form = isBase64 ? Cost::Form::kBase64 : Cost::Form::kQuoted;
    const std::size_t signs = label_.size() + 7;  // "=?", "?B?", "?="
    while (!characters.empty()) {
      const std::size_t line = std::min(writer_.Room(isFirst_), kMaxWord);
      const std::size_t room = line > signs ? line - signs : 0;
      const bool atStart = writer_.IsAtLineStart();
      std::size_t count = CountFitting(form, characters, room, atStart);
      // A few characters alone at the end of a line are not worth a word.
      constexpr std::size_t kFew = 3;
      if (!atStart && count < std::min(kFew, characters.size())) {
        writer_.Fold();
        isFirst_ = true;
        continue;
      }
      count = std::max<std::size_t>(count, 1);
      WriteWord(characters.first(count), isBase64);
      characters = characters.subspan(count);
      if (characters.empty()) return;
      writer_.Fold();
      isFirst_ = true;
    }
  }

  void WriteWord(Characters characters, bool isBase64) {
    bytes_.clear();
    header::AppendCodedBytes(characters, bytes_);
    word_.assign("=?").append(label_).append(isBase64 ? "?B?" : "?Q?");
    if (isBase64) {
      AppendBase64(bytes_, word_);
    } else {
      AppendEscaped<'='>(bytes_, kPlainInWord, word_);
    }
    word_ += "?=";
    writer_.Token(word_, isFirst_);
    isFirst_ = false;
  }

  HeaderEncoding encoding_;
  CodeType codeType_;
  std::string_view label_;
  FieldWriter writer_;
  bool isFirst_;  // nothing stands before on the line that a space has to part
  bool isExact_ = true;
  std::vector<CodedCharacter> characters_;
  std::string plain_, bytes_, word_;  // scratch
};

// ---- Parameters ----

bool IsPlainValue(std::u16string_view value) {
  if (value.empty()) return true;
  const bool isPrintable = std::all_of(value.begin(), value.end(),
                                       [](char16_t unit) { return unit >= 0x20 && unit < 0x7F; });
  return isPrintable && value.front() != u' ' && value.back() != u' ' &&
         value.find(u"=?") == value.npos;
}

CStringA Quoted(std::u16string_view value) {
  CStringA quoted = "\"";
  for (const char16_t unit : value) {
    if (unit == u'"' || unit == u'\\') quoted += '\\';
    quoted += static_cast<char>(unit);
  }
  return quoted += '"';
}

class ParameterWriter {
 public:
  ParameterWriter(std::string_view name, std::string_view label, CStringA& field)
      : name_(name), label_(label), writer_(field) {}

  void Write(const CStringA& text) {
    writer_.Semicolon();
    writer_.Token(text, false, 1);
  }

  void WriteExtended(Characters characters) {
    constexpr std::size_t kRoom = kMaxLine - 2;  // the space before and a ";" behind
    const CStringA whole = CStringA(name_) + "*=" + CStringA(label_) + "''";
    if (whole.size() + CostOf(Cost::Form::kPercent, characters) <= kRoom) {
      return Write(whole + Text(characters));
    }
    for (int number = 0; !characters.empty(); ++number) {
      CStringA piece = CStringA(name_) + '*' + std::to_string(number) + "*=";
      if (number == 0) piece.append(label_).append("''");
      const std::size_t room = kRoom > piece.size() ? kRoom - piece.size() : 0;
      const std::size_t count =
          std::max<std::size_t>(CountFitting(Cost::Form::kPercent, characters, room, true), 1);
      Write(piece + Text(characters.first(count)));
      characters = characters.subspan(count);
    }
  }

 private:
  static CStringA Text(Characters characters) {
    std::string bytes;
    header::AppendCodedBytes(characters, bytes);
    CStringA text;
    AppendEscaped<'%'>(bytes, kPlainInParameter, text);
    return text;
  }

  std::string_view name_;
  std::string_view label_;
  FieldWriter writer_;
};

// Text without what no header may hold.
CStringW Cleaned(std::u16string_view text) {
  CStringW cleaned;
  cleaned.reserve(text.size());
  header::AppendCleanUnits(BytesOf(text), cleaned);
  return cleaned;
}

}  // namespace

int AppendHeaderText(std::u16string_view text, const HeaderEncoding& encoding, CStringA& field) {
  return TextEncoder(encoding, field).Append(Cleaned(text));
}

int AppendHeaderParameter(std::string_view name, std::u16string_view value, CodeType codeType,
                          CStringA& field) {
  constexpr std::size_t kMaxName = 40;
  const bool isToken = std::all_of(name.begin(), name.end(), [](char c) {
    return kToken[static_cast<unsigned char>(c)] && c != '*' && c != '%';
  });
  if (name.empty() || name.size() > kMaxName || !isToken) return 0;
  const CStringW cleaned = Cleaned(value);
  codeType = header::WordCodeType(codeType);
  ParameterWriter writer(name, CharSetCode2Name(codeType), field);
  if (IsPlainValue(cleaned)) {
    const CStringA plain = CStringA(name) + '=' + Quoted(cleaned);
    if (plain.size() < kMaxWord) {
      writer.Write(plain);
      return 1;
    }
  }
  std::vector<CodedCharacter> characters;
  header::CodeCharacters(cleaned, codeType, characters);
  writer.WriteExtended(characters);
  const auto isExact = [](const CodedCharacter& coded) { return coded.isExact; };
  return std::all_of(characters.begin(), characters.end(), isExact) ? 1 : 0;
}

void AppendHeaderTokens(std::string_view value, CStringA& field) {
  FieldWriter writer(field);
  bool isFirst = IsAtBegin(field);
  CStringA token;
  const auto flush = [&] {
    if (token.empty()) return;
    writer.Token(token, isFirst);
    isFirst = false;
    token.clear();
  };
  bool isQuoted = false, isEscaped = false;
  for (const char c : value) {
    if (IsAsciiSpace(c)) {
      if (isQuoted && token.back() != ' ') token += ' ';
      if (!isQuoted) flush();
    } else if (c > ' ' && c < '\x7F') {
      token += c;
      if (c == '"' && !isEscaped) isQuoted = !isQuoted;
    }
    isEscaped = isQuoted && c == '\\' && !isEscaped;
  }
  flush();
}

}  // namespace lumr
