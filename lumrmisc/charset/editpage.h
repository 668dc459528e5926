// The multibyte page that text of a code type is edited in.
#pragma once

#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/platform/mbcs.h"

namespace lumr {

// The page of the code type's edit form; the current one where the code type has none of its own.
// Text of the Unicode code types is UTF-16 and asks for none.
inline const MbcsPage& EditPageOf(CodeType codeType) {
  const unsigned codePage = CharSetCode2CodePage(CodeTypeSave2Edit(codeType));
  const MbcsPage* const page = codePage == 0 ? nullptr : FindMbcsPage(codePage);
  return page == nullptr ? CurrentMbcsPage() : *page;
}

}  // namespace lumr
