#include "mail.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "lumrmisc/html/htmlcharset.h"
#include "lumrmisc/mailtext/addressheader.h"
#include "mimepart.h"
#include "uublocks.h"

namespace lumr::tool {

namespace {

struct Unref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using Held = std::unique_ptr<T, Unref>;

// The bytes of a message as the array that GMime wants to read from. It stays theirs.
class LentBytes {
 public:
  explicit LentBytes(MailBytes& bytes)
      : array_(g_byte_array_new_take(reinterpret_cast<guint8*>(bytes.data()), bytes.size())) {}
  ~LentBytes() {
    gsize size;
    static_cast<void>(g_byte_array_steal(array_, &size));
    g_byte_array_unref(array_);
  }
  LentBytes(const LentBytes&) = delete;
  LentBytes& operator=(const LentBytes&) = delete;

  GByteArray* Get() const { return array_; }

 private:
  GByteArray* array_;
};

bool IsBlank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n\xC2\xA0") == std::string_view::npos;
}

// Which headers are shown; addresses of fields that come twice are joined.
struct HeaderRow {
  const char* name;
  std::string MailHeaders::*member;
  bool joined;
};
constexpr HeaderRow kHeaders[] = {
    {"From", &MailHeaders::from, true},
    {"To", &MailHeaders::to, true},
    {"Cc", &MailHeaders::cc, true},
    {"Date", &MailHeaders::date, false},
    {"Subject", &MailHeaders::subject, false},
};

const HeaderRow* FindHeaderRow(std::string_view name) {
  for (const HeaderRow& row : kHeaders) {
    if (SameName(name, row.name)) return &row;
  }
  return nullptr;
}

bool IsPlainAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c != '\x1B' && c > 0; });
}

MailHeaders ReadHeaders(const std::vector<HeaderField>& fields) {
  MailHeaders headers;
  for (const HeaderField& field : fields) {
    const HeaderRow* const row = FindHeaderRow(field.name);
    if (row == nullptr) continue;
    std::string& value = headers.*row->member;
    if (!row->joined && !value.empty()) continue;
    const std::string charset = IsPlainAscii(field.value) ? std::string() : RawCharset(fields);
    const std::string decoded = row->joined ? DecodeAddressHeaderUtf8(field.value, charset)
                                            : DecodedHeader(field.value, charset);
    if (!value.empty() && !decoded.empty()) value += ", ";
    value += decoded;
  }
  return headers;
}

std::vector<HeaderField> FieldsOf(GMimeMessage* message) {
  std::vector<HeaderField> fields;
  GMimeHeaderList* const list = g_mime_object_get_header_list(GMIME_OBJECT(message));
  for (int i = 0; i < g_mime_header_list_get_count(list); ++i) {
    GMimeHeader* const header = g_mime_header_list_get_header_at(list, i);
    const char* const raw = g_mime_header_get_raw_value(header);
    fields.push_back({g_mime_header_get_name(header), raw == nullptr ? "" : raw, {}});
  }
  return fields;
}

bool SaysStructure(const HeaderField& field) {
  return SameName(field.name.substr(0, 8), "Content-") || SameName(field.name, "MIME-Version");
}

// Leaves only those fields in the header of a message that say how it is built. The others, often
// some dozens, cost the parser more than all its other work.
void KeepStructure(MailBytes& bytes, const std::vector<HeaderField>& fields, std::size_t body) {
  char* write = bytes.data();
  const auto keep = [&write](std::string_view kept) {
    std::memmove(write, kept.data(), kept.size());
    write += kept.size();
  };
  const std::string_view rest = bytes.View().substr(body);
  for (const HeaderField& field : fields) {
    if (SaysStructure(field)) keep(field.whole);
  }
  keep(rest);
  bytes.resize(static_cast<std::size_t>(write - bytes.data()));
}

// "2" inside "1" is "1.2".
std::string PartId(const std::string& parent, int number) {
  return parent.empty() ? std::to_string(number) : parent + '.' + std::to_string(number);
}

// Walks through the structure of a message and collects.
class MailReader {
 public:
  MailReader(std::size_t size, Mail& mail) : mail_(mail), whole_(size) {}

