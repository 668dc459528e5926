#include "mimepart.h"

#include <algorithm>
#include <iterator>

namespace lumr::tool {

namespace {

bool StartsWith(std::string_view text, std::string_view begin) {
  return text.substr(0, begin.size()) == begin;
}

constexpr std::string_view kMessageTypes[] = {"message/rfc822", "message/global", "message/news"};

// Text types that are files rather than something to read, unless nothing says so.
constexpr std::string_view kFileTextTypes[] = {"text/calendar",   "text/vcard", "text/x-vcard",
                                               "text/directory",  "text/css",   "text/csv",
                                               "text/javascript", "text/xml",   "text/rtf"};

// Parts of bounces and receipts that are plain text.
constexpr std::string_view kTextualTypes[] = {
    "message/delivery-status", "message/global-delivery-status", "message/disposition-notification",
    "message/feedback-report"};

template <typename Table>
bool IsOneOf(const Table& table, std::string_view type) {
  return std::find(std::begin(table), std::end(table), type) != std::end(table);
}

// The Content-Type of a part. Where it comes twice, the one that GMime went by.
ParameterHeader ContentTypeOf(GMimeObject* object) {
  GMimeContentType* const type = g_mime_object_get_content_type(object);
  const std::string taken = std::string(g_mime_content_type_get_media_type(type)) + '/' +
                            g_mime_content_type_get_media_subtype(type);
  ParameterHeader first(RawHeader(object, "Content-Type"), {});
  if (g_ascii_strcasecmp(first.Value().c_str(), taken.c_str()) == 0) return first;
  GMimeHeaderList* const list = g_mime_object_get_header_list(object);
  for (int i = 0; i < g_mime_header_list_get_count(list); ++i) {
    GMimeHeader* const header = g_mime_header_list_get_header_at(list, i);
    const char* const raw = g_mime_header_get_raw_value(header);
    const bool isType = g_ascii_strcasecmp(g_mime_header_get_name(header), "Content-Type") == 0;
    if (!isType || raw == nullptr) continue;
    ParameterHeader other(raw, {});
    if (g_ascii_strcasecmp(other.Value().c_str(), taken.c_str()) == 0) return other;
  }
  return first;
}

}  // namespace

std::string_view RawHeader(GMimeObject* object, const char* name) {
  GMimeHeader* const header =
      g_mime_header_list_get_header(g_mime_object_get_header_list(object), name);
  const char* const raw = header == nullptr ? nullptr : g_mime_header_get_raw_value(header);
  return raw == nullptr ? std::string_view() : std::string_view(raw);
}

ParameterHeader::ParameterHeader(std::string_view raw, std::string_view rawCharset)
    : value_(DecodeHeaderParameters(raw, parameters_, rawCharset)) {
  value_.resize(std::min(value_.size(), value_.find_first_of("( \t\r\n")));
  for (char& c : value_) c = g_ascii_tolower(c);
}

std::string ParameterHeader::Parameter(std::string_view name) const {
  for (const HeaderParameter& parameter : parameters_) {
    if (parameter.name == name) return Utf8(parameter.value);
  }
  return {};
}

LeafInfo::LeafInfo(GMimeObject* object)
    : contentType(ContentTypeOf(object)),
      label(contentType.Parameter("charset")),
      disposition(RawHeader(object, "Content-Disposition"), label),
      transfer(TransferOf(RawHeader(object, "Content-Transfer-Encoding"))),
      type(contentType.Value()),
      name(disposition.Parameter("filename")),
      isAttachment(disposition.Value() == "attachment") {
  if (type.find('/') == std::string::npos) {
    // RFC 2045, 5.2: no type, or none that can be read, means plain text. Inside a digest the
    // default is a message, which GMime knows.
    type = GMIME_IS_MESSAGE_PART(object) ? "message/rfc822" : "text/plain";
  }
  if (name.empty()) name = contentType.Parameter("name");
}

bool LeafInfo::IsShown() const {
  const bool isReadable =
      (StartsWith(type, "text/") && !IsOneOf(kFileTextTypes, type)) || IsOneOf(kTextualTypes, type);
  return isReadable && !isAttachment;
}

bool LeafInfo::IsMessage() const {
  return IsOneOf(kMessageTypes, type);
}

bool LeafInfo::IsMultipart() const {
  return StartsWith(type, kMultipart);
}

// Goes by what GMime says of the headers: a wrong answer costs no more than the second-best
// alternative.
Rank RankOf(GMimeObject* object, int depth) {
  if (depth > kMaxDepth) return Rank::kNothing;
  if (GMIME_IS_MULTIPART(object)) {
    Rank best = Rank::kNothing;
    auto* const multipart = GMIME_MULTIPART(object);
    for (int i = 0; i < g_mime_multipart_get_count(multipart); ++i) {
      best = std::max(best, RankOf(g_mime_multipart_get_part(multipart, i), depth + 1));
    }
    return best;
  }
  const char* const disposition = g_mime_object_get_disposition(object);
  if (disposition != nullptr && g_ascii_strcasecmp(disposition, "attachment") == 0) {
    return Rank::kNothing;
  }
  GMimeContentType* const type = g_mime_object_get_content_type(object);
  if (g_mime_content_type_is_type(type, "text", "plain")) return Rank::kPlain;
  if (g_mime_content_type_is_type(type, "text", "html")) return Rank::kHtml;
  return LeafInfo(object).IsShown() ? Rank::kOtherText : Rank::kNothing;
}

std::string_view GuessBoundary(std::string_view text) {
  text.remove_prefix(std::min(text.size(), text.find_first_not_of(" \t\r\n")));
  const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
  constexpr std::size_t kLongest = 2 + 70;  // RFC 2046
  if (!StartsWith(line, "--") || line.size() < 6 || line.size() > kLongest) return {};
  const auto isBoundaryChar = [](char c) { return c > ' ' && c < 0x7F && c != '"' && c != '\\'; };
  if (!std::all_of(line.begin(), line.end(), isBoundaryChar)) return {};
  const std::string again = '\n' + std::string(line);
  return text.find(again) == std::string_view::npos ? std::string_view() : line.substr(2);
}

}  // namespace lumr::tool
