#include "lumrmisc/mailtext/date.h"

#include <algorithm>
#include <chrono>
#include <optional>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/mailtext/datecursor_internal.h"
#include "lumrmisc/mailtext/datewords_internal.h"
#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/mbcs.h"

namespace lumr {
namespace {

using date::DateCursor;
using date::DateWord;
using date::Number;
using date::WordKind;

constexpr int kUnset = -1;

// A date field: its value and where it stands.
struct Field {
  int value = kUnset;
  std::size_t position = 0;
  bool IsSet() const { return value != kUnset; }
};

template <class Unit>
class DateReader : private DateCursor<Unit> {
 public:
  DateReader(std::basic_string_view<Unit> text, int missingZone)
      : DateCursor<Unit>(text), zoneIfMissing_(missingZone) {}

  // Gives false and the fault when the text is no date.
  bool Read(MailDate& date);
  const DateFault& Fault() const { return fault_; }

 private:
  using Cursor = DateCursor<Unit>;
  using Cursor::At;
  using Cursor::commentZone_;
  using Cursor::DigitAt;
  using Cursor::Here;
  using Cursor::NumberHere;
  using Cursor::pos_;
  using Cursor::ReadNumber;
  using Cursor::SkipBlank;
  using Cursor::Take;
  using Cursor::TakeMark;
  using Cursor::TakeOrdinalEnding;
  using Cursor::text_;

  enum class Seen { kPart, kDateAndTime, kAll };
  enum class Last { kNothing, kDateField, kOther };  // what stands directly before

  // Nothing is read behind the first fault.
  void Fail(DateProblem problem, std::size_t position) {
    if (!HasFailed()) fault_ = {problem, static_cast<int>(position)};
    pos_ = text_.size();
  }
  bool HasFailed() const { return fault_.problem != DateProblem::kNone; }

  std::optional<Field> ReadGroupPart(char16_t separator);

  // Parts of a date.
  void ReadItem();
  void ReadNumberItem();
  void ReadNumericDate(const Number& first, char16_t separator);
  bool TakeTimePart(Field& field, char16_t mark);
  void ReadTime(const Number& hour, char16_t separator);
  void ReadFraction();
  void ReadMarkedNumber(const Number& number, char16_t mark);
  void ReadPlainNumber(const Number& number);
  const DateWord* NextWord(date::WordText& text);
  void ReadWord();
  void ReadOffset();
  bool IsOffsetHere() const;
  void TakeZoneName(int minutes, bool isKnown);
  void TakeHalfOfDay(bool isAfternoon, std::size_t position);
  bool Set(Field& field, int value, std::size_t position);
  void SetYear(const Number& number);
  bool HasDate() const { return year_.IsSet() && month_.IsSet() && day_.IsSet(); }
  bool MayHaveZone() const { return hour_.IsSet() || HasDate(); }
  Seen SeenSoFar() const {
    if (!HasDate() || !hour_.IsSet()) return Seen::kPart;
    return offset_ || zoneName_ ? Seen::kAll : Seen::kDateAndTime;
  }

  bool PassOver(std::size_t begin, Seen before, bool isFirst);
  bool CheckRanges();
  int Zone();
  bool Finish(MailDate& date);

