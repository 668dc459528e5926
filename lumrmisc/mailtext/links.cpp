#include "lumrmisc/mailtext/links.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/buffer/characterborders_internal.h"
#include "lumrmisc/buffer/chartype.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/charset/editpage.h"
#include "lumrmisc/mailtext/linkmarks_internal.h"
#include "lumrmisc/platform/mbcs.h"

namespace lumr {
namespace {

using Url = LinkScanState::Url;
using MailPart = LinkScanState::MailPart;
constexpr std::size_t kNone = LinkScanState::kNone;

constexpr auto AsciiSet(std::string_view members) {
  std::array<bool, 128> set{};
  for (char c = '0'; c <= '9'; ++c) set[static_cast<unsigned char>(c)] = true;
  for (char c = 'A'; c <= 'Z'; ++c) set[static_cast<unsigned char>(c)] = true;
  for (char c = 'a'; c <= 'z'; ++c) set[static_cast<unsigned char>(c)] = true;
  for (const char c : members) set[static_cast<unsigned char>(c)] = true;
  return set;
}
constexpr auto kUrlSet = AsciiSet("._-=^~!$%&*+/?|#@:;,");
constexpr auto kAddressSet = AsciiSet("._-=^~!$%&*+/?|");
constexpr auto kDomainSet = AsciiSet("_-=^~!$%&*+/?|");

bool IsIn(const std::array<bool, 128>& set, unsigned unit) {
  return unit < set.size() && set[unit];
}
bool IsLetterOrDigit(unsigned unit) {
  return unit < 0x80 && (IsAsciiLetter(unit) || IsAsciiDigit(unit));
}

enum Kind { kMailto = 1, kHttp, kHttps, kFtp, kFile, kGopher, kDrive, kNetwork };

struct Scheme {
  Kind kind;
  std::string_view name;  // what stands before the ":"
};
constexpr Scheme kSchemes[] = {
    {kMailto, "mailto"}, {kHttp, "http"}, {kHttps, "https"},
    {kFtp, "ftp"},       {kFile, "file"}, {kGopher, "gopher"},
};

bool IsPathKind(int kind) {
  return kind == kFile || kind == kDrive || kind == kNetwork;
}

// How a scan reads its text. Places are bytes. Only letters and some signs may be the second byte
// of a character, never one of :"<>/?# or a digit, so that only those have to be asked. border is
// a place at which a character begins: what stands behind it is read from there.
class NarrowText {
 public:
  using Unit = unsigned char;

  NarrowText(std::string_view text, const MbcsPage& page, std::size_t border = 0)
      : text_(text), page_(page), border_(border) {}

  std::string_view Bytes() const { return text_; }
  bool IsBorder(std::size_t pos) const {
    const std::size_t from = pos < border_ ? 0 : border_;
    return !page_.IsTrailInContext(text_.substr(from), pos - from);
  }
  std::size_t CharSize(std::size_t pos) const { return page_.CharLength(text_, pos); }
  // More text may make another character of the last byte.
  std::size_t SettledEnd() const { return SettledSize(page_, text_, border_); }

  bool IsFullSpaceAt(std::size_t pos) const {
    return page_.IsPair(text_, pos) && IsFullSpace(CharAt(pos), page_.CodePage());
  }
  bool IsBlankAt(std::size_t pos) const {
    if (page_.IsPair(text_, pos)) return IsFullSpaceAt(pos);
    return IsBlankType(GetCharType(CharAt(pos), page_.CodePage()));
  }

 private:
  unsigned CharAt(std::size_t pos) const {
    const unsigned byte = links::UnitAt<Unit>(text_, pos);
    return page_.IsPair(text_, pos) ? byte << 8 | links::UnitAt<Unit>(text_, pos + 1) : byte;
  }

  std::string_view text_;
  const MbcsPage& page_;
  std::size_t border_;
};

class WideText {
 public:
  using Unit = char16_t;