  // Reads a whole message; headers receives its own.
  void ReadBytes(MailBytes& bytes, const std::string& id, int depth, MailHeaders& headers) {
    std::vector<HeaderField> fields;
    const std::size_t body = SplitHeader(bytes.View(), fields);
    const bool isProper = body != std::string_view::npos;
    if (isProper) {
      headers = ReadHeaders(fields);
      KeepStructure(bytes, fields, body);
      if (bytes.size() == 0) return;  // a header and no more
    }
    const LentBytes array(bytes);  // outlives what GMime makes of it
    const Held<GMimeMessage> message(Parse(array, bytes.View()));
    if (message == nullptr) {
      // Cut off inside its header: the fields before the cut are all that there is.
      if (!isProper) headers = ReadHeaders(fields);
      return Skip(id, "message/rfc822", Say::kNoContent);
    }
    if (!isProper) headers = ReadHeaders(FieldsOf(message.get()));
    const std::string_view outer = std::exchange(bytes_, bytes.View());
    const char* const outerBoundary = std::exchange(boundary_, nullptr);
    Message(message.get(), id, depth);
    if (IsCutOff(message.get())) Note(id, {}, Say::kTruncated, true);
    bytes_ = outer;
    boundary_ = outerBoundary;
  }

 private:
  enum class Mode {
    kShow,
    kListOnly,  // of an alternative that was not taken: only what is attached inside
  };

  static GMimeMessage* Parse(const LentBytes& array, std::string_view bytes) {
    const Held<GMimeStream> stream(g_mime_stream_mem_new_with_byte_array(array.Get()));
    g_mime_stream_mem_set_owner(GMIME_STREAM_MEM(stream.get()), FALSE);
    const Held<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
    if (bytes.substr(0, 5) == "From ") {
      g_mime_parser_set_format(parser.get(), GMIME_FORMAT_MBOX);
    }
    return g_mime_parser_construct_message(parser.get(), nullptr);
  }

  // Whether the outermost multipart lacks its closing boundary.
  bool IsCutOff(GMimeMessage* message) const {
    GMimeObject* const root = g_mime_message_get_mime_part(message);
    if (root == nullptr || !GMIME_IS_MULTIPART(root)) return false;
    const char* const boundary = g_mime_multipart_get_boundary(GMIME_MULTIPART(root));
    const char* const prologue = g_mime_multipart_get_prologue(GMIME_MULTIPART(root));
    if (g_mime_multipart_get_count(GMIME_MULTIPART(root)) == 0) {
      return prologue == nullptr || IsBlank(prologue);
    }
    if (boundary == nullptr) return false;
    return bytes_.rfind("--" + std::string(boundary) + "--") == std::string_view::npos;
  }

  void Message(GMimeMessage* message, const std::string& id, int depth) {
    GMimeObject* const root = g_mime_message_get_mime_part(message);
    if (root == nullptr) return;
    Entity(root, GMIME_IS_MULTIPART(root) ? id : PartId(id, 1), depth, Mode::kShow);
  }

  void Entity(GMimeObject* object, const std::string& id, int depth, Mode mode) {
    if (depth > kMaxDepth) {
      Skip(id, {}, Say::kTooDeep);
    } else if (GMIME_IS_MULTIPART(object)) {
      Multipart(GMIME_MULTIPART(object), id, depth, mode);
    } else {
      Leaf(object, id, depth, mode);
    }
  }

  void Multipart(GMimeMultipart* multipart, const std::string& id, int depth, Mode mode) {
    const int count = g_mime_multipart_get_count(multipart);
    GMimeContentType* const type = g_mime_object_get_content_type(GMIME_OBJECT(multipart));
    if (count == 0 && mode == Mode::kShow) {
      const char* const text = g_mime_multipart_get_prologue(multipart);
      if (text == nullptr) return;
      return WithoutParts(text, g_mime_content_type_get_media_subtype(type), id, depth);
    }
    if (mode == Mode::kShow && g_mime_content_type_is_type(type, "multipart", "alternative")) {
      return Alternative(multipart, id, depth);
    }
    for (int i = 0; i < count; ++i) {
      boundary_ = g_mime_multipart_get_boundary(multipart);
      Entity(g_mime_multipart_get_part(multipart, i), PartId(id, i + 1), depth + 1, mode);
    }
  }

