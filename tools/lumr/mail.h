// A mail message read into what `lumr show` prints: MIME structure by GMime, text by the
// library.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "headerfields.h"
#include "textdecode.h"
#include "texts.h"

namespace lumr::tool {

// The bytes of a message, in a block that GMime can read in place. Has of std::string what
// reading a file needs; new bytes are undefined.
class MailBytes {
 public:
  MailBytes() = default;
  ~MailBytes();
  MailBytes(const MailBytes&) = delete;
  MailBytes& operator=(const MailBytes&) = delete;

  std::size_t size() const { return size_; }
  char* data() { return data_; }
  void resize(std::size_t size);
  void append(std::string_view bytes);

  std::string_view View() const { return {data_, size_}; }

 private:
  char* data_ = nullptr;  // of g_malloc
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

// Decoded, but not yet safe for a terminal.
struct MailHeaders {
  std::string from, to, cc, date, subject;
};

enum class PartKind {
  kText,     // text and label are set
  kHtml,     // the same; text is HTML source
  kMessage,  // headers of a message inside the message; its parts follow
};

struct MailPart {
  std::string id;  // "2.1": the first part inside the second one
  std::string type;
  PartKind kind;
  std::string label;  // the charset label as it stands in the mail
  HeldBytes source;   // what text may be a view of
  DecodedText text;
  MailHeaders headers;
};

struct MailAttachment {
  std::string id;
  std::string name;  // decoded, not safe for a terminal; may be empty
  std::string type;
  long long size;  // bytes when decoded
};

// Something to say about a part, or about the whole message when id is empty.
struct MailNote {
  std::string id;
  std::string type;
  Say what;
  std::string label;     // {0} of the sentence
  std::string argument;  // {1} of the sentence
  bool lost;             // something was lost or is invalid
  bool skipped;          // the part is not shown
};

struct Mail {
  MailHeaders headers;
  std::vector<MailPart> parts;  // what is shown, in order
  std::vector<MailAttachment> attachments;
  std::vector<MailNote> notes;
  std::vector<std::unique_ptr<MailBytes>> inner;  // messages that stood encoded inside
  bool isMail = false;
};

// The charset of raw text in a header, as far as the header tells: who writes raw text there writes
// it in the charset of the body.
std::string RawCharset(const std::vector<HeaderField>& fields);

// Whether the bytes begin as a message does, with a header field (or a "From " line).
bool LooksLikeMail(std::string_view bytes);

// Reads a message into an empty mail. The bytes are changed on the way (line ends mended, fields
// of the header that are read taken out) and must outlive mail, whose texts may be views of them.
// Bytes that are no mail give a note.
void ReadMail(MailBytes& bytes, Mail& mail);

}  // namespace lumr::tool
