// Turning, written down once more: slow, rule by rule, over a list of characters.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "lumrmisc/buffer/textscan.h"
#include "lumrmisc/editor/metrics.h"
#include "lumrmisc/mailtext/links.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/types.h"
#include "lumrmisc/platform/unicode.h"

namespace lumr::testing {

// The characters of a text of code page 932, or of UTF-16 text.
inline std::vector<std::string> CharactersOf(std::string_view text, bool wide) {
  const MbcsPage& page = *FindMbcsPage(932);
  std::vector<std::string> characters;
  for (std::size_t pos = 0; pos < text.size(); pos += characters.back().size()) {
    characters.emplace_back(text.substr(pos, wide ? 2 : page.CharLength(text, pos)));
  }
  return characters;
}

struct ModelLine {
  int start = 0;
  int columns = 0;
  int pixels = 0;
  bool operator==(const ModelLine&) const = default;
};

struct TurningModel {
  bool wide = false;
  int mode = 1;
  int limit = 72;
  int tabColumn = 4;
  bool noTurnUrl = false;
  std::vector<std::string> head, tail;            // editable lists, character by character
  int (*pixelsOf)(const std::string&) = nullptr;  // the width of a character

  std::vector<std::string> chars = {};
  std::vector<std::size_t> offsets = {};
  int unseen = -1;  // the first character that was taken to fit without a look

  // The start of each physical line, and its widths.
  std::vector<ModelLine> Turn(std::string_view text, const std::vector<CUrlRange>& urls) {
    Read(text);
    unseen = -1;
    std::vector<ModelLine> lines;
    std::size_t s = 0;
    do {
      const std::size_t e = EndOf(s, urls);
      const std::size_t seen = unseen < 0 ? e : static_cast<std::size_t>(unseen);
      lines.push_back({static_cast<int>(offsets[s]), Columns(s, seen), Pixels(s, seen)});
      s = e;
    } while (s < chars.size());
    return lines;
  }

 private:
  static bool Has(const std::vector<std::string>& list, const std::string& c) {
    return std::find(list.begin(), list.end(), c) != list.end();
  }
  bool IsHead(const std::string& c) const { return !c.empty() && Has(head, c); }
  bool IsTail(const std::string& c) const { return c.empty() || Has(tail, c); }
  bool IsWord(const std::string& c) const {
    if (c.size() != (wide ? 2u : 1u)) return false;
    if (wide && c[1] != '\0') return false;
    return c[0] >= '\0' && iswalnumH(static_cast<char16_t>(c[0]));
  }
  bool IsTab(const std::string& c) const { return c[0] == '\t' && (!wide || c[1] == '\0'); }
  std::string At(std::size_t p) const { return p < chars.size() ? chars[p] : std::string(); }

  void Read(std::string_view text) {
    chars = CharactersOf(text, wide);
    offsets.assign(1, 0);
    for (const auto& c : chars) offsets.push_back(offsets.back() + c.size());
  }
  int WidthOf(const std::string& c) const {
    if (!wide) return static_cast<int>(c.size());
    return IsUnitFullWidth(LoadUnit(c.data())) ? 2 : 1;
  }
  int Columns(std::size_t s, std::size_t e) const {
    int columns = 0;
    for (; s < e; ++s) {
      columns = IsTab(chars[s]) ? (columns + tabColumn) / tabColumn * tabColumn
                                : columns + WidthOf(chars[s]);
    }
    return columns;
  }
  int Pixels(std::size_t s, std::size_t e) const {
    if (pixelsOf == nullptr) return Columns(s, e) * 8;
    const int space = pixelsOf(wide ? std::string(" \0", 2) : " ");
    int pixels = 0;
    for (std::size_t i = s; i < e; ++i) {
      pixels += IsTab(chars[i]) ? (Columns(s, i + 1) - Columns(s, i)) * space : pixelsOf(chars[i]);
    }
    return pixels;
  }
  // The first break: by columns, or by pixels with a look at the first bytes only.
  std::size_t Fit(std::size_t s) {
    std::size_t b = s;
    if (mode == 1) {
      while (b < chars.size() && Columns(s, b + 1) <= limit) ++b;
      return b;
    }
    std::size_t looked = s;
    while (looked < chars.size() &&
           offsets[looked] - offsets[s] < static_cast<std::size_t>(limit / 2)) {
      ++looked;
    }
    if (Pixels(s, looked) <= limit) {
      unseen = static_cast<int>(looked);
      return chars.size();
    }
    while (Pixels(s, b + 1) <= limit) ++b;
    return b;
  }

  std::size_t EndOf(std::size_t s, const std::vector<CUrlRange>& urls) {
    std::size_t b = Fit(s);
    if (b == s && s < chars.size()) b = s + 1;
    if (b >= chars.size()) return chars.size();
    const auto before = [&](std::size_t p) { return p > s ? chars[p - 1] : std::string(); };
    bool stays = false;
    for (const CUrlRange& url : urls) {
      if (!noTurnUrl || url.kind < 1 || url.kind > 2) continue;
      const int place = static_cast<int>(offsets[b]);
      if (url.End() == place) {
        stays = true;
        break;
      }
      if (url.start > place || url.End() < place) continue;
      stays = url.start <= static_cast<int>(offsets[s]);
      const int moved = stays ? url.End() : url.start;
      b = static_cast<std::size_t>(std::find(offsets.begin(), offsets.end(), moved) -
                                   offsets.begin());
      break;
    }
    if (!stays) {
      const std::size_t b0 = b;
      while (!IsTail(before(b)) && !IsHead(At(b)) && IsWord(before(b)) && IsWord(At(b))) {
        if (--b > s) continue;
        b = b0;
        break;
      }
    }
    if (IsHead(At(b)) && !IsHead(At(b + 1))) ++b;
    if (!stays) {
      const std::size_t b1 = b;
      while (IsTail(before(b)) || IsHead(At(b))) {
        if (!before(b).empty() && --b > s) continue;
        b = b1;
        break;
      }
    }
    return b;
  }
};

}  // namespace lumr::testing
