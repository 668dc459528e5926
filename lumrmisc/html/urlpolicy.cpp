#include "lumrmisc/html/urlpolicy_internal.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "lumrmisc/html/linkhost_internal.h"
#include "lumrmisc/html/nametable_internal.h"

namespace lumr {
namespace {

enum class SchemeKind { kWeb, kMail, kOpaque, kCid, kData, kScript };

struct SchemeRow {
  std::u16string_view name;
  SchemeKind kind;
};
constexpr auto kSchemes = std::to_array<SchemeRow>({{u"http", SchemeKind::kWeb},
                                                    {u"https", SchemeKind::kWeb},
                                                    {u"ftp", SchemeKind::kWeb},
                                                    {u"mailto", SchemeKind::kMail},
                                                    {u"tel", SchemeKind::kOpaque},
                                                    {u"cid", SchemeKind::kCid},
                                                    {u"data", SchemeKind::kData},
                                                    {u"javascript", SchemeKind::kScript},
                                                    {u"vbscript", SchemeKind::kScript},
                                                    {u"livescript", SchemeKind::kScript}});
constexpr NameTable kSchemeTable(kSchemes);

constexpr std::u16string_view kRasterImages[] = {u"image/png;base64,",  u"image/gif;base64,",
                                                 u"image/jpeg;base64,", u"image/jpg;base64,",
                                                 u"image/webp;base64,", u"image/bmp;base64,"};

void AppendPercentByte(unsigned byte, CStringW& out) {
  constexpr std::u16string_view kDigits = u"0123456789ABCDEF";
  out += {u'%', kDigits[byte >> 4], kDigits[byte & 15]};
}

void AppendPercentEscaped(char16_t unit, CStringW& out) {
  if (unit < 0x80) {
    AppendPercentByte(unit, out);
  } else if (unit < 0x800) {
    AppendPercentByte(0xC0u | unit >> 6, out);
    AppendPercentByte(0x80u | (unit & 63u), out);
  } else {
    AppendPercentByte(0xE0u | unit >> 12, out);
    AppendPercentByte(0x80u | (unit >> 6 & 63u), out);
    AppendPercentByte(0x80u | (unit & 63u), out);
  }
}

// What may not stand in an address as it is: blanks and controls, quotes and brackets, and what is
// not seen or turns the direction of what is seen.
bool NeedsEscape(char16_t unit) {
  if (unit < 0x80) {
    return unit <= 0x20 || unit == 0x7F || unit == u'"' || unit == u'<' || unit == u'>' ||
           unit == u'`' || unit == u'\\' || unit == u'{' || unit == u'}';
  }
  return unit < 0xA1 || unit == 0x00AD || unit == 0x061C || unit == 0x180E ||
         (unit >= 0x2000 && unit < 0x2010) || (unit >= 0x2028 && unit < 0x2030) ||
         (unit >= 0x205F && unit < 0x2070) || unit == 0x3000 || unit == 0x3164 || unit >= 0xFFF0 ||
         unit == 0xFEFF || unit == 0xFFA0;
}

// The rest of an address behind scheme and host.
void AppendRest(std::u16string_view rest, bool isWeb, CStringW& out) {
  bool isPath = isWeb;
  for (std::size_t i = 0; i < rest.size(); ++i) {
    char16_t unit = rest[i];
    if (unit == u'?' || unit == u'#') isPath = false;
    if (isPath && unit == u'\\') unit = u'/';
    const bool isPair =
        (unit & 0xFC00) == 0xD800 && i + 1 < rest.size() && (rest[i + 1] & 0xFC00) == 0xDC00;
    if (isPair) {
      out.append(rest, i++, 2);
    } else if ((unit & 0xF800) == 0xD800) {
      AppendPercentEscaped(0xFFFD, out);
    } else if (NeedsEscape(unit)) {
      AppendPercentEscaped(unit, out);
    } else {
      out += unit;
    }
  }
}

// As a browser reads it: controls and blanks at both ends go, tabs and line ends everywhere.
std::u16string_view TrimAddress(std::u16string_view value, CStringW& scratch) {
  while (!value.empty() && value.front() <= 0x20) value.remove_prefix(1);
  while (!value.empty() && value.back() <= 0x20) value.remove_suffix(1);
  if (FindUnit(value, 0, u'\t', u'\n', u'\r') == value.size()) return value;
  scratch = value;
  std::erase_if(scratch, [](char16_t c) { return c == u'\t' || c == u'\n' || c == u'\r'; });
  return scratch;
}

// The size of the scheme without its colon; 0 for none.
std::size_t SchemeLength(std::u16string_view address) {
  if (address.empty() || !IsAsciiLetter(address[0])) return 0;
  std::size_t end = 1;
  while (end < address.size() &&
         (IsAsciiLetter(address[end]) || IsAsciiDigit(address[end]) || address[end] == u'+' ||
          address[end] == u'-' || address[end] == u'.')) {
    ++end;
  }
  return end < address.size() && address[end] == u':' ? end : 0;
}

void AppendScheme(const SchemeRow& scheme, CStringW& out) {
  out += scheme.name;
  out += u':';
}

bool IsSlash(char16_t unit) {
  return unit == u'/' || unit == u'\\';
}

bool IsPort(std::u16string_view port) {
  constexpr std::size_t kMostDigits = 5;
  return port.size() <= kMostDigits &&
         std::all_of(port.begin(), port.end(), [](char16_t c) { return IsAsciiDigit(c); });
}

// Cuts an authority without its user into host and port. False when the port is none.
bool SplitPort(std::u16string_view& host, std::u16string_view& port) {
  const std::size_t colon = host.rfind(u':');
  if (colon == std::u16string_view::npos || host.ends_with(u']')) return true;
  port = host.substr(colon + 1);
  host = host.substr(0, colon);
  return IsPort(port);
}

// rest is what stands behind the colon of the scheme.
LinkAddress ReadWebAddress(const SchemeRow& scheme, std::u16string_view rest) {
  LinkAddress link;
  while (!rest.empty() && IsSlash(rest.front())) rest.remove_prefix(1);
  const std::size_t end = FindUnit(rest, 0, u'/', u'\\', u'?', u'#');
  std::u16string_view host = rest.substr(0, end);
  const std::size_t at = host.rfind(u'@');
  link.hadUserInfo = at != std::u16string_view::npos;
  if (link.hadUserInfo) host.remove_prefix(at + 1);
  std::u16string_view port;
  if (!SplitPort(host, port)) return link;
  const CStringW plain = PlainHost(host);
  if (plain.empty()) return link;
  link.host = AsciiHost(plain);
  link.mixesScripts = HostMixesScripts(plain);
  CStringW tail;
  if (!port.empty()) (tail += u':') += port;
  AppendRest(rest.substr(end), true, tail);
  AppendScheme(scheme, link.address);
  link.address += u"//";
  link.title = link.address;
  // The host stays as it is, so that the browser maps it in its own way; the title says which it
  // is.
  (link.address += plain) += tail;
  (link.title += link.host) += tail;
  return link;
}

// What a link may fill into a message. Mail programs take other fields for orders: "attach" names
// a file of the reader's.
constexpr std::string_view kMailFields[] = {"bcc",        "body",    "cc", "in-reply-to",
                                            "references", "subject", "to"};

bool HasEscapedLineEnd(std::u16string_view text) {
  for (std::size_t pos = text.find(u'%'); pos != std::u16string_view::npos;
       pos = text.find(u'%', pos + 1)) {
    const std::u16string_view digits = text.substr(pos + 1, 2);
    if (EqualsNoCase(digits, "0a") || EqualsNoCase(digits, "0d")) return true;
  }
  return false;
}

std::u16string_view FieldName(std::u16string_view field) {
  return field.substr(0, FindUnit(field, 0, u'='));
}

// Line ends are for the body only, elsewhere they would begin a field (RFC 6068, 5).
bool IsMailField(std::u16string_view field) {
  const std::u16string_view name = FieldName(field);
  return std::any_of(std::begin(kMailFields), std::end(kMailFields),
                     [&](std::string_view known) { return EqualsNoCase(name, known); }) &&
         (EqualsNoCase(name, "body") || !HasEscapedLineEnd(field));
}

// A list of recipients with the escapes of ASCII characters undone, but for those by which an
// address is taken apart.
CStringW PlainRecipients(std::u16string_view list) {
  CStringW plain;
  plain.reserve(list.size());
  for (std::size_t i = 0; i < list.size(); ++i) {
    const int high = i + 2 < list.size() && list[i] == u'%' ? HexDigit(list[i + 1]) : -1;
    const int low = high < 0 ? -1 : HexDigit(list[i + 2]);
    const auto unit = static_cast<char16_t>(low < 0 ? 0 : high * 16 + low);
    const bool isKept = unit < u' ' || unit >= 0x7F ||
                        std::u16string_view(u"%&?#=").find(unit) != std::u16string_view::npos;
    plain += isKept ? list[i] : unit;
    if (!isKept) i += 2;
  }
  return plain;
}

// Whom the message of a mailto: address goes to.
class MailRecipients {
 public:
  explicit MailRecipients(LinkAddress& link) : link_(link) {}

