// Texts on standard output, laid out as the editor would.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lumrmisc/editor/layout.h"
#include "lumrmisc/mailtext/links.h"
#include "session.h"
#include "textlook.h"

namespace lumr::tool {

// Prints texts in a look: lines turned by the Japanese rules, and on a terminal quoted lines in the
// colour of their depth, links underlined, and those of the net clickable. Nothing that a text
// holds reaches a terminal as a command.
class TextPrinter {
 public:
  TextPrinter(const TextLook& look, Session& session);

  // A text of any origin. One that does not end its last line gets a line end.
  void Print(std::u16string_view text);

  // A piece of a text that AppendSafe made safe, in UTF-8; it ends where a line does.
  void PrintSafe(std::string_view utf8);

 private:
  void AppendLine(std::string_view line);
  void AppendPiece(std::string_view line, std::size_t begin, std::size_t end);
  void AppendLink(std::string_view line, const LinkRange& link, std::size_t begin, std::size_t end);
  void AppendAscii(std::string_view ascii);
  void AppendUnits(std::string_view bytes);
  void Flush();

  const TextLook& look_;
  Session& session_;
  CEditorLineMetrics metrics_;
  LinkFinder finder_;
  std::vector<LinkRange> links_;
  std::size_t nextLink_ = 0;  // the first link that does not end before the piece
  CPhysicalLines lines_;
  std::string quoteColor_;  // the sequence that switches it on; empty: not quoted
  unsigned linkNumber_ = 0;
  std::string target_;  // of the link that was begun last; empty: not to be clicked
  CStringW out_;
};

}  // namespace lumr::tool
