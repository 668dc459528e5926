// The rules of option-driven comparison written out plainly, for tests to compare with: units are
// read character by character from column lists, and compared by the three rules one by one.
#pragma once

#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/types.h"
#include "lumrmisc/search/optioncomp.h"

namespace lumr::model {

struct Options {
  bool ignoreCase, ignoreWidth, ignoreKana;

  explicit Options(unsigned bits)
      : ignoreCase((bits & 1) != 0), ignoreWidth((bits & 2) != 0), ignoreKana((bits & 4) != 0) {}
  bool UsesTable() const { return ignoreWidth || ignoreKana; }
  COptionComp2 Comparison() const { return COptionComp2(ignoreCase, ignoreWidth, ignoreKana); }
};

struct Unit {
  int row = 0;  // from 1; 0: none
  int form = 0;
  int voicing = 0;
  unsigned code = 0;
  std::size_t length = 0;
};

struct KnownCharacter {
  int row;
  int form;
  int builtIn;  // voicing
};

// The columns, each from a row on; "_" where a row has no such form, but for the row of the "_".
inline std::map<unsigned, KnownCharacter> WideCharacters() {
  struct Column {
    int form, firstRow;
    std::u16string_view characters;
  };
  const Column columns[] = {
      {0x111, 1, u"ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"},
      {0x112, 1, u"abcdefghijklmnopqrstuvwxyz"},
      {0x121, 1, u"ＡＢＣＤＥＦＧＨＩＪＫＬＭＮＯＰＱＲＳＴＵＶＷＸＹＺ０１２３４５６７８９"},
      {0x122, 1, u"ａｂｃｄｅｆｇｈｉｊｋｌｍｎｏｐｑｒｓｔｕｖｗｘｙｚ"},
      {0x121, 37, u"　！”＃＄％＆’（）＊＋，－．／：；＜＝＞？＠［￥］＾＿｀｛｜｝￣"},
      {0x111, 37, u" !\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~"},
      {0x111, 70, u"ｱｲｳｴｵｶｷｸｹｺｻｼｽｾｿﾀﾁﾂﾃﾄﾅﾆﾇﾈﾉﾊﾋﾌﾍﾎﾏﾐﾑﾒﾓﾔﾕﾖﾗﾘﾙﾚﾛﾜ__ｦﾝﾞﾟ｡｢｣､･ｰ"},
      {0x112, 70, u"ｧｨｩｪｫ____________ｯ_________________ｬｭｮ"},
      {0x121, 70,
       u"アイウエオカキクケコサシスセソタチツテトナニヌネノハヒフヘホマミムメモヤユヨラリル"
       u"レロワヰヱヲン゛゜。「」、・ー"},
      {0x122, 70, u"ァィゥェォ____________ッ_________________ャュョ_____ヮ"},
      {0x221, 70,
       u"あいうえおかきくけこさしすせそたちつてとなにぬねのはひふへほまみむめもやゆよらりる"
       u"れろわゐゑをん"},
      {0x222, 70, u"ぁぃぅぇぉ____________っ_________________ゃゅょ_____ゎ"},
  };
  std::map<unsigned, KnownCharacter> known;
  for (const Column& column : columns) {
    int row = column.firstRow;
    for (const char16_t character : column.characters) {
      if (character != u'_' || row == 64)
        known.emplace(character, KnownCharacter{row, column.form, 0});
      ++row;
    }
  }
  // Voiced kana stand one behind their base in Unicode, semi-voiced ones two.
  for (const auto& [first, last] :
       {std::pair(u'か', u'と'), {u'カ', u'ト'}, {u'は', u'ほ'}, {u'ハ', u'ホ'}}) {
    for (unsigned base = first; base <= last; ++base) {
      const auto row = known.find(base);
      if (row == known.end() || row->second.builtIn != 0 || (row->second.form & 3) == 2) continue;
      const KnownCharacter read = row->second;
      known.insert_or_assign(base + 1, KnownCharacter{read.row, read.form, 17});
      if (read.row >= 95) known.insert_or_assign(base + 2, KnownCharacter{read.row, read.form, 18});
    }
  }
  known.insert_or_assign(u'ヴ', KnownCharacter{72, 0x121, 17});
  return known;
}

inline std::map<unsigned, KnownCharacter> Known(bool wide) {
  std::map<unsigned, KnownCharacter> known;
  for (const auto& [character, what] : WideCharacters()) {
    const int narrow = EncodeUnit(932, static_cast<char16_t>(character), true);
    if (!wide && narrow < 0) std::abort();
    known.emplace(wide ? character : static_cast<unsigned>(narrow), what);
  }
  return known;
}

class Reader {
 public:
  explicit Reader(bool wide) : wide_(wide), known_(Known(wide)) {}

