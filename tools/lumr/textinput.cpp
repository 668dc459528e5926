#include "textinput.h"

#include "charsets.h"
#include "input.h"
#include "lumrmisc/charset/mailcharset.h"
#include "safetext.h"

namespace lumr::tool {

bool ReadText(Session& session, const std::string& file, const std::string& from, CBuffer& utf16) {
  MailCharset charset{CT_UNKNOWN, CharsetSource::kLabel};
  if (!from.empty()) {
    charset.codeType = CodeTypeOfArgument(from, charset.order);
    if (charset.codeType == CT_UNKNOWN) {
      session.Tell({}, Say::kUnknownCharset, {SafeLine(from)});
      session.Raise(kFailed);
      return false;
    }
  }
  std::string content;
  if (const FileError error = ReadAll(file, content)) {
    session.TellUnreadable(file, error);
    return false;
  }
  if (from.empty()) charset = ResolveMailCharset({}, content);
  if (ConvertMailText(charset, content, utf16) == 0) return true;
  const char* const name = CharSetCode2Name(charset.codeType);
  session.Tell(file, Say::kUnreadableText, {name == nullptr ? "" : name});
  session.Raise(kLost);
  return true;
}

}  // namespace lumr::tool