  // Plain text first; HTML where the plain text is blank, as some mailers leave it.
  void Alternative(GMimeMultipart* multipart, const std::string& id, int depth) {
    std::vector<Rank> ranks;
    for (int i = 0; i < g_mime_multipart_get_count(multipart); ++i) {
      ranks.push_back(RankOf(g_mime_multipart_get_part(multipart, i), depth + 1));
    }
    const auto read = [&](std::size_t index, Mode mode) {
      const int number = static_cast<int>(index);
      boundary_ = g_mime_multipart_get_boundary(multipart);
      Entity(g_mime_multipart_get_part(multipart, number), PartId(id, number + 1), depth + 1, mode);
    };
    std::size_t taken = ranks.size();
    const Tail before = TailNow();
    for (const Rank rank : {Rank::kPlain, Rank::kHtml, Rank::kOtherText}) {
      const auto candidate = std::find(ranks.begin(), ranks.end(), rank);
      if (candidate == ranks.end()) continue;
      CutTo(before);
      taken = static_cast<std::size_t>(candidate - ranks.begin());
      read(taken, Mode::kShow);
      if (!IsBlankSince(before)) break;
    }
    for (std::size_t i = 0; i < ranks.size(); ++i) {
      if (i != taken) read(i, Mode::kListOnly);
    }
  }

  // Where the collections of mail_ end.
  struct Tail {
    std::size_t parts, attachments, notes;
  };
  Tail TailNow() const {
    return {mail_.parts.size(), mail_.attachments.size(), mail_.notes.size()};
  }
  void CutTo(const Tail& tail) {
    mail_.parts.resize(tail.parts);
    mail_.attachments.resize(tail.attachments);
    mail_.notes.resize(tail.notes);
  }
  bool IsBlankSince(const Tail& tail) const {
    return std::all_of(mail_.parts.begin() + static_cast<std::ptrdiff_t>(tail.parts),
                       mail_.parts.end(),
                       [](const MailPart& part) { return IsBlank(part.text.utf8.View()); });
  }

  // A multipart whose boundary never comes. Where the header lost it, the text still has it;
  // otherwise what stands there is text.
  void WithoutParts(std::string_view text, std::string_view subtype, const std::string& id,
                    int depth) {
    if (IsBlank(text)) return;
    const std::string_view boundary = GuessBoundary(text);
    if (!boundary.empty() && depth < kMaxDepth && MayCopy(text.size())) {
      Note(id, {}, Say::kBoundaryGuessed, false);
      MailBytes& bytes = *mail_.inner.emplace_back(std::make_unique<MailBytes>());
      for (const std::string_view piece :
           {std::string_view("Content-Type: multipart/"), subtype,
            std::string_view("; boundary=\""), boundary, std::string_view("\"\n\n"), text}) {
        bytes.append(piece);
      }
      MailHeaders none;
      return ReadBytes(bytes, id, depth + 1, none);
    }
    auto copy = std::make_unique<CBuffer>();
    *copy = text;
    Note(id, {}, Say::kNoParts, true);
    AddText("text/plain", id.empty() ? "1" : id, {}, HeldBytes(std::move(copy)));
  }

  void Leaf(GMimeObject* object, const std::string& id, int depth, Mode mode) {
    const LeafInfo leaf(object);
    const std::string_view raw = RawContent(object);
    if (GMIME_IS_MESSAGE_PART(object)) {
      InnerMessage(GMIME_MESSAGE_PART(object), leaf, id, depth, mode);
    } else if (leaf.IsMessage()) {
      EncodedMessage(leaf, raw, id, depth, mode);
    } else if (leaf.IsMultipart()) {
      if (mode == Mode::kShow) WithoutParts(raw, leaf.type.substr(kMultipart.size()), id, depth);
    } else if (!leaf.IsShown()) {
      Attach(leaf, id, leaf.name, DecodedSize(leaf.transfer, raw));
    } else {
      if (!leaf.name.empty()) Attach(leaf, id, leaf.name, DecodedSize(leaf.transfer, raw));
      if (mode == Mode::kShow) Text(leaf, raw, id);
    }
  }

  // The bytes of a part as they stand in the message.
  std::string_view RawContent(GMimeObject* object) const {
    if (!GMIME_IS_PART(object)) return {};
    GMimeDataWrapper* const content = g_mime_part_get_content(GMIME_PART(object));
    if (content == nullptr) return {};
    GMimeStream* const stream = g_mime_data_wrapper_get_stream(content);
    const auto begin = static_cast<std::size_t>(stream->bound_start);
    const auto end =
        stream->bound_end < 0 ? bytes_.size() : static_cast<std::size_t>(stream->bound_end);
    return end > begin && end <= bytes_.size() ? bytes_.substr(begin, end - begin)
                                               : std::string_view();
  }

