#include "lumrmisc/charset/transcoder.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "lumrmisc/charset/transcoder_internal.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

namespace {

constexpr unsigned kFallbackCodePage = 1252;
constexpr char16_t kByteOrderMark = 0xFEFF;

// What stands between two stages stays in the first-level cache.
constexpr std::size_t kBlockSize = 4096;
constexpr std::size_t kLocateSize = 32;  // text for one loss that is run byte by byte
constexpr std::size_t kMaxBufferSize = 0x7FFFFFFF - 64;
constexpr std::size_t kMaxStages = 4;
constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();

const CodePageTable& SupportedCodePage(unsigned codePage, bool& fallback) {
  const CodePageTable* const table = FindCodePage(codePage);
  fallback = table == nullptr;
  return fallback ? *FindCodePage(kFallbackCodePage) : *table;
}

constexpr std::string_view ReplacementFor(int emptyFallback) {
  return emptyFallback ? "" : "?";
}

// Room for more bytes behind the content, and the end of the content.
char* GrowBuffer(CBuffer& out, std::size_t more) {
  const auto length = static_cast<std::size_t>(out.GetLength());
  if (more > kMaxBufferSize - length) throw std::bad_alloc();
  return out.GetBuffer(static_cast<int>(length + more)) + length;
}

// Removes a byte-order mark that the units from begin to end start with; gives the new end.
char* WithoutMark(char* begin, char* end) {
  if (end - begin < 2 || LoadUnit(begin) != kByteOrderMark) return end;
  std::memmove(begin, begin + 2, static_cast<std::size_t>(end - begin - 2));
  return end - 2;
}

}  // namespace

// ---- Stages ------------------------------------------------------------------------------------

DecodeStage::DecodeStage(unsigned codePage)
    : decoder_(SupportedCodePage(codePage, fallback_)), codePage_(codePage) {}

// Gives the new end.
char* DecodeStage::RemoveMark(char* begin, char* end) {
  if (end - begin < 2) return end;
  atStart_ = false;
  char* const newEnd = WithoutMark(begin, end);
  markRemoved_ = newEnd != end;
  return newEnd;
}

char* DecodeStage::Convert(std::string_view in, bool last, char* out, CConversionReport* report) {
  hasInput_ |= !in.empty();
  if (!atStart_ && !markRemoved_) return decoder_.Decode(in, last, out, report);

  // The decoder knows nothing of the mark: its output offsets are behind by the mark's length.
  CConversionReport decoded(kAll);
  char* end = decoder_.Decode(in, last, out, report == nullptr ? nullptr : &decoded);
  if (atStart_) {
    end = RemoveMark(out, end);
    // The mark is 3 bytes in UTF-8, and in UTF-7 "+/v8" at least.
    const int length = IsBitwise() ? 4 : 3;
    if (markRemoved_ && report) report->Add({ConversionLossKind::kFit, 0, length, 0});
  }
  for (ConversionLoss loss : decoded.First()) {
    if (markRemoved_) loss.outputOffset -= 2;
    report->Add(loss);
  }
  return end;
}

EncodeStage::EncodeStage(unsigned codePage, int emptyFallback)
    : encoder_(SupportedCodePage(codePage, fallback_), ReplacementFor(emptyFallback)),
      isUnicode_(codePage == kUtf7CodePage || codePage == kUtf8CodePage) {}

void EncodeStage::ReadHead(std::string_view in, CConversionReport* report) {
  headSize_ += in.copy(head_ + headSize_, sizeof head_ - headSize_);
  hasMark_ = headSize_ == sizeof head_ && LoadUnit(head_) == kByteOrderMark;
  if (hasMark_ && report) report->Add({ConversionLossKind::kFit, 0, 2, 0});
}

char* EncodeStage::Convert(std::string_view in, bool last, char* out, CConversionReport* report) {
  hasInput_ |= !in.empty();
  if (isUnicode_ && headSize_ < sizeof head_) ReadHead(in, report);
  return encoder_.Encode(in, last, out, report);
}