  explicit WideText(std::string_view text) : text_(text.substr(0, text.size() & ~std::size_t{1})) {}

  std::string_view Bytes() const { return text_; }
  bool IsBorder(std::size_t) const { return true; }
  std::size_t CharSize(std::size_t) const { return sizeof(Unit); }
  std::size_t SettledEnd() const { return text_.size(); }

  bool IsFullSpaceAt(std::size_t pos) const { return (TypeAt(pos) & kCharClass) == kCharFullSpace; }
  bool IsBlankAt(std::size_t pos) const { return IsBlankType(TypeAt(pos)); }

 private:
  int TypeAt(std::size_t pos) const {
    return GetCharType(static_cast<char16_t>(links::UnitAt<Unit>(text_, pos)));
  }

  std::string_view text_;
};

// One scan over a text, going on from a state. With final the text ends here; without it, what
// more text might change is left undecided, and the state can go on with a text that has grown.
template <typename Text>
class Scanner {
 public:
  Scanner(const Text& text, LinkScanState& state, bool final)
      : text_(text), bytes_(text.Bytes()), size_(bytes_.size()), state_(state), final_(final) {}

  void TakeAll(std::vector<LinkRange>& links) {
    for (;;) {
      ReopenNetwork(links);
      if (state_.open.kind != 0) {
        if (!Extend(state_.open)) return;
        links.push_back(Range(state_.open.start, state_.open.end, kLinkUrl));
        RestartAll(state_.open.end);
        continue;
      }
      const bool found = FindBeginning();
      // Inside an address no URL begins, also when its mark was judged after the address.
      if (found && state_.ahead.start < state_.addressEnd) {
        RestartUrls(state_.addressEnd);
        continue;
      }
      std::size_t start = 0;
      std::size_t end = 0;
      // Behind the beginning of a URL that is not known yet there are letters and its mark alone,
      // so that an "@" stands before it.
      if (TakeAddress(found ? state_.ahead.start : size_, start, end)) {
        links.push_back(Range(start, end, kLinkMail));
        state_.addressEnd = end;
        continue;
      }
      if (!found) return;
      state_.open = state_.ahead;
      state_.ahead = {};
    }
  }

  bool TakeUrl(std::size_t& start, std::size_t& end) {
    if (!FindBeginning()) return false;
    Extend(state_.ahead);
    start = state_.ahead.start;
    end = state_.ahead.end;
    return true;
  }

  // The first address that begins before limit. There is no ":" or backslash in an address, so
  // that one which begins before a URL has its "@" before it too.
  bool TakeAddress(std::size_t limit, std::size_t& start, std::size_t& end) {
    for (;;) {
      if (state_.mailPart == MailPart::kLocal && !FindLocalPart(limit)) return false;
      if (state_.mailPart == MailPart::kDomain && !FindDomain()) return false;
      if (state_.mailPart != MailPart::kTail) continue;
      state_.mailPos = SkipMembers(kAddressSet, state_.mailPos);
      if (state_.mailPos == size_ && !final_) return false;
      start = state_.mailStart;
      end = state_.mailPos;
      GoOnWithMail(end);
      return true;
    }
  }

 private:
  using Unit = typename Text::Unit;
  static constexpr std::size_t kSize = sizeof(Unit);

  static LinkRange Range(std::size_t start, std::size_t end, int kind) {
    return {static_cast<int>(start), static_cast<int>(end - start), kind};
  }

  unsigned At(std::size_t pos) const { return links::UnitAt<Unit>(bytes_, pos); }
  bool Is(std::size_t pos, char c) const {
    return pos + kSize <= size_ && At(pos) == static_cast<unsigned>(c);
  }
  std::size_t SkipMembers(const std::array<bool, 128>& set, std::size_t pos) const {
    while (pos < size_ && IsIn(set, At(pos))) pos += kSize;
    return pos;
  }

  // ---- Beginnings of URLs

