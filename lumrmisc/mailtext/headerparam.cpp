#include "lumrmisc/mailtext/headerparam.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/charset/mailcharset.h"
#include "lumrmisc/mailtext/headertext_internal.h"
#include "lumrmisc/mailtext/headerword.h"
#include "lumrmisc/mailtext/transfer.h"
#include "lumrmisc/platform/mbcs.h"

namespace lumr {
namespace {

// ---- Splitting ----

// "name*2*" is the piece 2 of name, in extended form; the number of "name*" and "name" is -1.
struct Piece {
  CStringA name;
  int number = -1;
  bool extended = false;
  std::string value;
};

// The code page whose two-byte characters may hold a quote or "\" as their second byte; null when
// raw text is in none such.
const MbcsPage* PageOfRawText(std::string_view raw, std::string_view rawCharset) {
  if (header::IsPlainIn(CT_ASCII, raw)) return nullptr;
  const CodeType codeType = ResolveMailCharset(header::RawLabel(rawCharset), raw).codeType;
  switch (codeType) {
    case CT_SJIS:
    case CT_GB2312:
    case CT_BIG5:
    case CT_KSC5601:
      return FindMbcsPage(CharSetCode2CodePage(codeType));
    default:
      return nullptr;
  }
}

class ParameterScanner {
 public:
  ParameterScanner(std::string_view raw, const MbcsPage* page) : raw_(raw), page_(page) {}

  std::string_view ReadMainValue() { return ReadUntil(";"); }

  // The next parameter with a value; false at the end.
  bool Next(std::string_view& name, std::string& value) {
    while (pos_ < raw_.size()) {
      ++pos_;  // the ";"
      name = ReadUntil("=;");
      if (pos_ == raw_.size() || raw_[pos_] == ';') continue;
      ++pos_;
      pos_ = std::min(raw_.find_first_not_of(" \t\r\n", pos_), raw_.size());
      value.clear();
      if (pos_ < raw_.size() && raw_[pos_] == '"') {
        ReadQuoted(value);
        ReadUntil(";");
      } else {
        value = WithoutComment(ReadUntil(";"));
      }
      return true;
    }
    return false;
  }

 private:
  // The end of the character at pos_: of a two-byte one, or of a run of them in ISO-2022-JP.
  std::size_t CharacterEnd() const {
    if (raw_.substr(pos_, 2) == "\x1b$") {
      return std::min(raw_.find_first_of("\x1b\r\n", pos_ + 2), raw_.size());
    }
    return pos_ + (page_ != nullptr ? page_->CharLength(raw_, pos_) : 1);
  }

  std::string_view ReadUntil(std::string_view ends) {
    const std::size_t begin = pos_;
    while (pos_ < raw_.size() && ends.find(raw_[pos_]) == ends.npos) pos_ = CharacterEnd();
    return header::TrimmedFold(raw_.substr(begin, pos_ - begin));
  }

  void ReadQuoted(std::string& value) {
    ++pos_;
    while (pos_ < raw_.size() && raw_[pos_] != '"') {
      if (raw_[pos_] == '\\' && ++pos_ == raw_.size()) return;
      const std::size_t end = CharacterEnd();
      value += raw_.substr(pos_, end - pos_);
      pos_ = end;
    }
    if (pos_ < raw_.size()) ++pos_;
  }

  static std::string_view WithoutComment(std::string_view value) {
    if (value.empty() || value.back() != ')') return value;
    const std::size_t comment = value.find(" (");
    return comment == value.npos ? value : header::TrimmedFold(value.substr(0, comment));
  }

  std::string_view raw_;
  const MbcsPage* page_;
  std::size_t pos_ = 0;
};

// The parts of a name; false when it has a number that no piece can have.
bool ReadName(std::string_view text, Piece& piece) {
  constexpr std::size_t kMaxDigits = 9;
  const std::size_t star = text.find('*');
  piece.name = text.substr(0, star);
  std::transform(piece.name.begin(), piece.name.end(), piece.name.begin(), AsciiLower);
  piece.number = -1;
  piece.extended = star != text.npos && text.back() == '*';
  if (star == text.npos || star + 1 == text.size()) return true;
  std::string_view digits = text.substr(star + 1);
  if (piece.extended) digits.remove_suffix(1);
  if (digits.empty() || digits.size() > kMaxDigits) return false;
  piece.number = 0;
  for (const char c : digits) {
    if (!IsAsciiDigit(c)) return false;
    piece.number = piece.number * 10 + (c - '0');
  }
  return true;
}

// ---- Joining and decoding ----

// All forms in which one parameter was given.
struct Forms {
  CStringA name;
  std::optional<std::string> plain;
  std::optional<std::string> extended;
  std::vector<Piece> pieces;
};

void AddForm(Piece&& piece, Forms& forms) {
  if (piece.number >= 0) {
    forms.pieces.push_back(std::move(piece));
  } else {
    std::optional<std::string>& form = piece.extended ? forms.extended : forms.plain;
    if (!form) form = std::move(piece.value);
  }
}

// The pieces 0, 1, 2 ... in their order up to the first missing one. There are never more than
// all pieces, so a table of that size sorts them; one that comes twice ends the taking.
std::vector<const Piece*> OrderedPieces(const std::vector<Piece>& pieces) {
  std::vector<const Piece*> table(pieces.size(), nullptr);
  for (const Piece& piece : pieces) {
    const auto number = static_cast<std::size_t>(piece.number);
    if (number >= table.size()) continue;
    if (table[number] != nullptr) break;
    table[number] = &piece;
  }
  table.erase(std::find(table.begin(), table.end(), nullptr), table.end());
  return table;
}

// Takes "charset'language'" off the start of a value; gives the charset. One apostrophe is
// taken for both.
std::string_view TakeCharset(std::string_view& value) {
  const std::size_t first = value.find('\'');
  if (first == value.npos) return {};
  const std::string_view charset = value.substr(0, first);
  const std::size_t second = value.find('\'', first + 1);
  value.remove_prefix((second == value.npos ? first : second) + 1);
  return charset;
}

class FormsReader {
 public:
  explicit FormsReader(std::string_view rawCharset) : rawCharset_(rawCharset) {}

