// Reads the case files of html5lib.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "charset/corpus.h"
#include "html/html_text.h"
#include "lumrmisc/html/htmltokenizer_internal.h"
#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {

// As much of JSON as the case files have: strings, lists, objects; everything else is a word.
struct Json {
  std::u16string text;
  std::vector<Json> items;
  std::map<std::u16string, Json> members;
  const Json& operator[](const char16_t* name) const {
    static const Json kNothing;
    const auto found = members.find(name);
    return found == members.end() ? kNothing : found->second;
  }
};

class JsonReader {
 public:
  explicit JsonReader(std::u16string_view source) : source_(source) {}

  Json Read() {
    Json value;
    SkipSpace();
    if (source_[pos_] == u'"') {
      value.text = ReadString();
    } else if (source_[pos_] == u'[' || source_[pos_] == u'{') {
      const bool isObject = source_[pos_++] == u'{';
      for (SkipSpace(); source_[pos_] != u']' && source_[pos_] != u'}'; SkipSpace()) {
        if (isObject) {
          const std::u16string name = ReadString();
          value.members[name] = Read();
        } else {
          value.items.push_back(Read());
        }
      }
      ++pos_;
    } else {
      while (IsAsciiLetter(source_[pos_]) || IsAsciiDigit(source_[pos_]))
        value.text += source_[pos_++];
    }
    return value;
  }

 private:
  void SkipSpace() {
    while (IsMarkupSpace(source_[pos_]) || source_[pos_] == u',' || source_[pos_] == u':') ++pos_;
  }
  std::u16string ReadString() {
    std::u16string text;
    for (++pos_; source_[pos_] != u'"'; ++pos_) {
      if (source_[pos_] != u'\\') {
        text += source_[pos_];
      } else if (source_[++pos_] == u'u') {
        text += static_cast<char16_t>(std::stoi(Narrow(source_.substr(pos_ + 1, 4)), nullptr, 16));
        pos_ += 4;
      } else {
        const std::size_t escape = std::u16string_view(u"ntrbf").find(source_[pos_]);
        text += escape == std::u16string_view::npos ? source_[pos_] : u"\n\t\r\b\f"[escape];
      }
    }
    ++pos_;
    return text;
  }

  std::u16string_view source_;
  std::size_t pos_ = 0;
};

// Calls check(case) for the cases of html5lib in the corpus; for none with line ends or NUL, which
// are nothing special to what is tested here but to who writes.
template <typename Check>
void ForEachHtml5libCase(Check check) {
  for (const char* const name : {"test1", "entities", "unicodechars", "escapeflag"}) {
    const std::u16string file = Wide(ReadCorpus(std::string("html/html5lib-") + name + ".json"));
    const Json cases = JsonReader(file).Read();
    for (const Json& c : cases[u"tests"].items) {
      const std::u16string& input = c[u"input"].text;
      if (input.find_first_of(std::u16string_view(u"\r\0", 2)) == input.npos) check(c);
    }
  }
}

}  // namespace lumr