  void Text(const LeafInfo& leaf, std::string_view raw, const std::string& id) {
    bool wellFormed;
    const bool isProse = leaf.transfer == Transfer::kBase64 && IsProse(raw);
    const Transfer transfer = isProse ? Transfer::kNone : leaf.transfer;
    HeldBytes plain = DecodeTransfer(transfer, raw, wellFormed);
    if (isProse) Note(id, leaf.type, Say::kNotBase64, false);
    if (!wellFormed) Note(id, leaf.type, Say::kMalformedTransfer, true);
    if (transfer == Transfer::kUnknown) Note(id, leaf.type, Say::kUnknownTransfer, false);
    std::vector<UuFile> files;
    if (leaf.type == "text/plain") plain = CutUuFiles(std::move(plain), files);
    for (const UuFile& file : files) {
      mail_.attachments.push_back({id, DecodedHeader(file.name), "x-uuencode", file.size});
    }
    AddText(leaf.type, id, leaf.label, std::move(plain));
  }

  void AddText(const std::string& type, const std::string& id, std::string label, HeldBytes plain) {
    MailPart part;
    part.id = id;
    part.type = type;
    part.kind = type == "text/html" ? PartKind::kHtml : PartKind::kText;
    part.label = std::move(label);
    part.source = std::move(plain);
    const std::string_view bytes = part.source.View();
    part.text = part.kind == PartKind::kHtml
                    ? DecodeText(ResolveHtmlCharset(part.label, bytes), bytes)
                    : DecodeText(part.label, bytes);
    NoteCharset(part);
    mail_.parts.push_back(std::move(part));
  }

  void NoteCharset(const MailPart& part) {
    const MailCharset charset = part.text.charset;
    const char* const name = CharSetCode2Name(charset.codeType);
    const std::string readAs = name == nullptr ? std::string() : name;
    if (charset.source == CharsetSource::kNoLabel && charset.codeType != CT_ASCII) {
      Note(part.id, part.type, Say::kNoLabel, false, part.label, readAs);
    } else if (charset.source == CharsetSource::kUnknownLabel) {
      Note(part.id, part.type, Say::kUnknownLabel, false, part.label, readAs);
    } else if (charset.source == CharsetSource::kLabelLies) {
      Note(part.id, part.type, Say::kLabelLies, false, part.label, readAs);
    }
  }

  // A message inside the message. Who forwards mail "as attachment" wants it read, so its
  // disposition does not matter.
  void InnerMessage(GMimeMessagePart* part, const LeafInfo& leaf, const std::string& id, int depth,
                    Mode mode) {
    GMimeMessage* const message = g_mime_message_part_get_message(part);
    if (message == nullptr) return Skip(id, leaf.type, Say::kNoContent);
    const std::string_view bytes = BytesOf(message);
    std::vector<HeaderField> fields;
    if (SplitHeader(bytes, fields) == std::string_view::npos) fields = FieldsOf(message);
    MailHeaders headers = ReadHeaders(fields);
    Attach(leaf, id, leaf.name.empty() ? headers.subject : leaf.name,
           static_cast<long long>(bytes.size()));
    if (mode == Mode::kListOnly) return;
    mail_.parts.push_back({id, leaf.type, PartKind::kMessage, {}, {}, {}, std::move(headers)});
    Message(message, id, depth + 1);
  }

  // The bytes of a message inside this one: from its first field to the boundary of the multipart
  // that it stands in.
  std::string_view BytesOf(GMimeMessage* message) const {
    const gint64 begin = std::min(FirstField(GMIME_OBJECT(message)),
                                  FirstField(g_mime_message_get_mime_part(message)));
    if (begin < 0 || static_cast<std::uint64_t>(begin) >= bytes_.size()) return {};
    const std::string_view rest = bytes_.substr(static_cast<std::size_t>(begin));
    if (boundary_ == nullptr) return rest;
    return rest.substr(0, rest.find("\n--" + std::string(boundary_)));
  }

  // The offset of the first header field of a message or part; G_MAXINT64 when there is none.
  static gint64 FirstField(GMimeObject* object) {
    if (object == nullptr) return G_MAXINT64;
    GMimeHeaderList* const list = g_mime_object_get_header_list(object);
    if (g_mime_header_list_get_count(list) == 0) return G_MAXINT64;
    return g_mime_header_get_offset(g_mime_header_list_get_header_at(list, 0));
  }

  // Messages that stand encoded inside one another are copied; mail that does so again and again
  // is made to fill the memory.
  bool MayCopy(std::size_t size) {
    copied_ += size;
    return copied_ <= 4 * whole_ + (std::size_t{1} << 20);
  }

