// Parameters of header values (RFC 2045, 2183), such as the file name of an attachment.
#pragma once

#include <string_view>
#include <vector>

#include "lumrmisc/platform/types.h"

namespace lumr {

struct HeaderParameter {
  CStringA name;  // lower case, without the signs of RFC 2231
  CStringW value;

  bool operator==(const HeaderParameter&) const = default;
};

// Splits a raw header value (`attachment; filename*=utf-8''%41`, folded or not) into what stands
// before the first ";" (returned as it is, white space around it dropped) and its parameters, in
// the order of their first appearance; parameters is replaced.
//
// - Values stand in quotes, "\" before a quoted character, or bare up to the next ";", spaces
//   included. Two-byte characters of raw text are never taken apart for a quote or "\".
// - RFC 2231: name*=charset'language'text with "%XX" bytes; name*0=, name*1*=, ... pieces, in
//   any order, joined as bytes up to the first missing number. A piece that comes twice
//   ends the taking of pieces: two headers have been mixed.
// - Where a name has several forms, the first of these that decodes without a fault is
//   taken: name*, name*0..., name; when none does, the first that is there.
// - Other values are read as DecodeHeaderValue (headerword.h) reads text, since many senders put
//   encoded words there; rawCharset has the same meaning. An empty charset is detected.
// - A parameter without "=" is no parameter. Values hold no control characters, but may hold
//   anything else, path separators too. Linear in the input.
CStringA DecodeHeaderParameters(std::string_view raw, std::vector<HeaderParameter>& parameters,
                                std::string_view rawCharset = {});

// The value of one parameter by its name, ignoring case. 1 when it is there, else 0 (value is
// then empty).
int DecodeHeaderParameter(std::string_view raw, std::string_view name, CStringW& value,
                          std::string_view rawCharset = {});

}  // namespace lumr
