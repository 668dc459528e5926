#include "textprinter.h"

#include <algorithm>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/editor/quote.h"
#include "safetext.h"
#include "textdecode.h"

namespace lumr::tool {

namespace {

constexpr std::size_t kPieceSize = std::size_t{1} << 16;  // of a text, in bytes
constexpr std::size_t kLongestTarget = 2000;              // terminals drop longer ones

// The level of a colour's part in the cube of 256 colours.
int CubeLevel(unsigned part) {
  return part < 48 ? 0 : part < 115 ? 1 : static_cast<int>((part - 35) / 40);
}

std::string ColorSequence(COLORREF color, Colors shades) {
  const unsigned red = color & 0xFF;
  const unsigned green = color >> 8 & 0xFF;
  const unsigned blue = color >> 16 & 0xFF;
  if (shades == Colors::kTrue) {
    return "\x1B[38;2;" + std::to_string(red) + ';' + std::to_string(green) + ';' +
           std::to_string(blue) + 'm';
  }
  const int index = 16 + 36 * CubeLevel(red) + 6 * CubeLevel(green) + CubeLevel(blue);
  return "\x1B[38;5;" + std::to_string(index) + 'm';
}

// The schemes that a click may follow. What a mail says about files and machines of the reader
// (paths, "file:") is shown as a link and not made one.
bool IsNetScheme(std::string_view target) {
  for (const std::string_view scheme : {"http:", "https:", "ftp:", "mailto:", "gopher:"}) {
    if (target.size() < scheme.size()) continue;
    if (std::equal(scheme.begin(), scheme.end(), target.begin(),
                   [](char a, char b) { return a == AsciiLower(b); })) {
      return true;
    }
  }
  return false;
}

// The target of a link in printable ASCII, since a terminal takes nothing else; empty when it is
// not to be clicked.
std::string TargetOf(const LinkRange& link, std::u16string_view text) {
  const std::string utf8 = Utf8(text);
  std::string target = link.kind == kLinkMail ? "mailto:" : "";
  for (const char c : utf8) {
    if (c > 0x20 && c < 0x7F) {
      target += c;
      continue;
    }
    constexpr char kDigits[] = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    target += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
  }
  return IsNetScheme(target) && target.size() <= kLongestTarget ? target : std::string();
}

CStringW UnitsOf(std::string_view bytes) {
  CStringW units(bytes.size() / 2, u'\0');
  bytes.copy(reinterpret_cast<char*>(units.data()), 2 * units.size());
  return units;
}

}  // namespace

TextPrinter::TextPrinter(const TextLook& look, Session& session)
    : look_(look), session_(session), finder_(CT_UNICODE) {
  metrics_.SetLineMetrics(look.metrics, CT_UNICODE, look.columns > 0 ? kTurnAtColumns : kTurnNever,
                          look.columns, 1);
  metrics_.SetKeepPairs(true);  // each line becomes UTF-8 of its own
}

void TextPrinter::Print(std::u16string_view text) {
  std::string safe;
  while (!text.empty()) {
    std::size_t size = text.find(u'\n', std::min(kPieceSize, text.size() - 1));
    size = size == std::u16string_view::npos ? text.size() : size + 1;
    safe.clear();
    AppendSafe(Utf8(text.substr(0, size)), SafeForm::kLines, safe);
    text.remove_prefix(size);
    if (text.empty() && !safe.ends_with('\n')) safe += '\n';
    PrintSafe(safe);
  }
}

void TextPrinter::PrintSafe(std::string_view utf8) {
  if (look_.columns == 0 && !look_.styled) return session_.Write(utf8);
  CBuffer wide;
  ConvertToOtherCodeType2(CT_UTF8, utf8, CT_UNICODE, wide);
  std::u16string_view rest = wide.Units();
  while (!rest.empty()) {
    const std::size_t feed = rest.find(u'\n');
    AppendLine(BytesOf(rest.substr(0, feed)));
    if (feed == std::u16string_view::npos) break;
    rest.remove_prefix(feed + 1);
    out_ += u'\n';
    if (out_.size() > kPieceSize) Flush();
  }
  Flush();
}

void TextPrinter::AppendLine(std::string_view line) {
  const auto prefix = static_cast<std::size_t>(QuotePrefixLength(metrics_, line));
  finder_.FindAll(line, links_);
  LayoutLine(metrics_, {line, links_, prefix > 0 ? 0 : -1}, 0, lines_);
  quoteColor_.clear();
  if (prefix > 0 && look_.shades != Colors::kNone) {
    const int depth =
        std::min(QuoteDepth(metrics_, line.substr(0, prefix)), CEditorColor::kQuoteDepths);
    quoteColor_ = ColorSequence(look_.colors.GetQuotedTextColor(depth - 1), look_.shades);
  }
  nextLink_ = 0;
  const int length = static_cast<int>(line.size());
  for (int i = 0; i < lines_.Count(); ++i) {
    if (i > 0) out_ += u'\n';
    AppendPiece(line, static_cast<std::size_t>(lines_[i].start),
                static_cast<std::size_t>(lines_.EndOf(i, length)));
  }
}

// One physical line. Colours and links are switched off at its end and on again at the next one's
// start, so that a pager may show any part of the output.
void TextPrinter::AppendPiece(std::string_view line, std::size_t begin, std::size_t end) {
  if (begin == end) return;
  if (!look_.styled) return AppendUnits(line.substr(begin, end - begin));
  AppendAscii(quoteColor_);
  while (begin < end) {
    while (nextLink_ < links_.size() &&
           static_cast<std::size_t>(links_[nextLink_].End()) <= begin) {
      ++nextLink_;
    }
    const bool found = nextLink_ < links_.size();
    const std::size_t linkStart =
        found ? static_cast<std::size_t>(links_[nextLink_].start) : line.size();
    if (linkStart > begin) {
      const std::size_t stop = std::min(linkStart, end);
      AppendUnits(line.substr(begin, stop - begin));
      begin = stop;
      continue;
    }
    const std::size_t stop = std::min(static_cast<std::size_t>(links_[nextLink_].End()), end);
    AppendLink(line, links_[nextLink_], begin, stop);
    begin = stop;
  }
  if (!quoteColor_.empty()) AppendAscii("\x1B[39m");
}

// The part of a link that stands on a physical line. The parts of one have one id, so that a
// terminal knows that they belong together.
void TextPrinter::AppendLink(std::string_view line, const LinkRange& link, std::size_t begin,
                             std::size_t end) {
  const auto start = static_cast<std::size_t>(link.start);
  if (begin == start) {
    const auto length = static_cast<std::size_t>(link.length);
    target_ = TargetOf(link, UnitsOf(line.substr(start, length)));
    ++linkNumber_;
  }
  if (!target_.empty()) {
    AppendAscii("\x1B]8;id=lumr" + std::to_string(linkNumber_) + ';' + target_ + "\x1B\\");
  }
  AppendAscii("\x1B[4m");
  AppendUnits(line.substr(begin, end - begin));
  AppendAscii("\x1B[24m");
  if (!target_.empty()) AppendAscii("\x1B]8;;\x1B\\");
}

void TextPrinter::AppendAscii(std::string_view ascii) {
  out_.append(ascii.begin(), ascii.end());
}

void TextPrinter::AppendUnits(std::string_view bytes) {
  const std::size_t size = out_.size();
  out_.resize(size + bytes.size() / 2);
  bytes.copy(reinterpret_cast<char*>(out_.data() + size), bytes.size() / 2 * 2);
}

void TextPrinter::Flush() {
  session_.Write(Utf8(out_));
  out_.clear();
}

}  // namespace lumr::tool