  // The same in Base64 or quoted-printable, which RFC 2046 forbids and mailers do.
  void EncodedMessage(const LeafInfo& leaf, std::string_view raw, const std::string& id, int depth,
                      Mode mode) {
    if (depth >= kMaxDepth || !MayCopy(raw.size())) return Skip(id, leaf.type, Say::kTooDeep);
    bool wellFormed;
    const HeldBytes plain = DecodeTransfer(leaf.transfer, raw, wellFormed);
    Attach(leaf, id, leaf.name, static_cast<long long>(plain.View().size()));
    if (mode == Mode::kListOnly) return;
    if (!LooksLikeMail(plain.View())) return Skip(id, leaf.type, Say::kNotMail);
    if (!wellFormed) Note(id, leaf.type, Say::kMalformedTransfer, true);
    const std::size_t attachment = mail_.attachments.size() - 1;
    const std::size_t part = mail_.parts.size();
    mail_.parts.push_back({id, leaf.type, PartKind::kMessage, {}, {}, {}, {}});
    MailBytes& bytes = *mail_.inner.emplace_back(std::make_unique<MailBytes>());
    bytes.append(plain.View());
    MailHeaders headers;
    ReadBytes(bytes, id, depth + 1, headers);
    if (leaf.name.empty()) mail_.attachments[attachment].name = headers.subject;
    mail_.parts[part].headers = std::move(headers);
  }

  void Attach(const LeafInfo& leaf, const std::string& id, const std::string& name,
              long long size) {
    mail_.attachments.push_back({id, name, leaf.type, size});
  }

  void Note(const std::string& id, const std::string& type, Say what, bool lost,
            const std::string& label = {}, const std::string& argument = {}) {
    mail_.notes.push_back({id, type, what, label, argument, lost, false});
  }

  void Skip(const std::string& id, const std::string& type, Say why) {
    mail_.notes.push_back({id, type, why, {}, {}, true, true});
  }

  Mail& mail_;
  std::size_t whole_;               // bytes of the outermost message
  std::size_t copied_ = 0;          // bytes of those inside that had to be copied
  std::string_view bytes_;          // of the message that is being read
  const char* boundary_ = nullptr;  // of the multipart around the part that is being read
};

constexpr std::string_view kFieldNameChars =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.";

// Old Macintosh mailers and some archives end lines in CR alone, which no parser takes.
void MendLineEnds(MailBytes& bytes) {
  if (bytes.View().find('\n') != std::string_view::npos) return;
  std::replace(bytes.data(), bytes.data() + bytes.size(), '\r', '\n');
}

}  // namespace

MailBytes::~MailBytes() {
  g_free(data_);
}

void MailBytes::resize(std::size_t size) {
  if (size > capacity_) {
    const std::size_t capacity = std::max(size, capacity_ + capacity_ / 2);
    // g_malloc would end the program.
    void* const grown = g_try_realloc(data_, capacity);
    if (grown == nullptr) throw std::bad_alloc();
    data_ = static_cast<char*>(grown);
    capacity_ = capacity;
  }
  size_ = size;
}

void MailBytes::append(std::string_view bytes) {
  const std::size_t used = size_;
  resize(used + bytes.size());
  if (!bytes.empty()) std::memcpy(data_ + used, bytes.data(), bytes.size());
}

std::string RawCharset(const std::vector<HeaderField>& fields) {
  for (const HeaderField& field : fields) {
    if (!SameName(field.name, "Content-Type")) continue;
    return ParameterHeader(field.value, {}).Parameter("charset");
  }
  return {};
}

bool LooksLikeMail(std::string_view bytes) {
  bytes.remove_prefix(std::min(bytes.size(), bytes.find_first_not_of(" \t\r\n")));
  if (bytes.substr(0, 5) == "From " || bytes.substr(0, 6) == ">From ") return true;
  // Field names may hold any printable character; those of mail hold these.
  const std::size_t name = std::min(bytes.size(), bytes.find_first_not_of(kFieldNameChars));
  std::size_t colon = name;  // the obsolete form of RFC 5322 has white space before the colon
  while (colon < bytes.size() && (bytes[colon] == ' ' || bytes[colon] == '\t')) ++colon;
  return name > 0 && colon < bytes.size() && bytes[colon] == ':';
}

void ReadMail(MailBytes& bytes, Mail& mail) {
  static const bool initialised = (g_mime_init(), true);
  static_cast<void>(initialised);
  if (!LooksLikeMail(bytes.View())) {
    mail.notes.push_back({{}, {}, Say::kNotMail, {}, {}, true, true});
    return;
  }
  mail.isMail = true;
  MendLineEnds(bytes);
  MailReader(bytes.size(), mail).ReadBytes(bytes, {}, 0, mail.headers);
}

}  // namespace lumr::tool