// Sets the order by the first two bytes; true when they are a mark.
bool ByteOrderStage::ReadMark(char first, char second) {
  const char pair[] = {first, second};
  const char16_t unit = LoadUnit(pair);
  atStart_ = false;
  markRemoved_ = unit == kByteOrderMark || unit == 0xFFFE;
  if (markRemoved_) swap_ = unit == 0xFFFE;
  return markRemoved_;
}

char* ByteOrderStage::WritePairs(std::string_view pairs, char* out) const {
  if (!swap_) return std::copy(pairs.begin(), pairs.end(), out);
  for (std::size_t i = 0; i + 1 < pairs.size(); i += 2) {
    *out++ = pairs[i + 1];
    *out++ = pairs[i];
  }
  return out;
}

char* ByteOrderStage::Convert(std::string_view in, bool last, char* out,
                              CConversionReport* report) {
  char* const begin = out;
  inputSize_ += static_cast<long long>(in.size());
  if (pendingSize_ + in.size() >= 2 && (pendingSize_ != 0 || atStart_)) {
    const char pair[] = {pendingSize_ != 0 ? pending_ : in[0], in[1 - pendingSize_]};
    in.remove_prefix(2 - pendingSize_);
    pendingSize_ = 0;
    if (!atStart_ || !ReadMark(pair[0], pair[1])) {
      out = WritePairs({pair, 2}, out);
    } else if (report) {
      report->Add({ConversionLossKind::kFit, 0, 2, 0});
    }
  }
  if (in.size() >= 2) {
    out = WritePairs(in.substr(0, in.size() & ~std::size_t{1}), out);
  }
  if (in.size() % 2 != 0) {
    pending_ = in.back();
    pendingSize_ = 1;
  }
  if (last) out = Flush(out, outputSize_ + (out - begin), report);
  outputSize_ += out - begin;
  return out;
}

// Little-endian text keeps an odd last byte.
char* ByteOrderStage::Flush(char* out, long long outputOffset, CConversionReport* report) {
  if (pendingSize_ == 0) return out;
  pendingSize_ = 0;
  if (!swap_) {
    *out++ = pending_;
    return out;
  }
  ++lost_;
  if (report) report->Add({ConversionLossKind::kReplaced, inputSize_ - 1, 1, outputOffset});
  return out;
}

char* DropZeroStage::Convert(std::string_view in, bool, char* out, CConversionReport* report) {
  for (const char byte : in) {
    if (byte != 0) {
      *out++ = byte;
      ++outputSize_;
    } else if (report) {
      report->Add({ConversionLossKind::kReplaced, inputSize_, 1, outputSize_});
    }
    ++inputSize_;
  }
  return out;
}

// ---- The plan of a conversion ------------------------------------------------------------------

void ConversionPipeline::AddCodePages(unsigned from, unsigned to, int emptyFallback,
                                      bool dropZero) {
  if (from == to) return;
  if (from != kUtf16CodePage) Stages().emplace_back(DecodeStage(from));
  if (to == kUtf16CodePage) return;
  Stages().emplace_back(EncodeStage(to, emptyFallback));
  if (dropZero) Stages().emplace_back(DropZeroStage());
}

ConversionPipeline ConversionPipeline::OfCodePages(unsigned from, unsigned to, int emptyFallback,
                                                   bool dropZero) {
  ConversionPipeline pipeline;
  pipeline.AddCodePages(from, to, emptyFallback, dropZero);
  return pipeline;
}

ConversionPipeline ConversionPipeline::OfCodeTypes(CodeType from, CodeType to, int emptyFallback,
                                                   bool dropZero, Utf16Order order) {
  ConversionPipeline pipeline;
  auto& stages = pipeline.Stages();
  stages.reserve(kMaxStages);
  if (from == CT_UNICODE && to == CT_UNICODE && order == Utf16Order::kLittleEndian) {
    order = Utf16Order::kByMark;
  }
  if (from == CT_UNICODE && order != Utf16Order::kLittleEndian) {
    stages.emplace_back(ByteOrderStage(order));
  }
  if (from == to) return pipeline;
  if (from == CT_EUC) stages.emplace_back(JapaneseStage(JapaneseConversion::kEucToSJis));
  if (from == CT_JIS) stages.emplace_back(JapaneseStage(JapaneseConversion::kJisToSJis));
  pipeline.AddCodePages(CharSetCode2CodePage(from), CharSetCode2CodePage(to), emptyFallback,
                        dropZero);
  if (to == CT_EUC) stages.emplace_back(JapaneseStage(JapaneseConversion::kSJisToEuc));
  if (to == CT_JIS) stages.emplace_back(JapaneseStage(JapaneseConversion::kSJisToJis));
  return pipeline;
}

