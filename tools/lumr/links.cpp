// lumr links: the URLs, paths and mail addresses of a text.
#include "lumrmisc/mailtext/links.h"

#include <memory>
#include <string>
#include <vector>

#include "charsets.h"
#include "command.h"
#include "input.h"
#include "json.h"
#include "lumrmisc/charset/linescan.h"
#include "lumrmisc/charset/mailcharset.h"
#include "safetext.h"
#include "textdecode.h"

namespace lumr::tool {

namespace {

struct LinksOptions {
  std::string file = "-";
  std::string from;
};

// The bytes that UTF-16 takes in UTF-8; half a surrogate pair becomes U+FFFD, which takes three.
long long Utf8Size(std::string_view utf16) {
  long long size = 0;
  for (std::size_t pos = 0; pos + 1 < utf16.size(); pos += 2) {
    const char16_t unit = LoadUnit(utf16.data() + pos);
    const bool pair = unit >= 0xD800 && unit < 0xDC00 && pos + 3 < utf16.size() &&
                      (LoadUnit(utf16.data() + pos + 2) & 0xFC00) == 0xDC00;
    size += unit < 0x80 ? 1 : unit < 0x800 ? 2 : pair ? 4 : 3;
    if (pair) pos += 2;
  }
  return size;
}

// Offsets are bytes of the text in UTF-8.
class LinkPrinter {
 public:
  LinkPrinter(Session& session, const std::string& file) : session_(session), file_(file) {}

  // Text is UTF-16, in which a link ends with its line at the latest.
  void Print(std::string_view text) {
    const char* lineEnd = nullptr;
    int breakLength = 0;
    while (GetNextLine(text.data(), static_cast<int>(text.size()), CT_UNICODE, lineEnd,
                       breakLength) != 0) {
      const auto size = static_cast<std::size_t>(lineEnd - text.data());
      PrintLine(text.substr(0, size));
      offset_ += breakLength / 2;
      text.remove_prefix(size + static_cast<std::size_t>(breakLength));
    }
  }

  bool FoundAny() const { return foundAny_; }

 private:
  void PrintLine(std::string_view line) {
    finder_.FindAll(line, links_);
    std::size_t done = 0;
    for (const LinkRange& link : links_) {
      const auto start = static_cast<std::size_t>(link.start);
      offset_ += Utf8Size(line.substr(done, start - done));
      const std::string_view text = line.substr(start, static_cast<std::size_t>(link.length));
      PrintLink(link.kind == kLinkUrl ? "url" : "mail", text);
      offset_ += Utf8Size(text);
      done = start + text.size();
    }
    offset_ += Utf8Size(line.substr(done));
  }

  void PrintLink(const char* kind, std::string_view text) {
    foundAny_ = true;
    CStringW units(text.size() / 2, u'\0');
    text.copy(reinterpret_cast<char*>(units.data()), text.size());
    const std::string utf8 = Utf8(units);
    const long long length = Utf8Size(text);
    if (session_.json) {
      session_.Write(JsonLine({{"file", JsonText(file_)},
                               {"offset", offset_},
                               {"length", length},
                               {"kind", kind},
                               {"text", JsonText(utf8)}}));
    } else {
      session_.Write(std::to_string(offset_) + '\t' + std::to_string(length) + '\t' + kind + '\t' +
                     SafeLine(utf8) + '\n');
    }
  }

  Session& session_;
  const std::string& file_;
  LinkFinder finder_{CT_UNICODE};
  std::vector<LinkRange> links_;
  long long offset_ = 0;
  bool foundAny_ = false;
};

void PrintLinks(Session& session, const LinksOptions& options) {
  Utf16Order order = Utf16Order::kLittleEndian;
  MailCharset charset{CT_UNKNOWN, CharsetSource::kLabel};
  if (!options.from.empty()) {
    charset.codeType = CodeTypeOfArgument(options.from, order);
    charset.order = order;
    if (charset.codeType == CT_UNKNOWN) {
      session.Tell({}, Say::kUnknownCharset, {SafeLine(options.from)});
      session.Raise(kFailed);
      return;
    }
  }
  std::string content;
  if (const FileError error = ReadAll(options.file, content)) {
    session.TellUnreadable(options.file, error);
    return;
  }
  if (options.from.empty()) charset = ResolveMailCharset({}, content);
  CBuffer text;
  ConvertMailText(charset, content, text);
  content = {};
  LinkPrinter printer(session, options.file);
  printer.Print(text.Bytes());
  if (!printer.FoundAny()) session.Raise(kLost);
}

}  // namespace

Runner AddLinks(CLI::App& command) {
  const auto options = std::make_shared<LinksOptions>();
  command.add_option("FILE", options->file, Text(Say::kLinksFile))->type_name("");
  command.add_option("-f,--from", options->from, Text(Say::kLinksFrom))->type_name("CHARSET");
  return [options](Session& session) { PrintLinks(session, *options); };
}

}  // namespace lumr::tool
