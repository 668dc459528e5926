#include "lumrmisc/html/linkhost_internal.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {
namespace {

// ---- Punycode (RFC 3492) ----

constexpr std::uint32_t kBase = 36;
constexpr std::uint32_t kLowest = 1;
constexpr std::uint32_t kHighest = 26;
constexpr std::uint32_t kSkew = 38;
constexpr std::uint32_t kDamp = 700;
constexpr std::uint32_t kFirstBias = 72;
constexpr std::uint32_t kFirstCode = 128;
constexpr std::u16string_view kPrefix = u"xn--";
// A host name has at most 253 characters, and encoding takes the square of a label's length.
constexpr std::size_t kLongestLabel = 63;
constexpr std::size_t kLongestHost = 253;

std::uint32_t Adapt(std::uint32_t delta, std::uint32_t count, bool isFirst) {
  delta = isFirst ? delta / kDamp : delta / 2;
  delta += delta / count;
  std::uint32_t k = 0;
  for (; delta > (kBase - kLowest) * kHighest / 2; k += kBase) delta /= kBase - kLowest;
  return k + (kBase - kLowest + 1) * delta / (delta + kSkew);
}

std::uint32_t Threshold(std::uint32_t k, std::uint32_t bias) {
  return std::clamp(k, bias + kLowest, bias + kHighest) - bias;
}

char16_t Digit(std::uint32_t value) {
  return static_cast<char16_t>(value < 26 ? u'a' + value : u'0' + value - 26);
}

std::u32string CodePoints(std::u16string_view text) {
  std::u32string points;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t point = text[i];
    if ((point & 0xFC00) == 0xD800 && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00) {
      point = 0x10000 + ((point - 0xD800) << 10) + (text[++i] - 0xDC00u);
    }
    points += point;
  }
  return points;
}

void AppendNumber(std::uint32_t number, std::uint32_t bias, CStringW& out) {
  std::uint32_t k = kBase;
  for (;; k += kBase) {
    const std::uint32_t threshold = Threshold(k, bias);
    if (number < threshold) break;
    out += Digit(threshold + (number - threshold) % (kBase - threshold));
    number = (number - threshold) / (kBase - threshold);
  }
  out += Digit(number);
}

void AppendPunycode(std::u16string_view label, CStringW& out) {
  const std::u32string points = CodePoints(label);
  out += kPrefix;
  std::uint32_t handled = 0;
  for (const char32_t point : points) {
    if (point >= kFirstCode) continue;
    out += static_cast<char16_t>(point);
    ++handled;
  }
  const std::uint32_t basic = handled;
  if (basic > 0) out += u'-';
  std::uint32_t bias = kFirstBias;
  std::uint32_t delta = 0;
  for (char32_t code = kFirstCode; handled < points.size(); ++code, ++delta) {
    char32_t next = 0x110000;
    for (const char32_t point : points) {
      if (point >= code) next = std::min(next, point);
    }
    delta += (next - code) * (handled + 1);
    code = next;
    for (const char32_t point : points) {
      if (point < code) ++delta;
      if (point != code) continue;
      AppendNumber(delta, bias, out);
      bias = Adapt(delta, handled + 1, handled == basic);
      ++handled;
      delta = 0;
    }
  }
}

// The code points of a label behind "xn--"; those decoded so far where it is malformed.
std::u32string DecodePunycode(std::u16string_view label) {
  std::u32string points;
  const std::size_t hyphen = label.rfind(u'-');
  const std::size_t basic = hyphen == std::u16string_view::npos ? 0 : hyphen;
  points.assign(label.begin(), label.begin() + static_cast<std::ptrdiff_t>(basic));
  std::uint64_t code = kFirstCode;
  std::uint64_t i = 0;
  std::uint32_t bias = kFirstBias;
  for (std::size_t at = basic == 0 ? 0 : basic + 1; at < label.size();) {
    const std::uint64_t old = i;
    std::uint64_t weight = 1;
    for (std::uint32_t k = kBase;; k += kBase) {
      if (at == label.size()) return points;
      const char16_t unit = UnitAsciiLower(label[at++]);
      const std::uint32_t digit = IsAsciiDigit(unit)   ? unit - u'0' + 26u
                                  : IsAsciiLower(unit) ? unit - u'a' + 0u
                                                       : kBase;
      if (digit == kBase) return points;
      i += digit * weight;
      const std::uint32_t threshold = Threshold(k, bias);
      if (digit < threshold) break;
      weight *= kBase - threshold;
      if (weight > 0x7FFFFFFF) return points;
    }
    const std::uint32_t count = static_cast<std::uint32_t>(points.size()) + 1;
    code += i / count;
    i %= count;
    if (code >= 0x110000) return points;
    bias = Adapt(static_cast<std::uint32_t>(
                     std::min<std::uint64_t>(i + (code - kFirstCode) * count, 0x7FFFFFFF)),
                 count, old == 0);
    points.insert(static_cast<std::size_t>(i++), 1, static_cast<char32_t>(code));
  }
  return points;
}

