#include "lumrmisc/editor/characterlist.h"

#include "lumrmisc/charset/editpage.h"
#include "lumrmisc/editor/linetext_internal.h"

namespace lumr {

void CharacterList::Assign(std::string_view list, CodeType codeType) {
  const MbcsPage* const page = IsCodeTypeUnicode(codeType) ? nullptr : &EditPageOf(codeType);
  if (page == page_ && list_.Bytes() == list) return;
  list_ = list;
  page_ = page;
  bits_.fill(0);
  WithLineText(page, list, [this](const auto& text) {
    for (std::size_t pos = 0; pos < text.Size(); pos += text.CharLength(pos)) Add(text.At(pos));
  });
}

}  // namespace lumr
