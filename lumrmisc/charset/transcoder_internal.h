// The stages of a conversion between code types or code pages, as one object.
#pragma once

#include <cstddef>
#include <limits>
#include <memory>
#include <string_view>
#include <variant>
#include <vector>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/charset/japanese_internal.h"
#include "lumrmisc/charset/transcoder.h"
#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/conversion_report.h"

namespace lumr {

constexpr unsigned kJapaneseCodePage = 932;
constexpr unsigned kUtf16CodePage = 1200;
constexpr unsigned kUtf7CodePage = 65000;
constexpr unsigned kUtf8CodePage = 65001;

// A text argument of conversion and detection: null, or a length below 1, is an empty text.
inline std::string_view TextOf(const char* text, int len) {
  return text == nullptr || len < 1 ? std::string_view()
                                    : std::string_view(text, static_cast<std::size_t>(len));
}

// A stage takes bytes chunk by chunk and writes bytes. All have the same members: MaxOutput,
// Convert and Pending as in JapaneseConverter; Lost, the fits and replacements so far; Marks, the
// byte-order marks removed so far; IsInexact, whether the stage makes the status 1.

class JapaneseStage {
 public:
  explicit JapaneseStage(JapaneseConversion conversion) : converter_(conversion) {}
  std::size_t MaxOutput(std::size_t size) const { return converter_.MaxOutput(size); }
  char* Convert(std::string_view in, bool last, char* out, CConversionReport* report) {
    return converter_.Convert(in, last, out, report);
  }
  std::size_t Pending() const { return converter_.Pending(); }
  long long Lost() const { return converter_.Lost(); }
  int Marks() const { return 0; }
  bool IsInexact() const { return false; }  // the arithmetic has no status

 private:
  JapaneseConverter converter_;
};

// A code page to UTF-16 without a leading byte-order mark. An unsupported code page is read as
// 1252.
class DecodeStage {
 public:
  explicit DecodeStage(unsigned codePage);
  std::size_t MaxOutput(std::size_t size) const { return decoder_.MaxOutput(size); }
  char* Convert(std::string_view in, bool last, char* out, CConversionReport* report);
  std::size_t Pending() const { return decoder_.Pending(); }
  long long Lost() const { return decoder_.Counts().fits + decoder_.Counts().replaced; }
  int Marks() const { return markRemoved_ ? 1 : 0; }
  bool IsInexact() const { return (fallback_ && hasInput_) || decoder_.Counts().replaced > 0; }
  // Whether characters end inside bytes, as in the Base64 of UTF-7.
  bool IsBitwise() const { return codePage_ == kUtf7CodePage; }

 private:
  char* RemoveMark(char* begin, char* end);

  bool fallback_;  // the code page is not supported
  CodePageDecoder decoder_;
  unsigned codePage_;
  bool hasInput_ = false;
  bool atStart_ = true;
  bool markRemoved_ = false;
};

// UTF-16 to a code page; to 1252 instead of an unsupported one. A byte-order mark at the start
// is kept, but would not come back: it counts as one that was removed.
class EncodeStage {
 public:
  EncodeStage(unsigned codePage, int emptyFallback);
  std::size_t MaxOutput(std::size_t size) const { return encoder_.MaxOutput(size); }
  char* Convert(std::string_view in, bool last, char* out, CConversionReport* report);
  std::size_t Pending() const { return encoder_.Pending(); }
  long long Lost() const { return encoder_.Counts().fits + encoder_.Counts().replaced; }
  int Marks() const { return hasMark_ ? 1 : 0; }
  bool IsInexact() const { return (fallback_ && hasInput_) || encoder_.Counts().replaced > 0; }

 private:
  void ReadHead(std::string_view in, CConversionReport* report);

  bool fallback_;
  CodePageEncoder encoder_;
  bool isUnicode_;  // the code page has the mark
  bool hasInput_ = false;
  char head_[2] = {};  // the first bytes of the text, where there may be a mark
  std::size_t headSize_ = 0;
  bool hasMark_ = false;
};

// UTF-16 of either byte order to little-endian without a byte-order mark. A last odd byte of
// big-endian text is dropped.
class ByteOrderStage {
 public:
  explicit ByteOrderStage(Utf16Order order) : swap_(order == Utf16Order::kBigEndian) {}
  std::size_t MaxOutput(std::size_t size) const { return size + pendingSize_; }
  char* Convert(std::string_view in, bool last, char* out, CConversionReport* report);
  std::size_t Pending() const { return pendingSize_; }
  long long Lost() const { return lost_; }
  int Marks() const { return markRemoved_ ? 1 : 0; }
  bool IsInexact() const { return false; }