  int zoneIfMissing_;
  Last last_ = Last::kNothing;
  Field year_, month_, day_, hour_, minute_, second_, weekday_;
  int yearBase_ = kUnset;  // of a Japanese year name
  int halfOfDay_ = kUnset;
  std::optional<int> offset_;
  std::optional<int> zoneName_;
  bool zoneNameIsUtc_ = false;
  unsigned assumed_ = 0;
  DateFault fault_;
};

// ---- Fields ----

// The number behind a separator, if one stands there.
template <class Unit>
std::optional<Field> DateReader<Unit>::ReadGroupPart(char16_t separator) {
  if (Here() != separator || !DigitAt(pos_ + 1)) return std::nullopt;
  ++pos_;
  const Number number = ReadNumber();
  return Field{number.digits > 4 ? 100000 : number.value, number.begin};
}

template <class Unit>
bool DateReader<Unit>::Set(Field& field, int value, std::size_t position) {
  if (field.IsSet()) {
    Fail(DateProblem::kTwice, position);
    return false;
  }
  field = {value, position};
  return true;
}

template <class Unit>
void DateReader<Unit>::SetYear(const Number& number) {
  int year = number.value;
  if (yearBase_ != kUnset) {
    year += yearBase_;
    yearBase_ = kUnset;
  } else if (number.digits <= 3) {
    assumed_ |= kDateShortYear;
    year += number.digits <= 2 && year < 50 ? 2000 : 1900;
  }
  Set(year_, year, number.begin);
}

// "2004/05/06", "04-05-06", "06.05.2004", and times with dots.
template <class Unit>
void DateReader<Unit>::ReadNumericDate(const Number& first, char16_t separator) {
  const auto second = ReadGroupPart(separator);
  const auto third = ReadGroupPart(separator);
  const Field a{first.value, first.begin};
  if (separator == u'.' && HasDate() && !hour_.IsSet()) {
    hour_ = a;
    minute_ = *second;  // its digit has been seen
    second_ = third.value_or(Field{0, second->position});
    last_ = Last::kOther;
    return;
  }
  if (!third) return Fail(DateProblem::kUnexpected, a.position);
  last_ = Last::kDateField;
  if (third->value < 100 || first.digits >= 4) {
    if (first.digits < 4) assumed_ |= kDateOrderGuessed;
    SetYear(first);
    Set(month_, second->value, second->position);
    Set(day_, third->value, third->position);
    return;
  }
  // The year is last. With dots the day comes first; otherwise a number above 12 has to tell.
  const bool dayFirst = separator == u'.' || a.value > 12;
  if (!dayFirst && second->value <= 12 && second->value != a.value) {
    return Fail(DateProblem::kAmbiguous, a.position);
  }
  const Field& day = dayFirst ? a : *second;
  const Field& month = dayFirst ? *second : a;
  Set(day_, day.value, day.position);
  Set(month_, month.value, month.position);
  Set(year_, third->value, third->position);
}

// The minute or the second, if there is one. A mark must stand behind it then: without it "7時8分
// 2004年" would take the year for the second.
template <class Unit>
bool DateReader<Unit>::TakeTimePart(Field& field, char16_t mark) {
  const std::size_t before = pos_;
  SkipBlank();
  if (NumberHere()) {
    const Number number = ReadNumber();
    if (mark == u'\0' || TakeMark(mark)) {
      field = {number.digits > 2 ? 100 : number.value, number.begin};
      return true;
    }
  }
  pos_ = before;
  return false;
}

// Behind the hour: the separator has been passed.
template <class Unit>
void DateReader<Unit>::ReadTime(const Number& hour, char16_t separator) {
  if (!Set(hour_, hour.digits > 2 ? 100 : hour.value, hour.begin)) return;
  minute_ = second_ = {0, hour.begin};
  last_ = Last::kOther;
  if (separator == u'時') {
    if (TakeMark(u'半')) {
      minute_.value = 30;
    } else if (TakeTimePart(minute_, u'分') && TakeTimePart(second_, u'秒')) {
      ReadFraction();
    }
    return;
  }
  if (!TakeTimePart(minute_, u'\0')) return Fail(DateProblem::kUnexpected, pos_);
  if (!TakeMark(u':')) return;
  if (!TakeTimePart(second_, u'\0')) return Fail(DateProblem::kUnexpected, pos_);
  ReadFraction();
}

template <class Unit>
void DateReader<Unit>::ReadFraction() {
  if ((Here() != u'.' && Here() != u',') || !DigitAt(pos_ + 1)) return;
  ++pos_;
  ReadNumber();
}

template <class Unit>
void DateReader<Unit>::ReadMarkedNumber(const Number& number, char16_t mark) {
  last_ = Last::kDateField;
  if (mark == u'年') return SetYear(number);
  Set(mark == u'月' ? month_ : day_, number.value, number.begin);
}

// A number that only its place tells: day or year, or a zone that lacks its sign.
template <class Unit>
void DateReader<Unit>::ReadPlainNumber(const Number& number) {
  if (HasDate()) {
    // No place is further east than 14 hours.
    const bool isZone =
        hour_.IsSet() && !offset_ && !zoneName_ && number.digits == 4 && number.value <= 1400;
    if (!isZone) return Fail(DateProblem::kTwice, number.begin);
    if (number.value % 100 > 59) return Fail(DateProblem::kZoneRange, number.begin);
    offset_ = number.value / 100 * 60 + number.value % 100;
    assumed_ |= kDateUnsignedZone;
    last_ = Last::kOther;
    return;
  }
  last_ = Last::kDateField;
  if (!day_.IsSet() && number.digits <= 2) {
    day_ = {number.value, number.begin};
  } else if (!year_.IsSet()) {
    SetYear(number);
  } else {
    Fail(day_.IsSet() ? DateProblem::kTwice : DateProblem::kDayRange, number.begin);
  }
}

template <class Unit>
void DateReader<Unit>::ReadNumberItem() {
  const Number number = ReadNumber();
  if (TakeOrdinalEnding()) return ReadMarkedNumber(number, u'日');
  const char16_t next = Here();
  const bool isGroup = (next == u'/' || next == u'-' || next == u'.') && DigitAt(pos_ + 1);
  if (isGroup && (!HasDate() || next == u'.')) return ReadNumericDate(number, next);
  const std::size_t end = pos_;
  SkipBlank();
  const char16_t mark = Here();
  ++pos_;
  switch (mark) {
    case u':':
    case u'時':
      return ReadTime(number, mark);
    case u'年':
    case u'月':
    case u'日':
      return ReadMarkedNumber(number, mark);
    default:
      pos_ = end;
      ReadPlainNumber(number);
  }
}

// ---- Words and zones ----

template <class Unit>
void DateReader<Unit>::TakeHalfOfDay(bool isAfternoon, std::size_t position) {
  if (halfOfDay_ != kUnset) return Fail(DateProblem::kTwice, position);
  halfOfDay_ = isAfternoon;
}

template <class Unit>
bool DateReader<Unit>::IsOffsetHere() const {
  return (Here() == u'+' || Here() == u'-') && DigitAt(pos_ + 1);
}

// "+0900", "+09:00", "+9", "-600".
template <class Unit>
void DateReader<Unit>::ReadOffset() {
  const std::size_t begin = pos_;
  const int sign = Here() == u'-' ? -1 : 1;
  ++pos_;
  const Number number = ReadNumber();
  int hours = number.value;
  int minutes = 0;
  if (number.digits > 4) return Fail(DateProblem::kZoneRange, begin);
  if (number.digits > 2) {
    hours = number.value / 100;
    minutes = number.value % 100;
  } else if (Here() == u':' && DigitAt(pos_ + 1)) {
    ++pos_;
    minutes = ReadNumber().value;
  }
  if (minutes > 59) return Fail(DateProblem::kZoneRange, begin);
  const int offset = sign * (hours * 60 + minutes);
  const bool nameCounts = zoneName_ && !zoneNameIsUtc_;
  if (offset_ || nameCounts) {
    const int known = nameCounts ? *zoneName_ : *offset_;
    if (known != offset) assumed_ |= kDateZoneConflict;
  } else {
    offset_ = offset;
  }
}

template <class Unit>
void DateReader<Unit>::TakeZoneName(int minutes, bool isKnown) {
  if (offset_) {
    if (isKnown && minutes != *offset_) assumed_ |= kDateZoneConflict;
    if (!isKnown) assumed_ |= kDateTextIgnored;
    return;
  }
  if (zoneName_) {
    assumed_ |= kDateTextIgnored;
    return;
  }
  zoneName_ = minutes;
  zoneNameIsUtc_ = isKnown && minutes == 0;
  if (!isKnown) assumed_ |= kDateUnknownZone;
}

// Moves behind the word. Words of kanji stand without spaces between them, so the longest one that
// is known is taken; null for none.
template <class Unit>
const DateWord* DateReader<Unit>::NextWord(date::WordText& text) {
  if (IsAsciiLetter(Here())) {
    for (; IsAsciiLetter(Here()); ++pos_) text.Add(Here());
    if (text.size == 1 && Here() == u'.' && (At(pos_ + 1) | 0x20) == u'm') {  // "a.m."
      text.Add(At(pos_ + 1));
      pos_ += 2;
    }
    Take(u'.');
    return date::FindWord(text);
  }
  while (text.size < date::kLongestKanjiWord && At(pos_ + text.size) >= 0x80) {
    text.Add(At(pos_ + text.size));
  }
  const DateWord* word = nullptr;
  while (text.size > 0 && (word = date::FindWord(text)) == nullptr) --text.size;
  pos_ += text.size;
  return word;
}

template <class Unit>
void DateReader<Unit>::ReadWord() {
  const std::size_t begin = pos_;
  const bool behindDate = last_ == Last::kDateField;
  last_ = Last::kOther;
  date::WordText text;
  const DateWord* const word = NextWord(text);
  if (word == nullptr) {
    if (pos_ == begin || !hour_.IsSet()) return Fail(DateProblem::kUnexpected, begin);
    return TakeZoneName(0, false);
  }
  switch (word->kind) {
    case WordKind::kWeekday:
      if (!weekday_.IsSet()) weekday_ = {word->value, begin};
      return;
    case WordKind::kMonth:
      last_ = Last::kDateField;
      Set(month_, word->value, begin);
      return;
    case WordKind::kHalfOfDay:
      return TakeHalfOfDay(word->value != 0, begin);
    case WordKind::kYearName:
      yearBase_ = word->value;
      last_ = Last::kDateField;
      if (Take(u'元')) {  // the first year
        SetYear({1, 1, begin});
        Take(u'年');
      }
      return;
    case WordKind::kZone:
    case WordKind::kMilitaryZone:
      if (hour_.IsSet() || (word->kind == WordKind::kZone && HasDate())) {
        return TakeZoneName(word->value, word->kind == WordKind::kZone);
      }
      // "2004-05-06T07:08:09"
      if (!behindDate || text.size != 1 || text.units[0] != u't') {
        Fail(DateProblem::kUnexpected, begin);
      }
      return;
  }
}

// ---- The whole ----

template <class Unit>
void DateReader<Unit>::ReadItem() {
  const char16_t c = Here();
  if (NumberHere()) return ReadNumberItem();
  const bool isSeparator = c == u'-' || c == u'/' || c == u'.';
  if (isSeparator && last_ == Last::kDateField && !HasDate()) {  // "06-May-2004"
    ++pos_;
    return;
  }
  if (IsOffsetHere() && MayHaveZone()) return ReadOffset();
  if (IsAsciiLetter(c) || c >= 0x80) return ReadWord();
  Fail(DateProblem::kUnexpected, pos_);
}

// Takes back the fault of an item that may be ignored: anything behind a complete date, what is no
// part of a date behind one that lacks nothing but its zone, and a weekday in a language or an
// encoding of its own, which ends at a comma.
template <class Unit>
bool DateReader<Unit>::PassOver(std::size_t begin, Seen before, bool isFirst) {
  const bool isForeign = fault_.problem == DateProblem::kUnexpected;
  std::size_t end = text_.size();
  const bool mayEnd = before == Seen::kAll || (before == Seen::kDateAndTime && isForeign);
  if (!mayEnd) {
    if (!isFirst || !isForeign) return false;
    end = begin;
    while (end < text_.size() && At(end) != u',' && !DigitAt(end)) ++end;
    if (end == text_.size() || At(end) != u',') return false;
  }
  fault_ = {};
  assumed_ |= kDateTextIgnored;
  pos_ = end;
  return true;
}

template <class Unit>
bool DateReader<Unit>::Read(MailDate& date) {
  for (bool isFirst = true;; isFirst = false) {
    if (SkipBlank() && last_ == Last::kDateField) last_ = Last::kNothing;
    if (pos_ >= text_.size()) return Finish(date);
    if (Take(u',') || Take(u';')) continue;
    const Seen before = SeenSoFar();
    const std::size_t begin = pos_;
    ReadItem();
    if (HasFailed() && !PassOver(begin, before, isFirst)) return false;
  }
}

template <class Unit>
bool DateReader<Unit>::CheckRanges() {
  const struct {
    const Field& field;
    int least, most;
    DateProblem problem;
  } ranges[] = {{year_, 1900, 9999, DateProblem::kYearRange},
                {month_, 1, 12, DateProblem::kMonthRange},
                {day_, 1, 31, DateProblem::kDayRange},
                {hour_, 0, halfOfDay_ == 0 ? 12 : 23, DateProblem::kHourRange},
                {minute_, 0, 59, DateProblem::kMinuteRange},
                {second_, 0, 60, DateProblem::kSecondRange}};
  for (const auto& range : ranges) {
    if (range.field.value < range.least || range.field.value > range.most) {
      Fail(range.problem, range.field.position);
    }
  }
  return !HasFailed();
}

template <class Unit>
int DateReader<Unit>::Zone() {
  if (offset_ && commentZone_ && *commentZone_ != *offset_) assumed_ |= kDateZoneConflict;
  for (const auto& zone : {offset_, zoneName_, commentZone_}) {
    if (zone) return *zone;
  }
  assumed_ |= kDateNoZone;
  return zoneIfMissing_;
}

template <class Unit>
bool DateReader<Unit>::Finish(MailDate& date) {
  using namespace std::chrono;
  if (!HasDate()) Fail(DateProblem::kNoDate, text_.size());
  if (HasFailed()) return false;
  if (!hour_.IsSet()) {
    assumed_ |= kDateNoTime;
    hour_ = minute_ = second_ = {0, text_.size()};
  }
  if (!CheckRanges()) return false;
  const year_month_day civil(year(year_.value), month(static_cast<unsigned>(month_.value)),
                             day(static_cast<unsigned>(day_.value)));
  if (!civil.ok()) {
    Fail(DateProblem::kDayRange, day_.position);
    return false;
  }
  const sys_days midnight(civil);
  if (weekday_.IsSet() && weekday(midnight).c_encoding() != static_cast<unsigned>(weekday_.value)) {
    assumed_ |= kDateWrongWeekday;
  }
  if (halfOfDay_ != kUnset) hour_.value = hour_.value % 12 + 12 * halfOfDay_;
  date.zoneMinutes = Zone();
  date.time = CTime(midnight) + hours(hour_.value) + minutes(minute_.value) +
              seconds(second_.value) - minutes(date.zoneMinutes);
  date.assumed = assumed_;
  return true;
}

template <class Unit>
int ParseUnits(std::basic_string_view<Unit> text, MailDate& date, DateFault& fault,
               int missingZone) {
  DateReader<Unit> reader(text, missingZone);
  const bool done = reader.Read(date);
  fault = reader.Fault();
  return done;
}

// The byte that a UTF-16 position of the converted text stands for.
int BytePosition(std::string_view text, std::size_t units) {
  const MbcsPage& page = CurrentMbcsPage();
  std::size_t pos = 0;
  for (; pos < text.size() && units > 0; --units) pos += page.CharLength(text, pos);
  return static_cast<int>(pos);
}

int ParseNotAscii(std::string_view text, MailDate& date, DateFault& fault, int missingZone) {
  CodePageDecoder decoder(CurrentCodePage());
  CBuffer units;
  char* const begin = units.GetBuffer(static_cast<int>(decoder.MaxOutput(text.size())));
  units.ReleaseBuffer(static_cast<int>(decoder.Decode(text, true, begin) - begin));
  if (ParseUnits(units.Units(), date, fault, missingZone) != 0) return 1;
  fault.position = BytePosition(text, static_cast<std::size_t>(fault.position));
  return 0;
}

}  // namespace

int ParseMailDate(std::string_view text, MailDate& date, DateFault* fault,
                  int zoneMinutesIfMissing) {
  DateFault unused;
  DateFault& told = fault != nullptr ? *fault : unused;
  const bool isAscii =
      std::none_of(text.begin(), text.end(), [](char c) { return (c & 0x80) != 0; });
  return (isAscii ? ParseUnits<char> : ParseNotAscii)(text, date, told, zoneMinutesIfMissing);
}

int ParseMailDate(std::u16string_view text, MailDate& date, DateFault* fault,
                  int zoneMinutesIfMissing) {
  DateFault unused;
  return ParseUnits(text, date, fault != nullptr ? *fault : unused, zoneMinutesIfMissing);
}

}  // namespace lumr
