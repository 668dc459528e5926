#include "lumrmisc/editor/document.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <utility>

#include "lumrmisc/charset/linescan.h"
#include "lumrmisc/editor/linetext_internal.h"

namespace lumr {
namespace {

constexpr long long kLargestText = (1LL << 31) - 65;

int ClampToInt(long long value) {
  return static_cast<int>(std::min<long long>(value, std::numeric_limits<int>::max()));
}

std::string_view WholeUnits(std::string_view text, CodeType codeType) {
  return IsCodeTypeUnicode(codeType) ? text.substr(0, text.size() & ~std::size_t{1}) : text;
}

// Takes the next line off a text; false when there is none. ended is false for a line that
// the end of the text ends.
bool TakeLine(std::string_view& text, CodeType codeType, std::string_view& line, bool& ended) {
  const char* lineEnd = nullptr;
  int breakLength = 0;
  if (GetNextLine(text.data(), static_cast<int>(text.size()), codeType, lineEnd, breakLength) ==
      0) {
    return false;
  }
  line = text.substr(0, static_cast<std::size_t>(lineEnd - text.data()));
  ended = breakLength > 0;
  text.remove_prefix(line.size() + static_cast<std::size_t>(breakLength));
  return true;
}

// The sums follow a line also when memory runs out while it changes.
class SumsGuard {
 public:
  SumsGuard(LineStore& lines, int line) : lines_(lines), line_(line), before_(lines.SumsOf(line)) {}
  ~SumsGuard() { lines_.Changed(line_, before_); }
  SumsGuard(const SumsGuard&) = delete;
  SumsGuard& operator=(const SumsGuard&) = delete;

 private:
  LineStore& lines_;
  int line_;
  LineStore::Sums before_;
};

// Appends to a buffer whose size is known beforehand.
class Writer {
 public:
  Writer(long long size, CBuffer& out) : out_(out) {
    if (size > kLargestText) throw std::bad_alloc();
    out_.Empty();
    begin_ = end_ = out_.GetBuffer(static_cast<int>(size));
  }
  ~Writer() { out_.ReleaseBuffer(static_cast<int>(end_ - begin_)); }

  void Put(std::string_view bytes) {
    if (bytes.empty()) return;
    std::memcpy(end_, bytes.data(), bytes.size());
    end_ += bytes.size();
  }
  bool EndsWith(std::string_view bytes) const {
    return static_cast<std::size_t>(end_ - begin_) >= bytes.size() &&
           std::memcmp(end_ - bytes.size(), bytes.data(), bytes.size()) == 0;
  }