  void RestartUrls(std::size_t pos) {
    state_.searchStart = state_.urlPos = pos;
    state_.givenUp = 0;
    state_.ahead = state_.open = {};
  }
  void RestartAll(std::size_t pos) {
    RestartUrls(pos);
    GoOnWithMail(pos);
  }

  // Whether a link may begin here: on the border of a character, and with no letter or digit
  // before it. A letter may be the second byte of a character, which is no letter.
  bool MayBegin(std::size_t pos) const {
    return pos == state_.searchStart || !IsLetterOrDigit(At(pos - kSize)) ||
           !text_.IsBorder(pos - kSize);
  }

  // Finds the next beginning, into ahead.
  bool FindBeginning() {
    if (state_.ahead.kind != 0) return true;
    for (;;) {
      const std::size_t mark = links::FindMark<Unit>(bytes_, state_.urlPos);
      // A lone backslash at the end may become a pair.
      const bool halfPair = !final_ && size_ >= kSize && Is(size_ - kSize, '\\');
      const std::size_t end = halfPair ? size_ - kSize : size_;
      state_.urlPos = std::min(mark, end);
      if (mark >= end) return false;
      const bool settled = At(mark) == ':' ? JudgeColon(mark) : JudgePair(mark);
      if (!settled) return false;
      if (state_.ahead.kind != 0) return true;
      state_.urlPos = mark + kSize;
    }
  }

  // The three judges put what begins at a mark into ahead; false when more text is needed.
  bool JudgeColon(std::size_t colon) {
    for (const Scheme& scheme : kSchemes) {
      if (JudgeScheme(scheme, colon)) return true;
    }
    const std::size_t start = colon - kSize;
    if (colon < state_.searchStart + kSize || !IsAsciiLetter(At(start))) return true;
    if (colon + kSize >= size_) return final_;
    if (Is(colon + kSize, '\\') && text_.IsBorder(start) && MayBegin(start)) {
      Begin(kDrive, start, colon + 2 * kSize);
    }
    return true;
  }

  // Whether it is this scheme that stands before the colon, begun or given up.
  bool JudgeScheme(const Scheme& scheme, std::size_t colon) {
    const std::size_t length = scheme.name.size() * kSize;
    if (colon < state_.searchStart + length) return false;
    const std::size_t start = colon - length;
    for (std::size_t i = scheme.name.size(); i-- > 0;) {
      const unsigned unit = At(start + i * kSize);
      if (unit >= 0x80 || AsciiLower(static_cast<char>(unit)) != scheme.name[i]) return false;
    }
    if (!text_.IsBorder(start)) return false;
    const unsigned bit = 1u << scheme.kind;
    if ((state_.givenUp & bit) != 0) return true;
    if (MayBegin(start)) {
      Begin(scheme.kind, start, colon + kSize);
    } else {
      state_.givenUp |= bit;
    }
    return true;
  }

  bool JudgePair(std::size_t start) {
    const std::size_t name = start + 2 * kSize;
    if (name >= size_) return final_;
    if (Is(name, '\\') || !text_.IsBorder(start) || !MayBegin(start)) return true;
    state_.network = {start, name + kSize};
    FinishNetwork();
    return true;
  }

  // Looks for the backslash that the open network path lacks. What stood between is not searched
  // again, and there is no other open path: a second opening would have been that backslash.
  bool FinishNetwork() {
    LinkScanState::Network& network = state_.network;
    for (;;) {
      const std::size_t slash = links::FindUnit<Unit>(bytes_, network.searched, size_, '\\');
      network.searched = slash;
      if (slash + kSize >= size_) return false;
      network.searched = slash + kSize;
      if (Is(slash + kSize, '\\') || !text_.IsBorder(slash)) continue;
      Begin(kNetwork, network.start, slash + kSize);
      network = {};
      return true;
    }
  }

