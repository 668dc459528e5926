#include "quoteturn.h"

#include <algorithm>
#include <vector>

#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/editor/layout.h"
#include "lumrmisc/mailtext/links.h"

namespace lumr::tool {

namespace {

constexpr int kLeastColumns = 20;  // for the text, however deeply it is quoted

// The quote marks that a line begins with, as mailers write them: ">", "> > ", ">>".
std::size_t QuoteLength(std::u16string_view line) {
  std::size_t length = 0;
  for (std::size_t i = 0; i < line.size() && (line[i] == u'>' || line[i] == u' '); ++i) {
    if (line[i] == u'>') length = i + 1;
  }
  return length > 0 && length < line.size() && line[length] == u' ' ? length + 1 : length;
}

class Turner {
 public:
  explicit Turner(int columns) : columns_(columns), links_(CT_UNICODE) {
    settings_.NoTurnURL = 1;
    settings_.ChangeCodePage(CT_UNICODE);
    metrics_.SetKeepPairs(true);
  }

  void AppendLine(std::u16string_view line, CStringW& out) {
    const std::size_t quote = QuoteLength(line);
    const std::u16string_view mark = line.substr(0, quote);
    const std::string_view rest = BytesOf(line.substr(quote));
    const int limit = std::max(columns_ - static_cast<int>(quote), kLeastColumns);
    metrics_.SetLineMetrics(settings_, CT_UNICODE, kTurnAtColumns, limit, 1);
    links_.FindAll(rest, ranges_);
    LayoutLine(metrics_, LineView(rest, ranges_), 0, lines_);
    for (int i = 0; i < lines_.Count(); ++i) {
      const auto begin = static_cast<std::size_t>(lines_[i].start) / 2;
      const auto end = static_cast<std::size_t>(lines_.EndOf(i, static_cast<int>(rest.size()))) / 2;
      out.append(mark).append(line.substr(quote + begin, end - begin)).append(u"\r\n");
    }
  }

 private:
  int columns_;
  CEditorMetrics settings_;
  CEditorLineMetrics metrics_;
  CPhysicalLines lines_;
  LinkFinder links_;
  std::vector<LinkRange> ranges_;
};

}  // namespace

CStringW TurnQuoted(std::u16string_view text, int columns) {
  Turner turner(columns);
  CStringW out;
  out.reserve(text.size() + text.size() / 8);
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of(u"\r\n"), text.size());
    turner.AppendLine(text.substr(0, end), out);
    const bool isPair = text.substr(end, 2) == u"\r\n";
    text.remove_prefix(std::min(end + (isPair ? 2 : 1), text.size()));
  }
  return out;
}

}  // namespace lumr::tool