  std::size_t CharLength(std::string_view text, std::size_t pos) const {
    return wide_ ? 2 : FindMbcsPage(932)->CharLength(text, pos);
  }
  unsigned CodeAt(std::string_view text, std::size_t pos) const {
    if (pos >= text.size()) return 0x1FFFF;
    if (wide_) return LoadUnit(&text[pos]);
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    return CharLength(text, pos) == 2 ? byte(pos) * 256u + byte(pos + 1) : byte(pos);
  }

  Unit Read(std::string_view text, std::size_t pos) const {
    Unit unit;
    unit.code = CodeAt(text, pos);
    unit.length = CharLength(text, pos);
    const auto known = known_.find(unit.code);
    if (known == known_.end()) return unit;
    unit.row = known->second.row;
    unit.form = known->second.form;
    unit.voicing = known->second.builtIn;
    const bool takesBoth = unit.row >= 95 && unit.row <= 99;
    const bool takesVoiced = takesBoth || unit.row == 72 || (unit.row >= 75 && unit.row <= 89);
    if (unit.voicing != 0 || !takesVoiced) return unit;
    const unsigned mark = CodeAt(text, pos + unit.length);
    const unsigned halfVoiced = wide_ ? 0xFF9E : 0xDE;
    const unsigned fullVoiced = wide_ ? 0x309B : 0x814A;
    if (mark == halfVoiced) unit.voicing = 1;
    if (mark == halfVoiced + 1 && takesBoth) unit.voicing = 2;
    if (mark == fullVoiced) unit.voicing = 17;
    if (mark == fullVoiced + 1 && takesBoth) unit.voicing = 18;
    if (unit.voicing != 0) unit.length += CharLength(text, pos + unit.length);
    return unit;
  }

  static bool Equal(const Unit& a, const Unit& b, const Options& options) {
    if (a.row == 0 && b.row == 0) return a.code == b.code;
    if (a.row != b.row || (a.voicing & 3) != (b.voicing & 3)) return false;
    if (!options.ignoreCase && (a.form & 3) != (b.form & 3)) return false;
    if (!options.ignoreWidth && (a.form & 0x30) != (b.form & 0x30)) return false;
    if (!options.ignoreWidth && (a.voicing & 0x10) != (b.voicing & 0x10)) return false;
    return options.ignoreKana || (a.form & 0x300) == (b.form & 0x300);
  }

  // The bytes of text that begin with word at pos, or -1.
  int LengthAt(std::string_view text, std::size_t pos, std::string_view word,
               const Options& options) const {
    const std::size_t begin = pos;
    for (std::size_t wordPos = 0; wordPos < word.size();) {
      if (pos >= text.size()) return -1;
      const Unit wanted = Read(word, wordPos);
      const Unit found = Read(text, pos);
      if (!Equal(wanted, found, options)) return -1;
      wordPos += wanted.length;
      pos += found.length;
    }
    return static_cast<int>(pos - begin);
  }

  struct Place {
    int pos, length;
    bool operator==(const Place&) const = default;
  };
  // Every place where word stands.
  std::vector<Place> Places(std::string_view text, std::string_view word,
                            const Options& options) const {
    std::vector<Place> places;
    for (std::size_t pos = 0; !word.empty() && pos < text.size(); pos += CharLength(text, pos)) {
      const int length = LengthAt(text, pos, word, options);
      if (length >= 0) places.push_back({static_cast<int>(pos), length});
    }
    return places;
  }

  const std::map<unsigned, KnownCharacter>& Characters() const { return known_; }
  bool IsWide() const { return wide_; }

 private:
  bool wide_;
  std::map<unsigned, KnownCharacter> known_;
};

inline void AppendCode(bool wide, unsigned code, std::string& text) {
  if (wide) {
    text += static_cast<char>(code);
    text += static_cast<char>(code >> 8);
    return;
  }
  if (code > 0xFF) text += static_cast<char>(code >> 8);
  text += static_cast<char>(code);
}

}  // namespace lumr::model