// ---- Hosts ----

bool IsAscii(char16_t unit) {
  return unit < 0x80;
}

// What browsers write as other characters (compatibility forms, combining marks) or refuse
// (Unicode Technical Standard 46). The name that such a host ends up as could not be told here.
struct UnitRange {
  char16_t first;
  char16_t last;
};
constexpr UnitRange kMappedByBrowsers[] = {
    {0x0080, 0x00BF}, {0x0132, 0x0133}, {0x013F, 0x0140}, {0x0149, 0x0149}, {0x017F, 0x017F},
    {0x01C4, 0x01CC}, {0x01F1, 0x01F3}, {0x02B0, 0x036F}, {0x03D0, 0x03D6}, {0x03F0, 0x03F9},
    {0x1D00, 0x1DFF}, {0x1E9A, 0x1E9B}, {0x1FBD, 0x1FFE}, {0x2000, 0x2BFF}, {0x2E80, 0x3004},
    {0x3008, 0x3040}, {0x3099, 0x309C}, {0x309F, 0x30A0}, {0x30FF, 0x3104}, {0x3130, 0x319F},
    {0x3200, 0x33FF}, {0xE000, 0xFFFF}, {0xD835, 0xD835}};

bool IsHostUnit(char16_t unit) {
  if (unit >= 0x80) {
    return std::none_of(
        std::begin(kMappedByBrowsers), std::end(kMappedByBrowsers),
        [unit](const UnitRange& range) { return unit >= range.first && unit <= range.last; });
  }
  return IsAsciiLetter(unit) || IsAsciiDigit(unit) || unit == u'-' || unit == u'.' || unit == u'_';
}

bool IsAddressLiteral(std::u16string_view host) {
  return host.starts_with(u'[') && host.ends_with(u']') &&
         std::count(host.begin(), host.end(), u':') > 1 &&
         std::all_of(host.begin() + 1, host.end() - 1, [](char16_t unit) {
           return IsAsciiDigit(unit) || (unit >= u'a' && unit <= u'f') || unit == u':' ||
                  unit == u'.';
         });
}

// Appends the character that a run of percent escapes gives in UTF-8; false for anything else.
bool AppendPercentEscapes(std::u16string_view text, std::size_t& pos, CStringW& out) {
  std::uint32_t point = 0;
  int more = 0;
  bool isFirst = true;
  do {
    if (pos + 2 >= text.size() || text[pos] != u'%') return false;
    const int high = HexDigit(text[pos + 1]);
    const int low = HexDigit(text[pos + 2]);
    if (high < 0 || low < 0) return false;
    const std::uint32_t byte = static_cast<std::uint32_t>(high * 16 + low);
    pos += 3;
    if (isFirst) {
      more = byte < 0x80 ? 0 : byte >= 0xF0 ? 3 : byte >= 0xE0 ? 2 : 1;
      point = more == 0 ? byte : byte & (0x3Fu >> more);
      if (byte >= 0x80 && byte < 0xC2) return false;
      isFirst = false;
    } else {
      if ((byte & 0xC0) != 0x80) return false;
      point = point << 6 | (byte & 0x3F);
      --more;
    }
  } while (more > 0);
  if (point >= 0x110000 || (point >= 0xD800 && point < 0xE000)) return false;
  if (point >= 0x10000) {
    out += static_cast<char16_t>(0xD7C0 + (point >> 10));
    out += static_cast<char16_t>(0xDC00 + (point & 0x3FF));
  } else {
    out += static_cast<char16_t>(point);
  }
  return true;
}

char16_t PlainUnit(char16_t unit) {
  if (unit > 0xFF00 && unit < 0xFF5F) unit = static_cast<char16_t>(unit - 0xFEE0);
  if (unit == 0x3002 || unit == 0xFF61) return u'.';
  return unit < 0x80 ? UnitAsciiLower(unit) : UnitToLower(unit);
}