// ---- Sums over the stages ----------------------------------------------------------------------

long ConversionPipeline::Status() const {
  return std::any_of(Stages().begin(), Stages().end(), [](const Stage& stage) {
    return std::visit([](const auto& held) { return held.IsInexact(); }, stage);
  });
}

bool ConversionPipeline::IsEncodingInexact() const {
  return std::any_of(Stages().begin(), Stages().end(), [](const Stage& stage) {
    const auto* const encoding = std::get_if<EncodeStage>(&stage);
    return encoding != nullptr && encoding->IsInexact();
  });
}

long long ConversionPipeline::Losses() const {
  long long losses = 0;
  for (const Stage& stage : Stages()) {
    losses += std::visit([](const auto& held) { return held.Lost(); }, stage);
  }
  return losses;
}

long long ConversionPipeline::Marks() const {
  long long marks = 0;
  for (const Stage& stage : Stages()) {
    marks += std::visit([](const auto& held) { return held.Marks(); }, stage);
  }
  return marks;
}

bool ConversionPipeline::IsPendingFrom(std::size_t first) const {
  for (std::size_t stage = first; stage < Stages().size(); ++stage) {
    if (std::visit([](const auto& held) { return held.Pending(); }, Stages()[stage]) != 0) {
      return true;
    }
  }
  return false;
}

// The most bytes that the last stage writes for that many more bytes of the source.
std::size_t ConversionPipeline::MaxOutput(std::size_t size) const {
  for (const Stage& stage : Stages()) {
    size = std::visit([size](const auto& held) { return held.MaxOutput(size); }, stage);
  }
  return size;
}

// ---- One stage alone ---------------------------------------------------------------------------

bool ConvertInOneStage(unsigned from, unsigned to, std::string_view text, CBuffer& out,
                       long& status) {
  const bool decodes = to == kUtf16CodePage;
  if (from == to || (!decodes && from != kUtf16CodePage) || text.size() > kBlockSize) return false;
  bool fallback;
  const CodePageTable& table = SupportedCodePage(decodes ? from : to, fallback);
  const std::string_view replacement = ReplacementFor(0);
  CodePageCounts counts;
  char* const begin = GrowBuffer(
      out, decodes ? MaxDecoded(text.size()) : MaxEncoded(table, replacement, text.size()));
  const char* const end = decodes ? WithoutMark(begin, DecodeText(table, text, begin, counts))
                                  : EncodeText(table, replacement, text, begin, counts);
  out.ReleaseBuffer(out.GetLength() + static_cast<int>(end - begin));
  status = fallback || counts.replaced > 0;
  return true;
}

// ---- Running -----------------------------------------------------------------------------------

char* ConversionPipeline::RunStage(std::size_t stage, std::string_view in, bool last, char* out,
                                   CConversionReport* report) {
  char* const end =
      std::visit([&](auto& held) { return held.Convert(in, last, out, report); }, Stages()[stage]);
  if (stage == 0) {
    progress_.inputSize += static_cast<long long>(in.size());
    progress_.middleSize += end - out;
  }
  if (stage + 1 == Stages().size()) progress_.outputSize += end - out;
  return end;
}

// Runs one stage and gives what it wrote, which stays valid until it runs again.
std::string_view ConversionPipeline::RunInRoom(std::size_t stage, std::string_view in, bool last,
                                               CConversionReport* report) {
  const std::size_t size =
      std::visit([&in](const auto& held) { return held.MaxOutput(in.size()); }, Stages()[stage]);
  rooms_.resize(Stages().size());
  Room& room = rooms_[stage];
  if (room.size < size) {
    room.bytes = std::make_unique_for_overwrite<char[]>(size);
    room.size = size;
  }
  char* const begin = room.bytes.get();
  const char* const end = RunStage(stage, in, last, begin, report);
  return {begin, static_cast<std::size_t>(end - begin)};
}

