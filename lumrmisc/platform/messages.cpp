#include "lumrmisc/platform/messages.h"

#include <algorithm>
#include <atomic>
#include <iterator>

#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/mbcs.h"

namespace lumr {
namespace {

struct MessageRow {
  unsigned id;
  std::u16string_view japanese;
  std::u16string_view english;
};

constexpr MessageRow kMessages[] = {
#include "lumrmisc/platform/messages_table.inc"
};

constexpr bool LessById(const MessageRow& a, const MessageRow& b) {
  return a.id < b.id;
}
static_assert(std::is_sorted(std::begin(kMessages), std::end(kMessages), LessById));

std::atomic<MessageLanguage> messageLanguage{MessageLanguage::kJapanese};

std::u16string_view TextOf(unsigned id, MessageLanguage language) {
  const auto row = std::lower_bound(std::begin(kMessages), std::end(kMessages),
                                    MessageRow{id, {}, {}}, LessById);
  if (row == std::end(kMessages) || row->id != id) return {};
  return language == MessageLanguage::kJapanese ? row->japanese : row->english;
}

bool Encode(unsigned codePage, std::u16string_view text, std::string& out) {
  CodePageEncoder encoder(codePage, "?");
  const std::string_view bytes(reinterpret_cast<const char*>(text.data()), text.size() * 2);
  out.resize(encoder.MaxOutput(bytes.size()));
  out.resize(static_cast<std::size_t>(encoder.Encode(bytes, true, out.data()) - out.data()));
  return encoder.Counts().fits == 0 && encoder.Counts().replaced == 0;
}

}  // namespace

void SetMessageLanguage(MessageLanguage language) {
  messageLanguage = language;
}
MessageLanguage GetMessageLanguage() {
  return messageLanguage;
}

CStringA MessageText(unsigned id) {
  CStringA text;
  if (EncodeInCurrentCodePage(TextOf(id, messageLanguage), text)) return text;
  EncodeInCurrentCodePage(TextOf(id, MessageLanguage::kEnglish), text);
  return text;
}

std::string MessageTextUtf8(unsigned id) {
  const std::u16string_view text = TextOf(id, messageLanguage);
  std::string utf8;
  Encode(65001, text, utf8);
  return utf8;
}

CStringW MessageTextW(unsigned id) {
  return MessageTextW(id, messageLanguage);
}

CStringW MessageTextW(unsigned id, MessageLanguage language) {
  return CStringW(TextOf(id, language));
}

bool EncodeInCurrentCodePage(std::u16string_view text, CStringA& out) {
  return Encode(CurrentCodePage(), text, out);
}

}  // namespace lumr
