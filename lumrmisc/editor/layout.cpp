#include "lumrmisc/editor/layout.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "lumrmisc/editor/linetext_internal.h"

namespace lumr {
namespace {

constexpr long long kUnlimited = std::numeric_limits<long long>::max() / 2;

int ClampToInt(long long value) {
  return static_cast<int>(std::min<long long>(value, std::numeric_limits<int>::max()));
}

// A place in a line, and the width from the start of the physical line to it.
struct Extent {
  std::size_t end = 0;
  long long columns = 0;
  long long pixels = 0;
};

// ---- Measuring: by columns alone, or by the widths of a font. Known is the extent of a first part
// of the physical line that was measured before, which is then not looked at again.

// Where counting columns may begin.
ColumnPlace FitFrom(std::size_t start, const Extent& known, long long limit) {
  if (known.columns > limit) return {start, 0};
  return {known.end, known.columns};
}

class ColumnMeasure {
 public:
  explicit ColumnMeasure(const CEditorLineMetrics& metrics) : metrics_(metrics) {}

  // The first part of the text from start that fits the limit.
  template <typename Text>
  Extent Fit(const Text& text, std::size_t start, const Extent& known, long long limit) const {
    if (metrics_.Mode() == kTurnAtPixels) {
      // As FontMeasure, whose shortcut only shows where a column is more than half of the limit.
      if (limit < 2) return Extend(text, known, text.Size());
      limit /= CEditorLineMetrics::kHeadlessColumnPixels;
    }
    return Widen(text.Advance(FitFrom(start, known, limit), limit, metrics_.TabColumn()));
  }

  // Whether Fit gives pixels where they are wanted.
  bool FitIsComplete() const { return true; }

  // Goes on from a place to end, whatever the limit.
  template <typename Text>
  Extent Extend(const Text& text, Extent from, std::size_t end) const {
    return Widen(
        text.First(end).Advance({from.end, from.columns}, kUnlimited, metrics_.TabColumn()));
  }

 private:
  static Extent Widen(ColumnPlace place) {
    return {place.pos, place.columns, place.columns * CEditorLineMetrics::kHeadlessColumnPixels};
  }

  const CEditorLineMetrics& metrics_;
};

class FontMeasure {
 public:
  explicit FontMeasure(CEditorLineFontMetrics& metrics) : metrics_(metrics) {}

  template <typename Text>
  Extent Fit(const Text& text, std::size_t start, const Extent& known, long long limit) {
    if (metrics_.Mode() != kTurnAtPixels) {
      const ColumnPlace from = FitFrom(start, known, limit);
      const ColumnPlace place = text.Advance(from, limit, metrics_.TabColumn());
      return {place.pos, place.columns, 0};
    }
    // Half as many bytes as the limit has pixels are wider than it in any usual font; where they
    // are not, the rest is taken to fit unseen.
    const auto enough = start + static_cast<std::size_t>(limit / 2);
    Extent place{start, 0, 0};
    while (place.end < text.Size()) {
      if (place.end >= enough) return {text.Size(), place.columns, place.pixels};
      const Extent next = Step(text, place);
      if (next.pixels > limit) break;
      place = next;
    }
    return place;
  }

  bool FitIsComplete() const { return metrics_.Mode() == kTurnAtPixels || metrics_.NoPixels(); }

  template <typename Text>
  Extent Extend(const Text& text, Extent from, std::size_t end) {
    if (metrics_.NoPixels()) {
      const ColumnPlace place =
          text.First(end).Advance({from.end, from.columns}, kUnlimited, metrics_.TabColumn());
      return {place.pos, place.columns, 0};
    }
    while (from.end < end) from = Step(text, from);
    return from;
  }

 private:
  // One character more.
  template <typename Text>
  Extent Step(const Text& text, Extent place) {
    const std::size_t length = text.CharLength(place.end);
    if (text.IsTab(place.end)) {
      const long long stop = NextTabStop(place.columns, metrics_.TabColumn());
      return {place.end + length, stop,
              place.pixels + (stop - place.columns) * metrics_.WidthOf(Space())};
    }
    return {place.end + length, place.columns + text.CharColumns(place.end),
            place.pixels + metrics_.WidthOf(text.Bytes(place.end, length))};
  }
  std::string_view Space() const {
    return metrics_.IsUnicode() ? std::string_view(" \0", 2) : std::string_view(" ");
  }