// Runs the stages from first on, the last one at the end of out.
void ConversionPipeline::RunFrom(std::size_t first, std::string_view in, bool last, CBuffer& out,
                                 CConversionReport* report) {
  const std::size_t lastStage = Stages().size() - 1;
  for (std::size_t stage = first; stage < lastStage; ++stage) {
    in = RunInRoom(stage, in, last, report);
  }
  const std::size_t size = std::visit([&in](const auto& held) { return held.MaxOutput(in.size()); },
                                      Stages()[lastStage]);
  char* const begin = GrowBuffer(out, size);
  const char* const end = RunStage(lastStage, in, last, begin, report);
  out.ReleaseBuffer(out.GetLength() + static_cast<int>(end - begin));
}

// Takes the room for the whole result once. Where its bound, but perhaps not the result, is more
// than a buffer holds, the buffer grows block by block from there.
void ConversionPipeline::Reserve(std::size_t inputSize, CBuffer& out) const {
  const auto length = static_cast<std::size_t>(out.GetLength());
  GrowBuffer(out, std::min(MaxOutput(inputSize) + MaxOutput(0), kMaxBufferSize - length));
}

void ConversionPipeline::Convert(std::string_view in, bool last, CBuffer& out,
                                 CConversionReport* report) {
  if (Stages().empty()) {
    char* const end = std::copy(in.begin(), in.end(), GrowBuffer(out, in.size()));
    out.ReleaseBuffer(static_cast<int>(end - out.GetBuffer()));
    return;
  }
  Reserve(in.size(), out);
  do {
    const std::string_view block = in.substr(0, kBlockSize);
    in.remove_prefix(block.size());
    if (report != nullptr && Stages().size() > 1) {
      ConvertReported(block, last && in.empty(), out, *report);
    } else {
      RunFrom(0, block, last && in.empty(), out, report);
    }
  } while (!in.empty());
}

long long ConversionPipeline::CountLosses(std::string_view text, Trial trial, long long limit) {
  CConversionReport report(0);
  const auto count = [&] { return report.Replaced() + (trial.fits ? report.Fits() - Marks() : 0); };
  while (!text.empty() && count() <= limit) {
    std::string_view in = text.substr(0, kBlockSize);
    text.remove_prefix(in.size());
    for (std::size_t stage = 0; stage < Stages().size(); ++stage) {
      const bool counts =
          trial.arithmetic || !std::holds_alternative<JapaneseStage>(Stages()[stage]);
      in = RunInRoom(stage, in, text.empty(), counts ? &report : nullptr);
    }
  }
  return count();
}

// ---- Losses of several stages ------------------------------------------------------------------
//
// A stage tells offsets in its own input and output. To have them in the source and in the
// result, a block that loses something is run again in halves, and where the losses are close byte
// by byte: when all stages have seen all of a character, whatever was lost meanwhile is one loss of
// that character.

void ConversionPipeline::ConvertReported(std::string_view block, bool last, CBuffer& out,
                                         CConversionReport& report) {
  if (character_.lost || IsFirstBitwise() || block.size() <= kLocateSize) {
    LocateLosses(block, last, out, report);
    return;
  }
  Progress before = progress_;
  const long long noted = Losses() + Marks();
  const int length = out.GetLength();
  RunFrom(0, block, last, out, nullptr);
  const auto losses = static_cast<std::size_t>(Losses() + Marks() - noted);
  if (losses == 0) {
    character_ = {ConsumedInput(), progress_.outputSize};
    return;
  }
  progress_ = std::move(before);
  out.ReleaseBuffer(length);
  if (losses * kLocateSize >= block.size()) {
    LocateLosses(block, last, out, report);
    return;
  }
  const std::size_t half = block.size() / 2;
  ConvertReported(block.substr(0, half), false, out, report);
  ConvertReported(block.substr(half), last, out, report);
}

void ConversionPipeline::LocateLosses(std::string_view block, bool last, CBuffer& out,
                                      CConversionReport& report) {
  for (std::size_t i = 0; i < block.size(); ++i) {
    LocateInByte(block.substr(i, 1), last && i + 1 == block.size(), out, report);
  }
  if (block.empty()) LocateInByte({}, last, out, report);
}