template <class Function>
void ForEachLabel(std::u16string_view host, Function function) {
  for (std::size_t pos = 0; pos <= host.size();) {
    const std::size_t end = FindUnit(host, pos, u'.');
    function(host.substr(pos, end - pos));
    pos = end + 1;
  }
}

enum Script : unsigned {
  kNoScript = 0,
  kLatin = 1,
  kGreek = 2,
  kCyrillic = 4,
  kArmenian = 8,
  kOther = 16
};

Script ScriptOf(char32_t point) {
  if (point < 0x80) return IsAsciiLetter(point) ? kLatin : kNoScript;
  if ((point >= 0xC0 && point < 0x250) || (point >= 0x1E00 && point < 0x1F00)) return kLatin;
  if ((point >= 0x370 && point < 0x400) || (point >= 0x1F00 && point < 0x2000)) return kGreek;
  if ((point >= 0x400 && point < 0x530) || (point >= 0xA640 && point < 0xA6A0)) return kCyrillic;
  if (point >= 0x530 && point < 0x590) return kArmenian;
  return point < 0xC0 ? kNoScript : kOther;
}

bool LabelMixesScripts(std::u16string_view label) {
  const bool isEncoded = label.starts_with(kPrefix);
  if (!isEncoded && std::all_of(label.begin(), label.end(), IsAscii)) return false;
  unsigned scripts = 0;
  const std::u32string points =
      isEncoded ? DecodePunycode(label.substr(kPrefix.size())) : CodePoints(label);
  for (const char32_t point : points) scripts |= ScriptOf(point);
  // Japanese labels have Latin letters beside their own.
  return (scripts & (scripts - 1)) != 0 && scripts != (kLatin | kOther);
}

// ---- What a text names ----

bool IsIpAddress(std::u16string_view text) {
  constexpr std::ptrdiff_t kDots = 3;
  const auto dots = std::count(text.begin(), text.end(), u'.');
  return dots == kDots && std::all_of(text.begin(), text.end(),
                                      [](char16_t c) { return IsAsciiDigit(c) || c == u'.'; });
}

// Labels with a last one of two letters or more, all of ASCII or none; or an IP address.
bool LooksLikeHost(std::u16string_view text) {
  const std::size_t dot = text.rfind(u'.');
  if (dot == std::u16string_view::npos || text.front() == u'.' ||
      text.find(u"..") != std::u16string_view::npos) {
    return false;
  }
  const std::u16string_view top = text.substr(dot + 1);
  if (IsIpAddress(text) || top.starts_with(kPrefix)) return true;
  const auto ascii = std::count_if(top.begin(), top.end(), IsAscii);
  return top.size() > 1 && std::none_of(top.begin(), top.end(), IsAsciiDigit<char16_t>) &&
         (ascii == 0 || ascii == static_cast<std::ptrdiff_t>(top.size()));
}

// The host in a run of units that hosts may have. Japanese text may stand right beside an
// address, so a part of ASCII that makes a host of its own counts alone.
CStringW HostInRun(std::u16string_view run) {
  for (std::size_t pos = 0; pos < run.size();) {
    std::size_t end = pos;
    while (end < run.size() && IsAscii(run[end])) ++end;
    const CStringW host = PlainHost(run.substr(pos, end - pos));
    if (LooksLikeHost(host)) return host;
    pos = end;
    while (pos < run.size() && !IsAscii(run[pos])) ++pos;
  }
  const CStringW host = PlainHost(run);
  return LooksLikeHost(host) ? host : CStringW();
}

// File names in link texts are no hosts.
bool IsFileName(std::u16string_view host) {
  constexpr std::string_view kEndings[] = {".pdf",  ".doc", ".docx", ".xls",  ".xlsx", ".ppt",
                                           ".pptx", ".txt", ".html", ".htm",  ".jpg",  ".jpeg",
                                           ".png",  ".gif", ".exe",  ".zip",  ".js",   ".csv",
                                           ".xml",  ".php", ".asp",  ".aspx", ".cgi"};
  return std::any_of(std::begin(kEndings), std::end(kEndings), [&](std::string_view ending) {
    return host.size() > ending.size() &&
           EqualsNoCase(host.substr(host.size() - ending.size()), ending);
  });
}

bool IsSameOrInside(std::u16string_view host, std::u16string_view domain) {
  return host == domain || (host.size() > domain.size() && host.ends_with(domain) &&
                            host[host.size() - domain.size() - 1] == u'.');
}