  CEditorLineFontMetrics& metrics_;
};

// ---- Turning

bool IsNeverTurned(const CEditorLineMetrics& metrics, const LineView& line) {
  return metrics.Mode() == kTurnNever || (line.quoteIndex >= 0 && metrics.NoTurnQuoted());
}

// Finds the breaks of one line.
template <typename Text, typename Measure>
class Turner {
 public:
  Turner(const CEditorLineMetrics& metrics, const LineView& line, const Text& text,
         Measure& measure)
      : metrics_(metrics), line_(line), text_(text), measure_(measure) {}

  struct Turned {
    Extent extent;      // the physical line
    std::size_t limit;  // where it passed the limit
    unsigned rules;
  };

  // The physical line that begins at start, which is inside the text, and of which a part may be
  // known.
  Turned Turn(std::size_t start, const Extent& known) {
    start_ = start;
    rules_ = 0;
    Extent extent = measure_.Fit(text_, start, known, metrics_.Limit());
    std::size_t limit = extent.end;
    if (limit == start) {
      rules_ |= kBreakOneCharacter;
      limit = start + text_.CharLength(start);
    }
    const std::size_t end = limit < text_.Size() ? MoveBreak(limit) : limit;
    if (end != extent.end || !measure_.FitIsComplete()) {
      extent = measure_.Extend(text_, known.end <= end ? known : Extent{start, 0, 0}, end);
    }
    return {extent, limit, rules_};
  }

 private:
  struct Character {
    std::size_t length = 0;  // 0: there is none
    EditorCharacter value = 0;
  };

  std::size_t MoveBreak(std::size_t place) {
    CharacterBefore before(*this);
    bool atLink = false;
    if (metrics_.NoTurnUrl() && !line_.urls.empty()) atLink = KeepLink(place);
    if (!atLink) KeepWord(before, place);
    Hang(place);
    if (!atLink) PushBack(before, place);
    return place;
  }

  // Whether the break stands at the end of a link now, where it stays.
  bool KeepLink(std::size_t& place) {
    auto url = std::partition_point(
        line_.urls.begin(), line_.urls.end(),
        [place](const CUrlRange& range) { return static_cast<std::size_t>(range.End()) < place; });
    for (; url != line_.urls.end() && static_cast<std::size_t>(url->start) < place; ++url) {
      if (url->kind != kLinkUrl && url->kind != kLinkMail) continue;
      if (static_cast<std::size_t>(url->End()) == place) {
        rules_ |= kBreakUrlEnd;
        return true;
      }
      if (static_cast<std::size_t>(url->start) > start_) {
        rules_ |= kBreakBeforeUrl;
        place = static_cast<std::size_t>(url->start);
        return false;
      }
      rules_ |= kBreakBehindUrl;
      place = std::min(static_cast<std::size_t>(url->End()), text_.Size());
      return true;
    }
    return false;
  }

  // A word that fills the line is cut.
  template <typename Before>
  void KeepWord(Before& before, std::size_t& place) {
    std::size_t moved = place;
    for (;;) {
      const Character last = before(moved);
      const Character next = At(moved);
      if (EndsNoLine(last) || BeginsNoLine(next)) break;
      if (!IsWordCharacter(last.value) || !IsWordCharacter(next.value)) break;
      if (moved - last.length == start_) return;
      moved -= last.length;
    }
    if (moved != place) rules_ |= kBreakWord;
    place = moved;
  }

  // Two characters in a row do not hang, lest the second one begin the next line.
  void Hang(std::size_t& place) {
    const Character next = At(place);
    if (!BeginsNoLine(next) || BeginsNoLine(At(place + next.length))) return;
    rules_ |= kBreakHang;
    place += next.length;
  }

  template <typename Before>
  void PushBack(Before& before, std::size_t& place) {
    std::size_t moved = place;
    for (;;) {
      const Character last = before(moved);
      if (!EndsNoLine(last) && !BeginsNoLine(At(moved))) break;
      if (last.length == 0 || moved - last.length == start_) return;
      moved -= last.length;
    }
    if (moved != place) rules_ |= kBreakPushBack;
    place = moved;
  }

  Character At(std::size_t pos) const {
    if (pos >= text_.Size()) return {};
    return {text_.CharLength(pos), text_.At(pos)};
  }