  // Appends a list to the title, and its domains to the hosts. Some programs divide at ";" too.
  void Add(std::u16string_view list) {
    const CStringW plain = PlainRecipients(list);
    const std::u16string_view text = plain;
    for (std::size_t pos = 0; pos < text.size();) {
      const std::size_t end = FindUnit(text, pos, u',', u';');
      AddOne(text.substr(pos, end - pos));
      link_.title += text.substr(end, 1);
      pos = end + 1;
    }
  }

 private:
  // "a@b", "Name <a@b>"
  void AddOne(std::u16string_view recipient) {
    const std::size_t begin = recipient.rfind(u'@') + 1;  // npos + 1 is 0
    AppendRest(recipient.substr(0, begin), false, link_.title);
    recipient.remove_prefix(begin);
    const std::size_t end = begin == 0 ? 0 : FindUnit(recipient, 0, u'>', u' ', u')');
    const CStringW host = PlainHost(recipient.substr(0, end));
    if (host.empty()) {
      if (begin != 0) AddHost(u"?");
      return AppendRest(recipient, false, link_.title);
    }
    const CStringW ascii = AsciiHost(host);
    AddHost(ascii);
    link_.mixesScripts = link_.mixesScripts || HostMixesScripts(host);
    link_.title += ascii;
    AppendRest(recipient.substr(end), false, link_.title);
  }

