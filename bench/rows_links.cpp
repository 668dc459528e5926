// Links in text.
#include <algorithm>
#include <vector>

#include "lumrmisc/mailtext/links.h"
#include "ours.h"
#include "peers.h"

namespace lumr::bench {
namespace {

constexpr std::size_t kLinkEvery = 1024;

// Puts a link behind the first line end of each kilobyte.
std::string WithLinks(const std::string& text, std::string_view lineEnd, std::string_view link) {
  std::string out;
  out.reserve(text.size() + text.size() / kLinkEvery * link.size() + link.size());
  std::size_t done = 0;
  while (done < text.size()) {
    const std::size_t found = text.find(lineEnd, std::min(done + kLinkEvery, text.size()));
    const std::size_t end = found == text.npos ? text.size() : found + lineEnd.size();
    out.append(text, done, end - done) += link;
    done = end;
  }
  return out;
}

constexpr std::string_view kLink = "(http://www.example.jp/list?n=123) ";

std::string NarrowLinks(std::string text) {
  return WithLinks(text, "\r\n", kLink);
}

std::string WideLinks(std::string text) {
  std::string link;
  for (const char c : kLink) link += {c, '\0'};
  return WithLinks(text, std::string_view("\r\0\n\0", 4), link);
}

// By repeated calls, each on the text behind the link before.
template <CodeType kCodeType>
std::string CountUrls(std::string_view text) {
  int count = 0;
  for (int length = 0;; ++count) {
    const int start = FindUrlA(text.data(), Length(text), kCodeType, length);
    if (start < 0) return std::to_string(count);
    text.remove_prefix(static_cast<std::size_t>(start + length));
  }
}

std::string CountLinks(std::string_view text) {
  std::vector<LinkRange> links;
  LinkFinder(CT_SJIS).FindAll(text, links);
  return std::to_string(links.size());
}

// What FindUrlA looks for, as far as the texts have it.
constexpr const char* kPattern =
    "(?i)(?<![0-9a-z])(?:mailto:|https?:|ftp:|file:|gopher:|[a-z]:\\\\|\\\\\\\\[^\\\\])"
    "[-.0-9a-z_=^~!$%&*+/?|#@:;,\\\\]*";

template <CodeType kCodeType>
Row Urls(const char* charset, std::string (*prepare)(std::string)) {
  return {.task = "find URLs, one a kilobyte",
          .inputs = {{Corpus::kJapanese, charset, 1.0}},
          .ours = OursPlain(&CountUrls<kCodeType>),
          .peers = {Pcre2All(kPattern, charset, true)},
          .prepare = prepare};
}

// Openings that lead nowhere, in Shift_JIS.
template <const char* kPiece>
std::string Repeated(std::string text) {
  std::string out;
  out.reserve(text.size() + std::string_view(kPiece).size());
  while (out.size() < text.size()) out += kPiece;
  return out;
}
constexpr char kMailto[] = "<mailto:";
constexpr char kBackslashes[] = "\\\\";
constexpr char kServers[] = "a\\\\b ";
constexpr char kInWords[] = "xhttp:xftp:xC:\\";
constexpr char kHalfAddresses[] = "a@b@";
constexpr char kLinkAndAddress[] = "http://a b@c.d ";

Row Hostile(const char* task, std::string (*prepare)(std::string)) {
  return {.task = task,
          .inputs = {{Corpus::kJapanese, "CP932"}},
          .ours = OursPlain(&CountLinks),
          .peers = {},
          .prepare = prepare};
}

}  // namespace

std::vector<Row> LinkRows() {
  return {
      Urls<CT_SJIS>("CP932", &NarrowLinks),
      Urls<CT_UNICODE>("UTF-16LE", &WideLinks),
      Hostile("find links in <mailto:<mailto:", &Repeated<kMailto>),
      Hostile("find links in backslashes", &Repeated<kBackslashes>),
      Hostile("find links in a\\\\b a\\\\b", &Repeated<kServers>),
      Hostile("find links in xhttp:xftp:xC:\\", &Repeated<kInWords>),
      Hostile("find links in a@b@a@b@", &Repeated<kHalfAddresses>),
      Hostile("find links, URLs and addresses", &Repeated<kLinkAndAddress>),
  };
}

}  // namespace lumr::bench