// Whether a test holds for one of the hosts of a link.
template <class Test>
bool AnyHost(std::u16string_view hosts, Test holds) {
  while (!hosts.empty()) {
    const std::size_t end = std::min(hosts.find(kHostSeparator), hosts.size());
    if (holds(hosts.substr(0, end))) return true;
    hosts.remove_prefix(std::min(end + kHostSeparator.size(), hosts.size()));
  }
  return false;
}

// The host that a word of running text names; empty when there is none.
CStringW HostInWord(std::u16string_view word) {
  const std::size_t scheme = word.find(u"://");
  const bool isAddress = scheme != std::u16string_view::npos;
  if (isAddress) word.remove_prefix(scheme + 3);
  const std::size_t at = word.substr(0, FindUnit(word, 0, u'/', u'?', u'#', u'\\')).rfind(u'@');
  const bool isMail = at != std::u16string_view::npos;
  if (isMail) word.remove_prefix(at + 1);
  std::size_t end = 0;
  while (end < word.size() && end <= kLongestHost && IsHostUnit(PlainUnit(word[end]))) ++end;
  const bool hasPath = end < word.size() && word[end] == u'/';
  const CStringW host = HostInRun(word.substr(0, end));
  return !isAddress && !isMail && !hasPath && IsFileName(host) ? CStringW() : host;
}

// Brackets and punctuation around a word, of Japanese text too.
bool IsWordEdge(char16_t unit) {
  constexpr std::u16string_view kEdges =
      u"()[]<>{}\"',;:!|「」『』（）【】［］＜＞〈〉《》、。：；！？・";
  return IsHtmlSpace(unit) || kEdges.find(unit) != std::u16string_view::npos;
}

}  // namespace

CStringW PlainHost(std::u16string_view host) {
  CStringW plain;
  for (std::size_t pos = 0; pos < host.size();) {
    if (host[pos] == u'%') {
      if (!AppendPercentEscapes(host, pos, plain)) return {};
    } else {
      plain += host[pos++];
    }
  }
  for (char16_t& unit : plain) unit = PlainUnit(unit);
  while (plain.ends_with(u'.')) plain.pop_back();
  std::erase(plain, char16_t{0x00AD});  // a soft hyphen is nothing to a browser either
  if (plain.size() > kLongestHost) return {};
  const bool isHost =
      std::all_of(plain.begin(), plain.end(), IsHostUnit) || IsAddressLiteral(plain);
  return isHost ? plain : CStringW();
}

CStringW AsciiHost(std::u16string_view plainHost) {
  CStringW ascii;
  ForEachLabel(plainHost, [&](std::u16string_view label) {
    if (!ascii.empty()) ascii += u'.';
    const bool isAscii =
        std::all_of(label.begin(), label.end(), [](char16_t c) { return c < 0x80; });
    if (isAscii || label.size() > kLongestLabel) {
      ascii += label;
    } else {
      AppendPunycode(label, ascii);
    }
  });
  return ascii;
}

bool HostMixesScripts(std::u16string_view plainHost) {
  bool mixes = false;
  ForEachLabel(plainHost, [&](std::u16string_view label) {
    mixes = mixes || (label.size() <= kLongestLabel && LabelMixesScripts(label));
  });
  return mixes;
}

int HexDigit(char16_t unit) {
  if (IsAsciiDigit(unit)) return unit - u'0';
  const char16_t lower = UnitAsciiLower(unit);
  return lower >= u'a' && lower <= u'f' ? lower - u'a' + 10 : -1;
}

bool IsLinkHost(std::u16string_view hosts, std::u16string_view host) {
  return AnyHost(hosts, [host](std::u16string_view one) { return one == host; });
}

bool NamesAnotherHost(std::u16string_view text, std::u16string_view hosts) {
  for (std::size_t pos = 0; pos < text.size();) {
    std::size_t end = pos;
    // A colon of "http://" is no edge.
    while (end < text.size() && (!IsWordEdge(text[end]) || text.substr(end, 3) == u"://")) ++end;
    if (end == pos) {
      ++pos;
      continue;
    }
    CStringW host = AsciiHost(HostInWord(text.substr(pos, end - pos)));
    if (host.starts_with(u"www.")) host.erase(0, 4);
    const auto isElsewhere = [&](std::u16string_view one) { return !IsSameOrInside(one, host); };
    if (!host.empty() && AnyHost(hosts, isElsewhere)) return true;
    pos = end;
  }
  return false;
}

}  // namespace lumr