  void AddHost(std::u16string_view host) {
    constexpr std::size_t kMost = 16;
    if (count_ > kMost || IsLinkHost(link_.host, host)) return;
    if (count_ > 0) link_.host += kHostSeparator;
    link_.host += ++count_ > kMost ? std::u16string_view(u"…") : host;
  }

  LinkAddress& link_;
  std::size_t count_ = 0;  // of hosts
};

// The fields in which recipients stand.
constexpr std::string_view kRecipientFields[] = {"bcc", "cc", "to"};

bool IsRecipientField(std::u16string_view name) {
  return std::any_of(std::begin(kRecipientFields), std::end(kRecipientFields),
                     [&](std::string_view known) { return EqualsNoCase(name, known); });
}

// fields: what stands behind the "?".
void AppendMailFields(std::u16string_view fields, MailRecipients& recipients, LinkAddress& link) {
  char16_t sign = u'?';
  while (!fields.empty()) {
    const std::size_t end = FindUnit(fields, 0, u'&');
    const std::u16string_view field = fields.substr(0, end);
    fields.remove_prefix(std::min(end + 1, fields.size()));
    if (IsMailField(field)) {
      link.address += sign;
      link.title += sign;
      AppendRest(field, false, link.address);
      sign = u'&';
      const std::u16string_view name = FieldName(field);
      const std::size_t value = IsRecipientField(name) ? name.size() + 1 : field.size();
      AppendRest(field.substr(0, value), false, link.title);
      if (value < field.size()) recipients.Add(field.substr(value));
    } else if (!field.empty()) {
      link.lostFields = true;
    }
  }
}

LinkAddress ReadMailAddress(const SchemeRow& scheme, std::u16string_view rest) {
  LinkAddress link;
  const std::u16string_view address = rest.substr(0, FindUnit(rest, 0, u'?'));
  if (HasEscapedLineEnd(address)) return link;
  AppendScheme(scheme, link.address);
  link.title = link.address;
  AppendRest(address, false, link.address);
  MailRecipients recipients(link);
  recipients.Add(address);
  AppendMailFields(rest.substr(std::min(address.size() + 1, rest.size())), recipients, link);
  return link;
}

// "#name": a target within the page, or its top.
LinkAddress ReadFragment(std::u16string_view fragment) {
  LinkAddress link;
  const CStringW name = SafeName(fragment);
  if (name.empty() && !fragment.empty()) return link;
  link.title = link.address = u'#' + name;
  return link;
}

bool IsBase64(std::u16string_view text) {
  return std::all_of(text.begin(), text.end(), [](char16_t c) {
    return IsAsciiLetter(c) || IsAsciiDigit(c) || c == u'+' || c == u'/' || c == u'=';
  });
}

ImageAddress ReadDataImage(std::u16string_view rest, const SafeHtmlOptions& options) {
  ImageAddress image{{}, SafeHtmlReason::kEmbeddedImage};
  if (!options.allowDataImages) return image;
  for (const std::u16string_view kind : kRasterImages) {
    const std::u16string_view head = rest.substr(0, kind.size());
    if (!std::equal(head.begin(), head.end(), kind.begin(), kind.end(),
                    [](char16_t a, char16_t b) { return UnitAsciiLower(a) == b; })) {
      continue;
    }
    CStringW scratch;
    std::u16string_view data = rest.substr(kind.size());
    if (data.find(u' ') != std::u16string_view::npos) {
      scratch = data;
      std::erase(scratch, u' ');
      data = scratch;
    }
    if (!IsBase64(data)) break;
    image.address.reserve(5 + kind.size() + data.size());
    ((image.address += u"data:") += kind) += data;
    break;
  }
  return image;
}

ImageAddress ReadCidImage(std::u16string_view rest, const SafeHtmlOptions& options) {
  ImageAddress image{{}, SafeHtmlReason::kEmbeddedImage};
  if (!options.allowCidImages || rest.empty()) return image;
  image.address = u"cid:";
  AppendRest(rest, false, image.address);
  return image;
}

ImageAddress ReadRemoteImage(const SchemeRow& scheme, std::u16string_view rest,
                             const SafeHtmlOptions& options) {
  if (scheme.name == u"ftp") return {};
  if (!options.allowRemoteImages) return {{}, SafeHtmlReason::kRemoteImage};
  return {ReadWebAddress(scheme, rest).address, SafeHtmlReason::kAddress};
}

}  // namespace

CStringW SafeName(std::u16string_view name) {
  constexpr std::size_t kLongest = 128;
  while (name.starts_with(kNamePrefix)) name.remove_prefix(kNamePrefix.size());
  const bool isSafe = std::all_of(name.begin(), name.end(), [](char16_t c) {
    return c < 0x80 ? IsAsciiLetter(c) || IsAsciiDigit(c) || c == u'-' || c == u'_' || c == u'.' ||
                          c == u':'
                    : !NeedsEscape(c) && (c & 0xF800) != 0xD800;
  });
  if (name.empty() || name.size() > kLongest || !isSafe) return {};
  return CStringW(kNamePrefix).append(name);
}

LinkAddress ReadLinkAddress(std::u16string_view value) {
  CStringW scratch;
  const std::u16string_view address = TrimAddress(value, scratch);
  if (address.starts_with(u'#')) return ReadFragment(address.substr(1));
  constexpr const SchemeRow& kHttps = kSchemes[1];
  if (address.size() > 2 && IsSlash(address[0]) && IsSlash(address[1])) {
    return ReadWebAddress(kHttps, address);
  }
  const std::size_t length = SchemeLength(address);
  const SchemeRow* const scheme = kSchemeTable.Find(address.substr(0, length));
  LinkAddress link;
  if (scheme == nullptr) return link;
  const std::u16string_view rest = address.substr(length + 1);
  switch (scheme->kind) {
    case SchemeKind::kWeb:
      return ReadWebAddress(*scheme, rest);
    case SchemeKind::kMail:
      return ReadMailAddress(*scheme, rest);
    case SchemeKind::kOpaque:
      AppendScheme(*scheme, link.address);
      AppendRest(rest, false, link.address);
      link.title = link.address;
      return link;
    case SchemeKind::kScript:
      link.isScript = true;
      return link;
    default:
      return link;
  }
}

ImageAddress ReadImageAddress(std::u16string_view value, const SafeHtmlOptions& options) {
  CStringW scratch;
  const std::u16string_view address = TrimAddress(value, scratch);
  constexpr const SchemeRow& kHttps = kSchemes[1];
  if (address.size() > 2 && IsSlash(address[0]) && IsSlash(address[1])) {
    return ReadRemoteImage(kHttps, address, options);
  }
  const std::size_t length = SchemeLength(address);
  const SchemeRow* const scheme = kSchemeTable.Find(address.substr(0, length));
  if (scheme == nullptr) return {};
  const std::u16string_view rest = address.substr(length + 1);
  switch (scheme->kind) {
    case SchemeKind::kWeb:
      return ReadRemoteImage(*scheme, rest, options);
    case SchemeKind::kCid:
      return ReadCidImage(rest, options);
    case SchemeKind::kData:
      return ReadDataImage(rest, options);
    default:
      return {};
  }
}

}  // namespace lumr