  bool BeginsNoLine(Character character) const {
    return character.length != 0 && metrics_.Head2Prev().Contains(character.value);
  }
  // Nothing, which stands before the start of a line, ends no line either: a break never moves
  // there.
  bool EndsNoLine(Character character) const {
    return character.length == 0 || metrics_.Tail2Next().Contains(character.value);
  }

  // Gives the character before a place, none at the start of the physical line. Places are asked
  // for from the back, which makes all questions of a physical line linear together.
  class CharacterBefore {
   public:
    explicit CharacterBefore(const Turner& turner)
        : turner_(turner), steps_(turner.text_, turner.start_) {}
    Character operator()(std::size_t pos) {
      if (pos <= turner_.start_) return {};
      const std::size_t length = steps_.LengthBefore(pos);
      return {length, turner_.text_.At(pos - length)};
    }

   private:
    const Turner& turner_;
    typename Text::Steps steps_;
  };

  const CEditorLineMetrics& metrics_;
  const LineView& line_;
  const Text& text_;
  Measure& measure_;
  std::size_t start_ = 0;
  unsigned rules_ = 0;
};

// ---- Laying out

template <typename Text, typename Measure>
class LineLayout {
 public:
  LineLayout(const CEditorLineMetrics& metrics, const LineView& line, const Text& text,
             Measure& measure, CPhysicalLines& lines)
      : metrics_(metrics), line_(line), text_(text), measure_(measure), lines_(lines) {}

  int Run(const LineChange& change) {
    differs_ = std::clamp(change.first, 0, static_cast<int>(text_.Size()));
    ReadGrowth(change);
    if (IsNeverTurned(metrics_, line_)) {
      StoreWhole();
    } else {
      TurnFrom(FirstToTurn(differs_));
    }
    return differs_;
  }

 private:
  // Whether the text before only grew at its end, and how much of it reads as it did.
  void ReadGrowth(const LineChange& change) {
    const int old = lines_.Items().back().reach - kLayoutLookAhead;
    if (change.text < old || old <= 0 || old > static_cast<int>(text_.Size())) return;
    old_ = static_cast<std::size_t>(old);
    settled_ = text_.First(old_).SettledEnd(static_cast<std::size_t>(change.border));
  }

  // What is known of the physical line that begins at start, from the one that is stored there. One
  // that was taken to fit unseen is again, and then nobody asks for the rest of its extent.
  Extent KnownOf(int index, std::size_t start) {
    const Extent nothing{start, 0, 0};
    if (old_ == 0 || index >= lines_.Count()) return nothing;
    const CPhysicalLine& line = lines_[index];
    if (static_cast<std::size_t>(line.start) != start) return nothing;
    const auto end = static_cast<std::size_t>(lines_.EndOf(index, static_cast<int>(old_)));
    const Extent extent{end, line.columns, line.pixels};
    if (end <= settled_) return extent;
    if (settled_ <= start) return nothing;
    const Extent open = measure_.Extend(text_.First(end), {settled_, 0, 0}, end);
    return {settled_, extent.columns - open.columns, extent.pixels - open.pixels};
  }

  // The first physical line whose end the changed byte has a say in. Reaches rise.
  int FirstToTurn(int changed) const {
    const auto items = lines_.Items();
    const auto first = std::partition_point(
        items.begin(), items.end(),
        [changed](const CPhysicalLine& line) { return line.reach <= changed; });
    return first == items.end() ? 0 : static_cast<int>(first - items.begin());
  }

  void TurnFrom(int index) {
    Turner<Text, Measure> turner(metrics_, line_, text_, measure_);
    reach_ = index == 0 ? 0 : lines_[index - 1].reach;
    std::size_t start = static_cast<std::size_t>(lines_[index].start);
    if (text_.Size() == 0) Store(index++, 0, {}, 0);
    while (start < text_.Size()) {
      const auto turned = turner.Turn(start, KnownOf(index, start));
      Store(index++, start, turned.extent, turned.limit);
      start = turned.extent.end;
    }
    Finish(index);
  }

  void StoreWhole() {
    const Extent known = lines_.Count() == 1 ? KnownOf(0, 0) : Extent();
    reach_ = 0;
    Store(0, 0, measure_.Extend(text_, known, text_.Size()), text_.Size());
    Finish(1);
  }

