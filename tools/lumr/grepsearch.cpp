// The search of one text, and what is printed of it.
#include <algorithm>

#include "grep.h"
#include "json.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/platform/terminal.h"
#include "safetext.h"

namespace lumr::tool {

namespace {

// As other programs of the kind paint.
constexpr char kMatchPaint[] = "1;31";
constexpr char kFilePaint[] = "35";
constexpr char kNumberPaint[] = "32";
constexpr char kColonPaint[] = "36";

bool IsLowSurrogate(std::string_view units, std::size_t pos) {
  if (pos + 1 >= units.size()) return false;
  const char16_t unit = LoadUnit(&units[pos]);
  return unit >= 0xDC00 && unit < 0xE000;
}

// A match may begin or end between the halves of a character; what is printed may not.
Span WholeCharacters(std::string_view units, Span span) {
  if (span.begin > 0 && IsLowSurrogate(units, span.begin)) span.begin -= 2;
  if (span.end > 0 && IsLowSurrogate(units, span.end)) span.end += 2;
  return span;
}

std::string Utf8Of(std::string_view units) {
  CBuffer utf8;
  ConvertToOtherCodeType2(CT_UNICODE, units, CT_UTF8, utf8);
  return std::string(utf8.Bytes());
}

std::string Safe(std::string_view units) {
  std::string safe;
  AppendSafe(Utf8Of(units), SafeForm::kLines, safe);
  return safe;
}

std::size_t Characters(std::string_view units) {
  std::size_t count = 0;
  for (std::size_t pos = 0; pos + 1 < units.size(); pos += 2) count += !IsLowSurrogate(units, pos);
  return count;
}

std::string NameOf(const GrepText& text) {
  return text.number == 0 ? text.name : text.name + ':' + std::to_string(text.number);
}

bool IsBinary(const GrepText& text) {
  return text.codeType != CT_UNICODE && text.bytes.find('\0') != text.bytes.npos;
}

void AddName(const GrepText& text, Json& object) {
  object["file"] = JsonText(text.name);
  if (text.number > 0) object["number"] = text.number;
}

}  // namespace

Grep::Grep(Session& session, const GrepOptions& options, LineMatcher& matcher, bool named)
    : session_(session),
      options_(options),
      matcher_(matcher),
      named_(named),
      colored_(!session.json && (options.color == "always" ||
                                 (options.color == "auto" && IsTerminal(StandardStream::kOutput)))),
      needsSpans_(ShowsLines() && (colored_ || session.json || options.onlyMatching)) {}

void Grep::Search(const GrepText& text) {
  saidBinary_ = !ShowsLines() || options_.mail || !IsBinary(text);
  TextLines lines(text.bytes, text.codeType, text.order);
  TextLines::Line line;
  while (!lines.IsAtEnd() && !IsDecided()) {
    if (!matcher_.MayMatch(lines.Ahead())) {
      lines.SkipAhead();
      continue;
    }
    while (lines.IsAhead() && !IsDecided()) {
      lines.Next(line);
      SearchLine(text, lines, line);
      if (ShowsLines() && count_ > 0 && !saidBinary_) {
        return PrintBinary(text);
      }
    }
  }
}

void Grep::PrintBinary(const GrepText& text) {
  if (!session_.json) {
    session_.Write(Text(Say::kGrepBinary, {SafeLine(NameOf(text))}) + '\n');
    return;
  }
  Json object;
  AddName(text, object);
  object["binary"] = true;
  session_.Write(JsonLine(object));
}

void Grep::SearchLine(const GrepText& text, TextLines& lines, const TextLines::Line& line) {
  const std::string_view units = lines.UnitsOf(line);
  spans_.clear();
  const bool wantsSpans = needsSpans_ && saidBinary_;
  const LineOutcome outcome = matcher_.Match(units, wantsSpans ? &spans_ : nullptr);
  if (outcome == LineOutcome::kGivenUp) {
    session_.Tell(NameOf(text), Say::kGrepGivenUp, {Grouped(line.number)});
    session_.Raise(kFailed);
  }
  if (outcome == LineOutcome::kNone || (outcome == LineOutcome::kGivenUp && spans_.empty())) return;
  ++count_;
  foundAny_ = true;
  if (!ShowsLines() || !saidBinary_) return;
  for (Span& span : spans_) span = WholeCharacters(units, span);
  if (session_.json) {
    PrintJson(text, lines, line, units);
  } else if (options_.onlyMatching) {
    PrintMatches(text, lines, line, units);
  } else {
    PrintLine(text, line, units);
  }
}

void Grep::PrintLine(const GrepText& text, const TextLines::Line& line, std::string_view units) {
  std::string out = Prefix(text, line, line.offset);
  std::size_t pos = 0;
  for (const Span& span : spans_) {
    if (!colored_ || span.begin < pos || span.end == span.begin) continue;
    out += Safe(units.substr(pos, span.begin - pos));
    out += Painted(kMatchPaint, Safe(units.substr(span.begin, span.end - span.begin)));
    pos = span.end;
  }
  out += Safe(units.substr(pos));
  out += '\n';
  session_.Write(out);
}

void Grep::PrintMatches(const GrepText& text, TextLines& lines, const TextLines::Line& line,
                        std::string_view units) {
  for (const Span& span : spans_) {
    if (span.end == span.begin) continue;
    const std::size_t offset = options_.byteOffset ? lines.OffsetOf(line, span.begin) : 0;
    const std::string_view match = units.substr(span.begin, span.end - span.begin);
    session_.Write(Prefix(text, line, offset) + Painted(kMatchPaint, Safe(match)) + '\n');
  }
}

void Grep::PrintJson(const GrepText& text, TextLines& lines, const TextLines::Line& line,
                     std::string_view units) {
  Json object;
  AddName(text, object);
  if (!text.part.empty()) object["part"] = JsonText(text.part);
  object["line"] = line.number;
  if (!options_.mail) object["offset"] = line.offset;
  object["text"] = JsonText(Utf8Of(units));
  Json matches = Json::array();
  std::size_t pos = 0;
  std::size_t characters = 0;
  for (const Span& span : spans_) {
    characters += Characters(units.substr(pos, std::max(span.begin, pos) - pos));
    pos = std::max(span.begin, pos);
    const std::string_view match = units.substr(span.begin, span.end - span.begin);
    Json found = {{"start", characters}, {"text", JsonText(Utf8Of(match))}};
    if (!options_.mail) found["offset"] = lines.OffsetOf(line, span.begin);
    matches.push_back(std::move(found));
  }
  object["matches"] = std::move(matches);
  session_.Write(JsonLine(object));
}

std::string Grep::Painted(const char* paint, std::string_view text) const {
  if (!colored_) return std::string(text);
  return "\x1B[" + std::string(paint) + 'm' + std::string(text) + "\x1B[m";
}

std::string Grep::Prefix(const GrepText& text, const TextLines::Line& line,
                         std::size_t offset) const {
  std::string prefix;
  const auto add = [&](const char* paint, std::string_view part) {
    prefix += Painted(paint, part) + Painted(kColonPaint, ":");
  };
  if (named_) add(kFilePaint, SafeLine(NameOf(text)));
  if (options_.lineNumbers && !text.part.empty()) add(kNumberPaint, SafeLine(text.part));
  if (options_.lineNumbers) add(kNumberPaint, std::to_string(line.number));
  if (options_.byteOffset) add(kNumberPaint, std::to_string(offset));
  return prefix;
}

void Grep::EndFile(const GrepText& file) {
  const std::int64_t count = count_;
  count_ = 0;
  if (options_.filesOnly && count == 0) return;
  if (ShowsLines()) return;
  if (session_.json) {
    Json object;
    AddName(file, object);
    if (!options_.filesOnly) object["count"] = count;
    session_.Write(JsonLine(object));
    return;
  }
  const std::string name = Painted(kFilePaint, SafeLine(NameOf(file)));
  if (options_.filesOnly) {
    session_.Write(name + '\n');
  } else {
    const std::string prefix = named_ ? name + Painted(kColonPaint, ":") : std::string();
    session_.Write(prefix + std::to_string(count) + '\n');
  }
}

}  // namespace lumr::tool
