// The link rules written the slow, obvious way, for tests and fuzzers to compare with.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "lumrmisc/buffer/chartype.h"
#include "lumrmisc/charset/editpage.h"
#include "lumrmisc/mailtext/links.h"
#include "lumrmisc/platform/types.h"

namespace lumr::linkmodel {

struct Character {
  unsigned code;  // at least 10000 hex for two bytes, which are never one of the signs
  std::size_t start;
  bool isFullSpace;
  bool isBlank;
};

// The characters of a text, and one at its end that only gives its size.
inline std::vector<Character> CharactersOf(std::string_view text, CodeType codeType) {
  std::vector<Character> all;
  std::size_t pos = 0;
  if (IsCodeTypeUnicode(codeType)) {
    for (; pos + 2 <= text.size(); pos += 2) {
      const int type = GetCharType(LoadUnit(text.data() + pos));
      const bool full = (type & kCharClass) == kCharFullSpace;
      all.push_back({LoadUnit(text.data() + pos), pos, full, IsBlankType(type)});
    }
  } else {
    const MbcsPage& page = EditPageOf(codeType);
    while (pos < text.size()) {
      const std::size_t size = page.CharLength(text, pos);
      unsigned code = static_cast<unsigned char>(text[pos]);
      if (size == 2) code = code << 8 | static_cast<unsigned char>(text[pos + 1]);
      const int type = GetCharType(code, page.CodePage());
      const bool full = (type & kCharClass) == kCharFullSpace;
      all.push_back({size == 2 ? code + 0x10000 : code, pos, full, IsBlankType(type)});
      pos += size;
    }
  }
  all.push_back({0, pos, false, false});
  return all;
}

class Model {
 public:
  Model(std::string_view text, CodeType codeType)
      : chars_(CharactersOf(text, codeType)), end_(chars_.size() - 1) {}

  // The first URL in the text from a character on: 0 when there is none.
  bool FindUrl(std::size_t from, std::size_t& start, std::size_t& end) const {
    int kind = 0;
    std::size_t limit = end_;
    static constexpr std::u32string_view kSchemes[] = {U"mailto:", U"http:", U"https:",
                                                       U"ftp:",    U"file:", U"gopher:"};
    for (int i = 0; i < 6; ++i) {
      const std::u32string_view name = kSchemes[i];
      std::size_t at = from;
      while (at + name.size() <= limit && !IsNameAt(at, name)) ++at;
      if (at + name.size() > limit || !IsFree(from, at)) continue;
      kind = i + 1;
      limit = at;
      end = at + name.size();
    }
    for (std::size_t at = from; at < limit; ++at) {
      if (!IsAlnum(at) || Code(at) <= '9' || !Is(at + 1, ':') || !Is(at + 2, '\\')) continue;
      if (!IsFree(from, at)) continue;
      kind = 7;
      limit = at;
      end = at + 3;
    }
    for (std::size_t at = from; at < limit; ++at) {
      if (!Is(at, '\\') || !Is(at + 1, '\\') || at + 2 >= end_ || Is(at + 2, '\\')) continue;
      std::size_t slash = at + 3;
      while (slash + 1 < end_ && !(Is(slash, '\\') && !Is(slash + 1, '\\'))) ++slash;
      if (slash + 1 >= end_ || !IsFree(from, at)) continue;
      kind = 8;
      limit = at;
      end = slash + 1;
    }
    if (kind == 0) return false;
    start = limit;
    end = Extend(kind, start == from ? 0 : Code(start - 1), end);
    return true;
  }

  bool FindEMail(std::size_t from, std::size_t& start, std::size_t& end) const {
    std::size_t at = from;
    for (;;) {
      while (at < end_ && !IsAddress(at)) ++at;
      if (end_ - at < 5) return false;
      start = at;
      while (IsAddress(at)) ++at;
      if (!Is(at, '@')) continue;
      const std::size_t label = ++at;
      while (IsAddress(at) && !Is(at, '.')) ++at;
      if (!Is(at, '.') || at == label) continue;
      ++at;
      if (!IsAddress(at) || Is(at, '.')) continue;
      while (IsAddress(at)) ++at;
      end = at;
      return true;
    }
  }

  std::vector<LinkRange> FindAll() const {
    std::vector<LinkRange> links;
    std::size_t urlFrom = 0;
    std::size_t mailFrom = 0;
    for (;;) {
      std::size_t url = 0, urlEnd = 0, mail = 0, mailEnd = 0;
      const bool hasUrl = FindUrl(urlFrom, url, urlEnd);
      const bool hasMail = FindEMail(mailFrom, mail, mailEnd);
      if (!hasUrl && !hasMail) return links;
      if (hasMail && (!hasUrl || mail < url)) {
        links.push_back(Range(mail, mailEnd, kLinkMail));
        mailFrom = mailEnd;
        if (hasUrl && url < mailEnd) urlFrom = mailEnd;
      } else {
        links.push_back(Range(url, urlEnd, kLinkUrl));
        urlFrom = mailFrom = urlEnd;
      }
    }
  }

  LinkRange Range(std::size_t start, std::size_t end, int kind) const {
    return {static_cast<int>(chars_[start].start),
            static_cast<int>(chars_[end].start - chars_[start].start), kind};
  }

 private:
  unsigned Code(std::size_t at) const { return at < end_ ? chars_[at].code : 0x20000; }
  bool Is(std::size_t at, char c) const { return Code(at) == static_cast<unsigned>(c); }
  bool IsOneOf(std::size_t at, std::string_view set) const {
    return Code(at) > 0 && Code(at) < 0x80 && set.find(static_cast<char>(Code(at))) != set.npos;
  }
  bool IsAlnum(std::size_t at) const {
    return IsOneOf(at, "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
  }
  bool IsUrlChar(std::size_t at) const {
    return IsAlnum(at) || IsOneOf(at, "._-=^~!$%&*+/?|#@:;,");
  }
  bool IsAddress(std::size_t at) const { return IsAlnum(at) || IsOneOf(at, "._-=^~!$%&*+/?|"); }
  bool IsFree(std::size_t from, std::size_t at) const { return at == from || !IsAlnum(at - 1); }
  bool IsNameAt(std::size_t at, std::u32string_view name) const {
    for (std::size_t i = 0; i < name.size(); ++i) {
      const unsigned code = Code(at + i);
      if ((code >= 'A' && code <= 'Z' ? code + 32 : code) != name[i]) return false;
    }
    return true;
  }

  std::size_t Extend(int kind, unsigned before, std::size_t end) const {
    const bool isPath = kind == 5 || kind >= 7;
    const bool bracketed = before == '<';
    const bool quoted = isPath && before == '"';
    bool query = false;
    int state = 0;
    for (; end < end_; ++end) {
      if (kind == 1) {
        if (Is(end, '?')) query = true;
        if (IsUrlChar(end)) continue;
        if (bracketed ? Is(end, '>') : !query || chars_[end].isBlank) break;
      } else if (isPath) {
        if (IsUrlChar(end) || Is(end, '\\')) continue;
        if (bracketed ? Is(end, '>') : !quoted || Is(end, '"')) break;
      } else if (state == 0 && Is(end, '/')) {
        continue;
      } else if (state < 2) {
        state = Is(end, '/') ? 2 : 1;
        if (Code(end) < 0x80 ? !IsUrlChar(end) : chars_[end].isFullSpace) break;
      } else if (!IsUrlChar(end)) {
        break;
      }
    }
    return end;
  }

  std::vector<Character> chars_;
  std::size_t end_;
};

}  // namespace lumr::linkmodel