  void Store(int index, std::size_t start, const Extent& extent, std::size_t limit) {
    const int begin = static_cast<int>(start);
    if (index >= lines_.Count()) {
      differs_ = std::min(differs_, begin);
    } else if (lines_[index].start != begin) {
      differs_ = std::min({differs_, begin, lines_[index].start});
    }
    const bool pixels = metrics_.Mode() == kTurnAtPixels || !metrics_.NoPixels();
    reach_ = std::max(reach_, static_cast<int>(std::max(limit, extent.end)) + kLayoutLookAhead);
    lines_.Set(index,
               {begin, ClampToInt(extent.columns), pixels ? ClampToInt(extent.pixels) : 0, reach_});
  }

  void Finish(int count) {
    if (count < lines_.Count()) differs_ = std::min(differs_, lines_[count].start);
    lines_.Truncate(count);
  }

  const CEditorLineMetrics& metrics_;
  const LineView& line_;
  const Text& text_;
  Measure& measure_;
  CPhysicalLines& lines_;
  int reach_ = 0;
  int differs_ = 0;
  std::size_t old_ = 0;      // the size of the text before, when it only grew at its end; else 0
  std::size_t settled_ = 0;  // of it, what reads as it did
};

template <typename Measure>
int Layout(const CEditorLineMetrics& metrics, const LineView& line, Measure measure,
           const LineChange& change, CPhysicalLines& lines) {
  const auto run = [&](const auto& text) {
    return LineLayout(metrics, line, text, measure, lines).Run(change);
  };
  return WithLineText(metrics.Page(), line.text, run, metrics.KeepsPairs());
}

}  // namespace

int LayoutLine(const CEditorLineMetrics& metrics, const LineView& line, const LineChange& change,
               CPhysicalLines& lines) {
  return Layout(metrics, line, ColumnMeasure(metrics), change, lines);
}

int LayoutLine(CEditorLineFontMetrics& metrics, const LineView& line, const LineChange& change,
               CPhysicalLines& lines) {
  if (metrics.IsHeadless()) return Layout(metrics, line, ColumnMeasure(metrics), change, lines);
  return Layout(metrics, line, FontMeasure(metrics), change, lines);
}

bool IsWithinLimit(const CEditorLineMetrics& metrics, const CPhysicalLine& line, int length) {
  if (metrics.Mode() == kTurnNever) return true;
  if (metrics.Mode() == kTurnAtColumns) return line.columns <= metrics.Limit();
  // A limit looks at half as many bytes as it has pixels: one that took this line to fit unseen
  // would have looked at less than the line, and is not below the width that it saw.
  return line.pixels <= metrics.Limit() && line.pixels >= 2LL * length;
}

LineBreak FindBreak(const CEditorLineMetrics& metrics, const LineView& line, int start) {
  const int size = static_cast<int>(line.text.size());
  start = std::clamp(start, 0, size);
  if (start == size || IsNeverTurned(metrics, line)) return {size, size, kBreakAtLimit};
  const auto find = [&](const auto& text) {
    ColumnMeasure measure(metrics);
    Turner turner(metrics, line, text, measure);
    const auto begin = static_cast<std::size_t>(start);
    const auto turned = turner.Turn(begin, {begin, 0, 0});
    return LineBreak{static_cast<int>(turned.limit), static_cast<int>(turned.extent.end),
                     turned.rules};
  };
  return WithLineText(metrics.Page(), line.text, find, metrics.KeepsPairs());
}

int CountPixels(CEditorLineFontMetrics& metrics, std::string_view text) {
  const auto count = [&](const auto& line) {
    const Extent none;
    const auto whole = [&](auto measure) { return measure.Extend(line, none, line.Size()).pixels; };
    return ClampToInt(metrics.IsHeadless() ? whole(ColumnMeasure(metrics))
                                           : whole(FontMeasure(metrics)));
  };
  return WithLineText(metrics.Page(), text, count);
}

int CountColumns(const CEditorLineMetrics& metrics, std::string_view text) {
  const auto count = [&](const auto& line) {
    return ClampToInt(line.Advance({0, 0}, kUnlimited, metrics.TabColumn()).columns);
  };
  return WithLineText(metrics.Page(), text, count);
}

}  // namespace lumr
