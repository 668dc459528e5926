// The functions that have golden files, all in one form.
#pragma once

#include <string>

#include "html/html_text.h"
#include "lumrmisc/html/adjust.h"
#include "lumrmisc/html/fromtext.h"
#include "lumrmisc/html/htmlcharset.h"
#include "lumrmisc/html/images.h"
#include "lumrmisc/html/reading.h"
#include "lumrmisc/html/safe.h"
#include "lumrmisc/html/title.h"
#include "lumrmisc/html/totext.h"

namespace lumr {

// Changes the text; gives the result where there is one, in decimal.
struct GoldenFunction {
  const char* file;
  std::string (*run)(std::u16string& text, const std::string& argument);
};

inline const GoldenFunction kGoldenFunctions[] = {
    {"document.txt",
     [](auto& text, auto& charset) {
       ToHtmlDocumentW(text, Wide(charset).c_str());
       return std::string();
     }},
    {"escape.txt",
     [](auto& text, auto&) {
       std::string narrow = Narrow(text);
       ToHtmlTextA(narrow);
       text = Wide(narrow);
       return std::string();
     }},
    {"safe.txt", [](auto& text, auto&) { return ToSafeHtmlW(text), std::string(); }},
    {"insertfont.txt",
     [](auto& text, auto& font) {
       return std::to_string(InsertDefaultBodyFont(Wide(font).c_str(), text));
     }},
    {"removefont.txt",
     [](auto& text, auto&) { return std::to_string(RemoveDefaultBodyFont(text)); }},
    {"breakline.txt", [](auto& text, auto&) { return AdjustHtmlBreakLine(text), std::string(); }},
    {"lead.txt",
     [](auto& text, auto& lead) {
       return InsertLeadTextW(Wide(lead).c_str(), text), std::string();
     }},
    {"linkself.txt", [](auto& text, auto&) { return ToHtmlLinkSelfW(text), std::string(); }},
    {"addcharset.txt",
     [](auto& text, auto& name) {
       return std::to_string(AddHtmlCharSetW(text, CharSetName2CodeExact(name)));
     }},
    {"changecharset.txt",
     [](auto& text, auto& name) {
       return std::to_string(ChangeHtmlCharSetW(text, CharSetName2CodeExact(name)));
     }},
    {"getcharset.txt",
     [](auto& text, auto&) {
       std::string charset;
       const int found = GetHtmlCharSetW(text, charset);
       text = Wide(charset);
       return std::to_string(found);
     }},
    {"images.txt",
     [](auto& text, auto&) {
       std::u16string seen;  // shown behind the text
       const int replaced = ConvertImgSrc(text, [&](std::u16string& address) {
         seen += u"\r\n" + address;
         if (!address.starts_with(u"cid:")) return 0;
         address = u"file:///tmp/a&b\"" + address.substr(4);
         return 1;
       });
       text += seen;
       return std::to_string(replaced);
     }},
    {"title.txt",
     [](auto& text, auto&) {
       std::u16string title;
       const int found = GetURLTitle(text, title);
       text = title;
       return std::to_string(found);
     }},
    {"extract.txt",
     [](auto& text, auto& links) {
       return ExtractTextFromHtmlW(text, links == "links"), std::string();
     }},
    {"reading.txt",
     [](auto& text, auto& links) {
       return ExtractTextFromHtmlW2(text, links == "links"), std::string();
     }},
};

}  // namespace lumr