// The source up to the last border of the first stage.
long long ConversionPipeline::ConsumedInput() const {
  const auto pending = std::visit([](const auto& held) { return held.Pending(); }, Stages()[0]);
  return progress_.inputSize - static_cast<long long>(pending);
}

// One byte can end a malformed sequence and be a character of its own, so what the first stage
// makes of it is cut into pieces at its losses. What follows the last loss are single bytes.
void ConversionPipeline::LocateInByte(std::string_view byte, bool last, CBuffer& out,
                                      CConversionReport& report) {
  const long long unitSize = std::holds_alternative<DecodeStage>(Stages()[0]) ? 2 : 1;
  const long long origin = progress_.middleSize;
  CConversionReport own(kAll);
  const std::string_view middle = RunInRoom(0, byte, last, &own);
  const long long inputEnd = ConsumedInput();
  const auto size = static_cast<long long>(middle.size());
  const auto piece = [&](long long begin, long long end) {
    return middle.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
  };

  long long pos = 0;
  const auto& losses = own.First();
  for (std::size_t i = 0; i < losses.size(); ++i) {
    const long long begin = std::clamp(losses[i].outputOffset - origin, pos, size);
    EndPiece(piece(pos, begin), losses[i].inputOffset, false, out, report);
    const long long lossEnd = losses[i].inputOffset + losses[i].inputLength;
    pos = std::clamp(i + 1 < losses.size() ? losses[i + 1].outputOffset - origin
                                           : size - (inputEnd - lossEnd) * unitSize,
                     begin, size);
    NoteLoss(losses[i].kind);
    EndPiece(piece(begin, pos), lossEnd, false, out, report);
  }
  EndPiece(piece(pos, size), inputEnd, last, out, report);
}

// Runs a piece of the first stage's output, which stands for the source up to inputEnd, through
// the other stages; the character ends here when none of them waits for more.
void ConversionPipeline::EndPiece(std::string_view piece, long long inputEnd, bool last,
                                  CBuffer& out, CConversionReport& report) {
  CConversionReport later(0);
  if (last || !piece.empty()) RunFrom(1, piece, last, out, &later);
  if (later.Fits() > 0) NoteLoss(ConversionLossKind::kFit);
  if (later.Replaced() > 0) NoteLoss(ConversionLossKind::kReplaced);
  const bool isPart = piece.empty() && !character_.lost && IsFirstBitwise();
  if (!last && (isPart || IsPendingFrom(1))) return;
  if (character_.lost) {
    // A byte of Base64 can belong to two characters.
    const long long begin = std::min(character_.inputOffset, inputEnd - 1);
    report.Add(
        {character_.kind, begin, static_cast<int>(inputEnd - begin), character_.outputOffset});
  }
  character_ = {inputEnd, progress_.outputSize};
}

bool ConversionPipeline::IsFirstBitwise() const {
  const auto* const decoding = std::get_if<DecodeStage>(&Stages()[0]);
  return decoding != nullptr && decoding->IsBitwise();
}

void ConversionPipeline::NoteLoss(ConversionLossKind kind) {
  character_.lost = true;
  character_.kind = std::max(character_.kind, kind);
}

// ---- The public face ---------------------------------------------------------------------------

struct Transcoder::State {
  ConversionPipeline pipeline;
};

Transcoder::Transcoder(CodeType from, CodeType to, int emptyFallback, Utf16Order order)
    : state_(new State{ConversionPipeline::OfCodeTypes(from, to, emptyFallback, false, order)}) {}
Transcoder::~Transcoder() = default;
Transcoder::Transcoder(Transcoder&&) noexcept = default;
Transcoder& Transcoder::operator=(Transcoder&&) noexcept = default;

void Transcoder::Convert(std::string_view chunk, bool last, CBuffer& out,
                         CConversionReport* report) {
  state_->pipeline.Convert(chunk, last, out, report);
}

long Transcoder::Status() const {
  return state_->pipeline.Status();
}

bool ConvertsExactly(CodeType from, std::string_view text, CodeType to) {
  return ConversionPipeline::OfCodeTypes(from, to, 0).CountLosses(text, {}, 0) == 0;
}

}  // namespace lumr
