// What GMime's objects say of themselves, read by the library: types, names, charset labels.
#pragma once

#include <gmime/gmime.h>

#include <string>
#include <string_view>
#include <vector>

#include "lumrmisc/mailtext/headerparam.h"
#include "textdecode.h"

namespace lumr::tool {

inline constexpr int kMaxDepth = 50;  // of parts inside parts; no mailer goes beyond some ten
inline constexpr std::string_view kMultipart = "multipart/";

// The raw value of a header of a part; empty when there is none.
std::string_view RawHeader(GMimeObject* object, const char* name);

// A header value of the form "value; name=parameter".
class ParameterHeader {
 public:
  ParameterHeader(std::string_view raw, std::string_view rawCharset);

  const std::string& Value() const { return value_; }  // in lower case
  std::string Parameter(std::string_view name) const;  // UTF-8; empty when there is none

 private:
  std::vector<HeaderParameter> parameters_;
  std::string value_;
};

// The headers of a part that is no multipart.
struct LeafInfo {
  explicit LeafInfo(GMimeObject* object);

  ParameterHeader contentType;
  std::string label;  // of the charset
  ParameterHeader disposition;
  Transfer transfer;
  std::string type;  // "text/plain"
  std::string name;  // of the file; may be empty
  bool isAttachment;

  bool IsShown() const;      // as text
  bool IsMessage() const;    // a message inside the message
  bool IsMultipart() const;  // one that GMime found no parts in
};

// How willingly an alternative is taken: plain text, HTML, any other text, nothing to show.
enum class Rank { kNothing, kOtherText, kHtml, kPlain };
Rank RankOf(GMimeObject* object, int depth);

// The boundary that the parts of a multipart's text begin with; empty when the text does not begin
// with one that comes again.
std::string_view GuessBoundary(std::string_view text);

}  // namespace lumr::tool
