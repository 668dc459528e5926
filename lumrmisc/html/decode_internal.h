// Text in which the character references are decoded, as the HTML standard has it.
#pragma once

#include <string>
#include <string_view>

#include "lumrmisc/html/characterreference_internal.h"
#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {

inline void AppendDecoded(std::u16string_view text, bool inAttribute, std::u16string& out) {
  std::size_t done = 0;
  for (std::size_t pos = FindUnit(text, 0, u'&'); pos < text.size();) {
    const CharacterReference reference = ReadCharacterReference(text.substr(pos), inAttribute);
    if (reference.length > 0) {
      out.append(text, done, pos - done).append(reference.units, reference.count);
      done = pos + reference.length;
    }
    pos = FindUnit(text, reference.length > 0 ? done : pos + 1, u'&');
  }
  out.append(text, done);
}

}  // namespace lumr