 private:
  bool ReadMark(char first, char second);
  char* WritePairs(std::string_view pairs, char* out) const;
  char* Flush(char* out, long long outputOffset, CConversionReport* report);

  char pending_ = 0;
  std::size_t pendingSize_ = 0;
  bool swap_;
  bool atStart_ = true;
  bool markRemoved_ = false;
  int lost_ = 0;
  long long inputSize_ = 0;
  long long outputSize_ = 0;
};

// Leaves out zero bytes.
class DropZeroStage {
 public:
  std::size_t MaxOutput(std::size_t size) const { return size; }
  char* Convert(std::string_view in, bool last, char* out, CConversionReport* report);
  std::size_t Pending() const { return 0; }
  long long Lost() const { return inputSize_ - outputSize_; }
  int Marks() const { return 0; }
  bool IsInexact() const { return false; }

 private:
  long long inputSize_ = 0;
  long long outputSize_ = 0;
};

// The stages of one conversion, from the source to the result. The pieces of a text give the
// same as the whole.
class ConversionPipeline {
 public:
  // dropZero: zero bytes of the target's code-page form are left out.
  static ConversionPipeline OfCodeTypes(CodeType from, CodeType to, int emptyFallback,
                                        bool dropZero = false,
                                        Utf16Order order = Utf16Order::kLittleEndian);
  static ConversionPipeline OfCodePages(unsigned from, unsigned to, int emptyFallback,
                                        bool dropZero = false);

  // Appends the conversion of in to out.
  void Convert(std::string_view in, bool last, CBuffer& out, CConversionReport* report);

  // Converts the whole text to nowhere and counts what is lost; ends at the first block after
  // which more than limit are. Removed byte-order marks do not count.
  struct Trial {
    bool fits = true;        // whether fits count
    bool arithmetic = true;  // whether the conversions of the Japanese byte forms count
  };
  long long CountLosses(std::string_view text, Trial trial, long long limit = kNoLimit);
  static constexpr long long kNoLimit = std::numeric_limits<long long>::max();

  long Status() const;
  bool IsEncodingInexact() const;  // whether the step from UTF-16 made the status 1

 private:
  using Stage =
      std::variant<JapaneseStage, DecodeStage, EncodeStage, ByteOrderStage, DropZeroStage>;

  // What the run so far has changed; copied to run a block again.
  struct Progress {
    std::vector<Stage> stages;  // none: the bytes are copied
    long long inputSize = 0;    // bytes given to the first stage
    long long middleSize = 0;   // bytes that the first stage wrote
    long long outputSize = 0;   // bytes that the last stage wrote
  };

  // The output of a stage in memory of the pipeline.
  struct Room {
    std::unique_ptr<char[]> bytes;
    std::size_t size = 0;
  };

  // A stretch of the source between two borders that all stages agree on: one character, except
  // where the stages take malformed bytes apart in different ways.
  struct Character {
    long long inputOffset = 0;
    long long outputOffset = 0;
    bool lost = false;
    ConversionLossKind kind = ConversionLossKind::kFit;  // the worst of its losses
  };

  std::vector<Stage>& Stages() { return progress_.stages; }
  const std::vector<Stage>& Stages() const { return progress_.stages; }
  void AddCodePages(unsigned from, unsigned to, int emptyFallback, bool dropZero);

  bool IsPendingFrom(std::size_t first) const;
  bool IsFirstBitwise() const;
  long long Losses() const;
  long long Marks() const;
  std::size_t MaxOutput(std::size_t size) const;
  void Reserve(std::size_t inputSize, CBuffer& out) const;

  char* RunStage(std::size_t stage, std::string_view in, bool last, char* out,
                 CConversionReport* report);
  std::string_view RunInRoom(std::size_t stage, std::string_view in, bool last,
                             CConversionReport* report);
  void RunFrom(std::size_t first, std::string_view in, bool last, CBuffer& out,
               CConversionReport* report);

  void ConvertReported(std::string_view block, bool last, CBuffer& out, CConversionReport& report);
  void LocateLosses(std::string_view block, bool last, CBuffer& out, CConversionReport& report);
  void LocateInByte(std::string_view byte, bool last, CBuffer& out, CConversionReport& report);
  void EndPiece(std::string_view piece, long long inputEnd, bool last, CBuffer& out,
                CConversionReport& report);
  void NoteLoss(ConversionLossKind kind);
  long long ConsumedInput() const;

  Progress progress_;
  std::vector<Room> rooms_;
  Character character_;
};

// What a pipeline of code pages does, at less cost, for a short text and a single stage; false,
// and nothing is done, where it takes another one. Encodes with "?" for what has no code.
bool ConvertInOneStage(unsigned from, unsigned to, std::string_view text, CBuffer& out,
                       long& status);

}  // namespace lumr