  // A network path that was open in a shorter text takes what stands behind its opening.
  void ReopenNetwork(std::vector<LinkRange>& links) {
    const std::size_t start = state_.network.start;
    if (start == kNone || !FinishNetwork()) return;
    while (!links.empty() && static_cast<std::size_t>(links.back().start) > start) links.pop_back();
    const Url url = state_.ahead;
    RestartAll(url.end);
    state_.open = url;
  }

  void Begin(Kind kind, std::size_t start, std::size_t end) {
    Url& url = state_.ahead;
    url = {};
    url.kind = kind;
    url.start = start;
    url.end = end;
    if (start == state_.searchStart) return;
    const unsigned before = At(start - kSize);
    if (before == '<' && (kind == kMailto || IsPathKind(kind))) url.closing = '>';
    if (before == '"' && IsPathKind(kind)) url.closing = '"';
  }

  // ---- Ends of URLs: each moves end on, and gives false when more text may move it further.

  bool Extend(Url& url) const {
    if (url.closing != 0) {
      url.end = links::FindUnit<Unit>(bytes_, url.end, size_, url.closing);
    } else if (url.kind == kMailto) {
      ExtendMailto(url);
    } else if (IsPathKind(url.kind)) {
      while (url.end < size_ && (IsIn(kUrlSet, At(url.end)) || Is(url.end, '\\'))) {
        url.end += kSize;
      }
    } else {
      ExtendHost(url);
    }
    return final_ || url.end < text_.SettledEnd();
  }

  // The end of what may be read as characters now.
  std::size_t ReadableEnd() const { return final_ ? size_ : text_.SettledEnd(); }

  void ExtendMailto(Url& url) const {
    const std::size_t end = ReadableEnd();
    while (url.end < end) {
      const unsigned unit = At(url.end);
      if (unit == '?') url.query = true;
      const bool taken = IsIn(kUrlSet, unit) || (url.query && !text_.IsBlankAt(url.end));
      if (!taken) return;
      url.end += text_.CharSize(url.end);
    }
  }

  void ExtendHost(Url& url) const {
    const std::size_t end = ReadableEnd();
    for (; url.hostState < 2 && url.end < end; url.end += text_.CharSize(url.end)) {
      const unsigned unit = At(url.end);
      if (unit == '/') {
        if (url.hostState == 1) url.hostState = 2;
      } else if (unit < 0x80 ? IsIn(kUrlSet, unit) : !text_.IsFullSpaceAt(url.end)) {
        url.hostState = 1;
      } else {
        return;
      }
    }
    if (url.hostState == 2) url.end = SkipMembers(kUrlSet, url.end);
  }

  // ---- Addresses

  void GoOnWithMail(std::size_t pos) {
    state_.mailPart = MailPart::kLocal;
    state_.mailFrom = state_.mailPos = pos;
  }

  // Finds an "@" before limit with a local part before it.
  bool FindLocalPart(std::size_t limit) {
    for (;;) {
      const std::size_t at = links::FindUnit<Unit>(bytes_, state_.mailPos, limit, '@');
      state_.mailPos = std::max(state_.mailPos, at);
      if (at >= limit) return false;
      state_.mailPos = at + kSize;
      if (!text_.IsBorder(at)) continue;
      const std::size_t start = LocalPartStart(at);
      if (start == at) {
        GoOnWithMail(at + kSize);
        continue;
      }
      state_.mailStart = start;
      state_.mailAt = at;
      state_.mailPart = MailPart::kDomain;
      return true;
    }
  }

  // No lead byte is an address character, so only the first of a run of these can be a second
  // byte.
  std::size_t LocalPartStart(std::size_t at) const {
    std::size_t start = at;
    while (start > state_.mailFrom && IsIn(kAddressSet, At(start - kSize))) start -= kSize;
    return start < at && !text_.IsBorder(start) ? start + kSize : start;
  }