 private:
  CBuffer& out_;
  char* begin_;
  char* end_;
};

}  // namespace

// ---- Changes

void CEditorDocument::Clear(CodeType codeType) {
  codeType_ = codeType;
  lines_.Clear();
  headerCount_ = 0;
  quotes_.Clear();
  widest_.Clear();
  finder_ = LinkFinder(codeType);
  ForgetLast();
}

// The last line is another one now: it is read from its start when it grows.
void CEditorDocument::ForgetLast() {
  linksKept_ = false;
  quoteScan_ = {};
  border_ = 0;
}

void CEditorDocument::Append(CEditorLineFontMetrics& metrics, std::string_view text,
                             std::string_view quoteMark) {
  text = WholeUnits(text, codeType_);
  bool goesOn = lines_.Count() > 0;
  bool ended = true;
  for (std::string_view piece; TakeLine(text, codeType_, piece, ended); goesOn = false) {
    AddPiece(metrics, ended || !piece.empty() ? quoteMark : std::string_view(), piece, goesOn);
  }
  // Behind the last line end stands an empty line. A text without lines continues the last line.
  if (ended && !goesOn) AddPiece(metrics, {}, {}, false);
}

void CEditorDocument::AddPiece(CEditorLineFontMetrics& metrics, std::string_view mark,
                               std::string_view piece, bool goesOn) {
  if (goesOn && mark.empty() && piece.empty()) return;
  if (!goesOn) {
    ForgetLast();
    widest_.NextLine();
  }
  CLLineData& line = goesOn ? lines_.Line(lines_.Count() - 1) : lines_.Append();
  const SumsGuard guard(lines_, lines_.Count() - 1);
  const int length = line.Length();
  if (length > kLargestText - static_cast<long long>(mark.size() + piece.size())) {
    throw std::bad_alloc();
  }
  const auto settledEnd = [this](const auto& text) { return text.SettledEnd(border_); };
  if (length > 0) border_ = WithLineText(metrics.Page(), line.Text(), settledEnd);
  if (!mark.empty()) {
    std::string marked(mark);
    line.AppendText(marked += piece);
  } else if (length > 0) {
    line.AppendText(piece);
  } else {
    line.SetText(piece);
  }
  Examine(metrics, line, length);
}

// Brings a line up to date that has grown behind changed; 0 is a new line.
void CEditorDocument::Examine(CEditorLineFontMetrics& metrics, CLLineData& line, int changed) {
  const bool turnsOtherwise = UpdateQuote(metrics, line, quoteScan_) && metrics.NoTurnQuoted();
  const int linkChanged = UpdateLinks(line, changed);
  LineChange change(changed);
  change.border = static_cast<int>(border_);
  if (metrics.NoTurnUrl()) change.first = std::min(changed, linkChanged);
  LayOut(metrics, line, turnsOtherwise ? LineChange(0) : change);
}

// Gives whether the line became quoted, or no longer is.
bool CEditorDocument::UpdateQuote(const CEditorLineMetrics& metrics, CLLineData& line,
                                  QuoteScan& scan) {
  const int old = line.GetQuoteIndex();
  const std::size_t oldLength = old >= 0 ? quotes_[old].size() : 0;
  const std::size_t same = scan.prefix;
  QuoteScan next = scan;
  const auto length = static_cast<std::size_t>(QuotePrefixLength(metrics, line.Text(), next));
  if (length != same || length != oldLength) {
    line.SetQuoteIndex(quotes_.Change(old, same, line.Text().substr(0, length), codeType_));
  }
  scan = next;
  return (oldLength > 0) != (length > 0);
}

// Gives the first byte at which the links differ from before.
int CEditorDocument::UpdateLinks(CLLineData& line, int changed) {
  std::size_t same = 0;
  if (changed > 0 && std::exchange(linksKept_, false)) {
    same = finder_.FindMore(line.Text(), links_);
  } else {
    finder_.FindAll(line.Text(), links_);
  }
  linksKept_ = true;
  CompactArray<LinkRange>& ranges = line.MutableUrlRanges();
  same = std::min(same, ranges.Size());
  while (same < ranges.Size() && same < links_.size() && ranges[same] == links_[same]) ++same;
  if (same == ranges.Size() && same == links_.size()) return line.Length();
  const int start = same < links_.size() ? links_[same].start : line.Length();
  const int oldStart = same < ranges.Size() ? ranges[same].start : line.Length();
  ranges.Replace(same, ranges.Size() - same, std::span(links_).subspan(same));
  return std::min(start, oldStart);
}

void CEditorDocument::LayOut(CEditorLineFontMetrics& metrics, CLLineData& line,
                             const LineChange& change) {
  CPhysicalLines& physical = line.PhysicalLines();
  const int differs = LayoutLine(metrics, line, change, physical);
  // Where the next one begins elsewhere a physical line has another width, too.
  widest_.LaidOut(physical, std::max(physical.IndexAt(differs) - 1, 0));
}

void CEditorDocument::RenewLine(CEditorLineFontMetrics& metrics, CLLineData& line, bool withLinks) {
  line.SetQuoteIndex(-1);
  widest_.NextLine();
  quoteScan_ = {};
  UpdateQuote(metrics, line, quoteScan_);
  if (withLinks) UpdateLinks(line, 0);
  LayOut(metrics, line, 0);
}

void CEditorDocument::SetCodeType(CodeType codeType, CEditorLineFontMetrics& metrics) {
  codeType_ = codeType;
  quotes_.Clear();
  finder_ = LinkFinder(codeType);
  ForgetLast();
  widest_.Clear();
  for (int i = 0; i < lines_.Count(); ++i) RenewLine(metrics, lines_.Line(i), true);
  lines_.AllChanged();
}

void CEditorDocument::LayOutAll(CEditorLineFontMetrics& metrics) {
  quotes_.Clear();
  widest_.Clear();
  for (int i = 0; i < lines_.Count(); ++i) RenewLine(metrics, lines_.Line(i), false);
  lines_.AllChanged();
}

bool CEditorDocument::LayOutTurned(CEditorLineFontMetrics& metrics) {
  bool any = false;
  widest_.Clear();
  for (int i = 0; i < lines_.Count(); ++i) {
    CLLineData& line = lines_.Line(i);
    widest_.NextLine();
    if (line.PhysicalLines().Count() == 1 &&
        IsWithinLimit(metrics, line.PhysicalLines()[0], line.Length())) {
      widest_.LaidOut(line.PhysicalLines(), 0);
      continue;
    }
    LayOut(metrics, line, 0);
    any = true;
  }
  if (any) lines_.AllChanged();
  return any;
}

int CEditorDocument::InsertHeader(CEditorLineFontMetrics& metrics, std::string_view text,
                                  bool& wider) {
  const int before = GetWidest();
  text = WholeUnits(text, codeType_);
  std::vector<CLLineData> inserted;
  bool ended = false;
  // The search of the last line stands where it does.
  std::vector<LinkRange> links;
  LinkFinder finder(codeType_);
  for (std::string_view piece; TakeLine(text, codeType_, piece, ended);) {
    CLLineData& line = inserted.emplace_back();
    line.SetText(piece);
    QuoteScan scan;
    UpdateQuote(metrics, line, scan);
    finder.FindAll(piece, links);
    line.MutableUrlRanges().Assign(links);
    LayoutLine(metrics, line, 0, line.PhysicalLines());
    widest_.Add(line.PhysicalLines());
  }
  wider = GetWidest() > before;
  headerCount_ = static_cast<int>(inserted.size());
  const bool wasEmpty = lines_.Count() == 0;
  lines_.Insert(0, std::move(inserted));
  if (wasEmpty) {
    ForgetLast();
    FindWidest();
  }
  return headerCount_;
}

int CEditorDocument::RemoveHeader() {
  const int count = std::exchange(headerCount_, 0);
  if (count == 0) return 0;
  lines_.Remove(0, count);
  if (lines_.Count() == 0) ForgetLast();
  FindWidest();
  return count;
}

void CEditorDocument::FindWidest() {
  widest_.Clear();
  for (int i = 0; i < lines_.Count(); ++i) {
    widest_.NextLine();
    widest_.LaidOut(lines_[i].PhysicalLines(), 0);
  }
}

// ---- The text

int CEditorDocument::LineEndSize() const {
  return static_cast<int>(LineEnd().size());
}

std::string_view CEditorDocument::LineEnd() const {
  return IsCodeTypeUnicode(codeType_) ? std::string_view("\r\0\n\0", 4) : std::string_view("\r\n");
}

long long CEditorDocument::GetByteSize() const {
  const long long ends = std::max(lines_.Count() - 1, 0);
  return lines_.BytesBefore(lines_.Count()) + ends * LineEndSize();
}

void CEditorDocument::Write(bool withHeader, const Writing& writing, CBuffer& out) const {
  const int first = withHeader ? 0 : headerCount_;
  const int last = lines_.Count() - 1;
  WritePart({first, 0}, {last, last < first ? 0 : lines_[last].Length()}, writing, out);
}

void CEditorDocument::WritePart(LinePlace from, LinePlace to, const Writing& writing,
                                CBuffer& out) const {
  const long long count = std::max(to.line - from.line + 1LL, 0LL);
  long long size = count * static_cast<long long>(writing.quoteMark.size());
  if (writing.lineEnds) size += (count + 1) * LineEndSize();
  if (count > 0) {
    size += lines_.BytesBefore(to.line) + to.byte - lines_.BytesBefore(from.line) - from.byte;
  }
  Writer writer(size, out);
  for (int i = from.line; i <= to.line; ++i) {
    std::string_view text = lines_[i].Text();
    if (i == to.line) text = text.substr(0, static_cast<std::size_t>(to.byte));
    if (i == from.line) text.remove_prefix(static_cast<std::size_t>(from.byte));
    const bool isLast = i == to.line;
    if (!isLast || !text.empty()) writer.Put(writing.quoteMark);
    writer.Put(text);
    if (writing.lineEnds && !isLast) writer.Put(LineEnd());
  }
  const bool finish = writing.lineEnds && writing.finalLineEnd && !writer.EndsWith(LineEnd());
  if (finish) writer.Put(LineEnd());
}

void CEditorDocument::WriteShown(CBuffer& out) const {
  const int count = lines_.Count();
  const long long lines =
      lines_.PhysicalLinesBefore(count) - lines_.PhysicalLinesBefore(headerCount_);
  const long long bytes = lines_.BytesBefore(count) - lines_.BytesBefore(headerCount_);
  Writer writer(bytes + std::max(lines - 1, 0LL) * LineEndSize(), out);
  for (int i = headerCount_; i < count; ++i) {
    const CLLineData& line = lines_[i];
    const CPhysicalLines& physical = line.PhysicalLines();
    for (int k = 0; k < physical.Count(); ++k) {
      if (i > headerCount_ || k > 0) writer.Put(LineEnd());
      const auto start = static_cast<std::size_t>(physical[k].start);
      const auto end = static_cast<std::size_t>(physical.EndOf(k, line.Length()));
      writer.Put(line.Text().substr(start, end - start));
    }
  }
}

void CEditorDocument::WriteBetween(const CTextPos& a, const CTextPos& b, const Writing& writing,
                                   CBuffer& out) const {
  LinePlace from = PlaceOf(a <= b ? a : b);
  const LinePlace to = PlaceOf(a <= b ? b : a);
  if (from.line == to.line) from.byte = std::min(from.byte, to.byte);
  if (lines_.Count() == 0) {
    out.Empty();
  } else {
    WritePart(from, to, writing, out);
  }
}

// A place inside the text, that of its end for one behind it.
CEditorDocument::LinePlace CEditorDocument::PlaceOf(const CTextPos& pos) const {
  const int last = lines_.Count() - 1;
  if (pos.line < 0) return {0, 0};
  if (pos.line > last) return {last, last < 0 ? 0 : lines_[last].Length()};
  const int byte = ByteOf(pos.line, pos.physLine, pos.byteP, true);
  return {pos.line, std::clamp(byte, 0, lines_[pos.line].Length())};
}

// ---- Places

long long CEditorDocument::GetSerialLine(int line, int physLine) const {
  if (line < 0) return 0;
  const int count = lines_.Count();
  return lines_.PhysicalLinesBefore(std::min(line, count)) + std::max(line - count, 0) + physLine;
}

int CEditorDocument::GetHeaderPhysicalLines() const {
  return ClampToInt(lines_.PhysicalLinesBefore(headerCount_));
}

int CEditorDocument::ByteOf(int line, int physLine, int byteP, bool inside) const {
  const CLLineData& data = lines_[line];
  const CPhysicalLines& physical = data.PhysicalLines();
  if (physLine < 0 || physLine >= physical.Count()) return data.Length();
  const int start = physical[physLine].start;
  const int length = physical.EndOf(physLine, data.Length()) - start;
  return start + (inside ? std::min(byteP, length) : byteP);
}

void CEditorDocument::LogicalToPhysical(CTextPos& pos) const {
  pos.physLine = 0;
  pos.byteP = 0;
  if (pos.byteL <= 0 || pos.line < 0 || pos.line >= lines_.Count()) return;
  const CPhysicalLines& physical = lines_[pos.line].PhysicalLines();
  pos.physLine = physical.IndexAt(pos.byteL);
  pos.byteP = pos.byteL - physical[pos.physLine].start;
}

bool CEditorDocument::ByteToPos(int index, bool toNextLine, CTextPos& pos) const {
  if (index < 0) return false;
  const int line = lines_.LineOfByte(index, toNextLine);
  if (line >= lines_.Count()) return false;
  pos = CTextPos(line, static_cast<int>(index - lines_.BytesBefore(line)));
  LogicalToPhysical(pos);
  return true;
}

int CEditorDocument::PosToByte(const CTextPos& pos) const {
  if (pos.line < 0) return 0;
  const int line = std::min(pos.line, lines_.Count());
  long long byte = lines_.BytesBefore(line);
  const bool atStart = pos.physLine < 1 && pos.byteP < 1;
  if (line < lines_.Count() && !atStart) byte += ByteOf(line, pos.physLine, pos.byteP, true);
  return ClampToInt(byte);
}

}  // namespace lumr
