// The message table: texts by number, in Japanese or English.
#pragma once

#include <string_view>

#include "lumrmisc/platform/types.h"

namespace lumr {

enum class MessageLanguage { kJapanese, kEnglish };

// Texts of the library's own; the other ids are numbers that users know. Errors of files have
// 10000 + FileErrorKind.
enum MessageId : unsigned {
  kMessageUnknownError = 10050,  // before the error's number
  kMessageRetryButton = 10100,
  kMessageCancelButton,
  kMessageContinueButton,
  kMessageYesButton,
  kMessageNoButton,
  kMessageOkButton,
};

// The language that texts are handed out in; Japanese until the host chooses, once at start.
void SetMessageLanguage(MessageLanguage language);
MessageLanguage GetMessageLanguage();

// The text in the current code page of the calling thread. Where that page cannot hold the
// Japanese text, the English one. An unknown id gives an empty text.
CStringA MessageText(unsigned id);
// The same in UTF-8, whatever the code page, and in UTF-16.
std::string MessageTextUtf8(unsigned id);
CStringW MessageTextW(unsigned id);
CStringW MessageTextW(unsigned id, MessageLanguage language);

// Text in the current code page of the calling thread, "?" for what it lacks. Gives false when
// anything was fitted or replaced.
bool EncodeInCurrentCodePage(std::u16string_view text, CStringA& out);

}  // namespace lumr
