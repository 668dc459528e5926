#include <string>

#include "lumrmisc/platform/files.h"
#include "lumrmisc/platform/files_internal.h"
#include "lumrmisc/platform/messages.h"

namespace lumr {
namespace {

constexpr unsigned kFirstErrorMessage = 10000;  // + FileErrorKind

CStringW ErrorText(FileError error, MessageLanguage language) {
  if (!error) return {};
  CStringW text = internal::SystemWords(error, language);
  if (!text.empty()) return text;
  const FileErrorKind kind = KindOf(error);
  if (kind != FileErrorKind::kOther) {
    return MessageTextW(kFirstErrorMessage + static_cast<unsigned>(kind), language);
  }
  text = internal::SystemWords(error, MessageLanguage::kEnglish);
  if (!text.empty()) return text;
  text = MessageTextW(kMessageUnknownError, language);
  for (const char digit : std::to_string(error.code)) text += static_cast<char16_t>(digit);
  return text;
}

}  // namespace

CStringW SystemErrorTextW(FileError error) {
  return ErrorText(error, GetMessageLanguage());
}

CStringA SystemErrorText(FileError error) {
  CStringA text;
  if (EncodeInCurrentCodePage(SystemErrorTextW(error), text)) return text;
  EncodeInCurrentCodePage(ErrorText(error, MessageLanguage::kEnglish), text);
  return text;
}

}  // namespace lumr