  // Reads the first label of the domain and the dot behind it.
  bool FindDomain() {
    const std::size_t end = SkipMembers(kDomainSet, state_.mailPos);
    state_.mailPos = end;
    if (end + kSize >= size_ && !final_) return false;
    const bool named = end > state_.mailAt + kSize && Is(end, '.');
    if (!named) {
      GoOnWithMail(end);
    } else if (end + kSize >= size_ || !IsIn(kDomainSet, At(end + kSize))) {
      GoOnWithMail(end + kSize);
    } else {
      state_.mailPart = MailPart::kTail;
    }
    return true;
  }

  const Text& text_;
  const std::string_view bytes_;
  const std::size_t size_;
  LinkScanState& state_;
  const bool final_;
};

enum class Sought { kUrl, kAddress };

template <typename Text>
int FindFirst(const Text& text, Sought sought, int& matchLength) {
  matchLength = 0;
  LinkScanState state;
  Scanner<Text> scanner(text, state, true);
  std::size_t start = 0;
  std::size_t end = 0;
  const bool found = sought == Sought::kUrl ? scanner.TakeUrl(start, end)
                                            : scanner.TakeAddress(text.Bytes().size(), start, end);
  if (!found) return -1;
  matchLength = static_cast<int>(end - start);
  return static_cast<int>(start);
}

std::string_view WideBytes(const void* text, int lengthInBytes) {
  return lengthInBytes < 0 ? CountedUnits(text)
                           : CountedText(static_cast<const char*>(text), lengthInBytes);
}

template <typename Text>
void Scan(const Text& text, bool final, LinkScanState& state, std::vector<LinkRange>& links) {
  Scanner<Text>(text, state, final).TakeAll(links);
  if (!final) state.border = text.SettledEnd();
}

void Scan(CodeType codeType, std::string_view text, bool final, LinkScanState& state,
          std::vector<LinkRange>& links) {
  if (IsCodeTypeUnicode(codeType)) {
    Scan(WideText(text), final, state, links);
  } else {
    Scan(NarrowText(text, EditPageOf(codeType), state.border), final, state, links);
  }
}

// A shorter text is scanned again rather than kept a state of.
constexpr std::size_t kShortText = 4096;

}  // namespace

int FindUrlW(const char16_t* text, int lengthInBytes, int& matchLength) {
  return FindFirst(WideText(WideBytes(text, lengthInBytes)), Sought::kUrl, matchLength);
}

int FindUrlA(const char* text, int length, CodeType codeType, int& matchLength) {
  if (IsCodeTypeUnicode(codeType)) {
    return FindFirst(WideText(WideBytes(text, length)), Sought::kUrl, matchLength);
  }
  return FindFirst(NarrowText(CountedText(text, length), EditPageOf(codeType)), Sought::kUrl,
                   matchLength);
}

int FindEMailW(const char16_t* text, int lengthInBytes, int& matchLength) {
  return FindFirst(WideText(WideBytes(text, lengthInBytes)), Sought::kAddress, matchLength);
}

int FindEMailA(const char* text, int length, int& matchLength) {
  return FindFirst(NarrowText(CountedText(text, length), CurrentMbcsPage()), Sought::kAddress,
                   matchLength);
}

LinkFinder::LinkFinder(CodeType codeType) : codeType_(codeType) {}

void LinkFinder::FindAll(std::string_view text, std::vector<LinkRange>& links) {
  state_ = {};
  stateLinks_ = 0;
  FindMore(text, links);
}

std::size_t LinkFinder::FindMore(std::string_view text, std::vector<LinkRange>& links) {
  links.resize(std::min(links.size(), stateLinks_));
  const std::size_t openNetwork = state_.network.start;
  if (text.size() > kShortText) Scan(codeType_, text, false, state_, links);
  std::size_t same = std::min(stateLinks_, links.size());
  if (state_.network.start != openNetwork && openNetwork != kNone) {
    while (same > 0 && static_cast<std::size_t>(links[same - 1].start) >= openNetwork) --same;
  }
  stateLinks_ = links.size();
  LinkScanState last = state_;
  Scan(codeType_, text, true, last, links);
  return same;
}

}  // namespace lumr