  // The value that the forms give; false when they give none.
  bool Read(const Forms& forms, CStringW& value) {
    bool found = false;
    if (forms.extended && TakeIfBetter(ReadExtended(*forms.extended), found, value)) return true;
    const std::vector<const Piece*> pieces = OrderedPieces(forms.pieces);
    if (!pieces.empty() && TakeIfBetter(ReadPieces(pieces), found, value)) return true;
    if (forms.plain && TakeIfBetter(ReadText(*forms.plain), found, value)) return true;
    return found;
  }

 private:
  struct Reading {
    CStringW text;
    bool exact = false;
  };

  // Whether the search is over.
  static bool TakeIfBetter(Reading reading, bool& found, CStringW& value) {
    if (!found || reading.exact) value = std::move(reading.text);
    found = true;
    return reading.exact;
  }

  Reading ReadText(std::string_view text) const {
    return {DecodeHeaderValue(text, rawCharset_), true};
  }

  Reading ReadExtended(std::string_view value) {
    const std::string_view charset = TakeCharset(value);
    return ReadBytes(charset, DecodeHex(value));
  }

  Reading ReadPieces(const std::vector<const Piece*>& pieces) {
    std::string_view charset;
    std::string joined;
    bool anyExtended = false;
    for (const Piece* piece : pieces) {
      std::string_view value = piece->value;
      if (piece->extended && joined.empty() && piece == pieces.front())
        charset = TakeCharset(value);
      joined += piece->extended ? DecodeHex(value) : std::string(value);
      anyExtended = anyExtended || piece->extended;
    }
    return anyExtended ? ReadBytes(charset, joined) : ReadText(joined);
  }

  Reading ReadBytes(std::string_view charset, std::string_view bytes) {
    const std::string_view label = charset.empty() ? header::RawLabel(rawCharset_) : charset;
    Reading reading;
    const header::ReadingResult result =
        header::ReadLabelledBytes(label, CodeTypeOfMailLabel(label), bytes, units_);
    header::AppendCleanUnits(units_.Bytes(), reading.text);
    reading.exact = result.errors == 0 && (result.asLabelled || charset.empty());
    return reading;
  }

  std::string_view rawCharset_;
  CBuffer units_;
};

}  // namespace

CStringA DecodeHeaderParameters(std::string_view raw, std::vector<HeaderParameter>& parameters,
                                std::string_view rawCharset) {
  parameters.clear();
  ParameterScanner scanner(raw, PageOfRawText(raw, rawCharset));
  const CStringA mainValue(scanner.ReadMainValue());
  std::vector<Forms> forms;
  std::map<CStringA, std::size_t> indexOfName;
  std::string_view name;
  Piece piece;
  while (scanner.Next(name, piece.value)) {
    if (!ReadName(name, piece)) continue;
    const auto [place, isNew] = indexOfName.try_emplace(piece.name, forms.size());
    if (isNew) forms.emplace_back().name = piece.name;
    AddForm(std::move(piece), forms[place->second]);
  }
  FormsReader reader(rawCharset);
  for (const Forms& form : forms) {
    HeaderParameter parameter{form.name, {}};
    if (reader.Read(form, parameter.value)) parameters.push_back(std::move(parameter));
  }
  return mainValue;
}

int DecodeHeaderParameter(std::string_view raw, std::string_view name, CStringW& value,
                          std::string_view rawCharset) {
  value.clear();
  ParameterScanner scanner(raw, PageOfRawText(raw, rawCharset));
  scanner.ReadMainValue();
  Piece sought;
  if (!ReadName(name, sought)) return 0;
  Forms forms;
  std::string_view pieceName;
  Piece piece;
  while (scanner.Next(pieceName, piece.value)) {
    if (ReadName(pieceName, piece) && piece.name == sought.name) AddForm(std::move(piece), forms);
  }
  return FormsReader(rawCharset).Read(forms, value) ? 1 : 0;
}

}  // namespace lumr
