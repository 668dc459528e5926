// lumr convert: text from one charset to another, with an account of what was lost.
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "charsets.h"
#include "command.h"
#include "input.h"
#include "json.h"
#include "lumrmisc/charset/detect.h"
#include "lumrmisc/charset/transcoder.h"
#include "safetext.h"

namespace lumr::tool {

namespace {

constexpr std::size_t kChunkSize = 1u << 18;
constexpr std::size_t kOffsetsTold = 3;
constexpr std::size_t kLossesReported = 100;

struct ConvertOptions {
  std::string from, to;
  bool inPlace = false;
  bool report = false;
  bool strict = false;
  std::vector<std::string> files;
};

// A text that can be read through more than once: a file, or what had to be taken into memory.
class Source {
 public:
  explicit Source(std::string name) : name_(std::move(name)) {}

  const std::string& Name() const { return name_; }

  FileError Hold() {
    held_ = std::make_unique<std::string>();
    return ReadAll(name_, *held_);
  }
  const std::string* Held() const { return held_.get(); }

  // Gives take the text in pieces, until it gives an error.
  FileError ForEachPiece(const std::function<FileError(std::string_view)>& take) const {
    if (held_ == nullptr) return ReadPieces(take);
    for (std::string_view rest = *held_; !rest.empty();) {
      const std::string_view piece = rest.substr(0, kChunkSize);
      rest.remove_prefix(piece.size());
      if (const FileError error = take(piece)) return error;
    }
    return {};
  }

 private:
  FileError ReadPieces(const std::function<FileError(std::string_view)>& take) const {
    Input input;
    if (const FileError error = input.Open(name_)) return error;
    std::string buffer(kChunkSize, '\0');
    for (;;) {
      std::size_t got = 0;
      if (const FileError error = input.Read(buffer.data(), buffer.size(), got)) return error;
      if (got == 0) return {};
      if (const FileError error = take(std::string_view(buffer.data(), got))) return error;
    }
  }

  std::string name_;
  std::unique_ptr<std::string> held_;
};

// The two ends of a conversion fail for reasons that have to be told apart.
struct Failure {
  FileError read, write;
};

using Sink = std::function<FileError(std::string_view)>;

// A code type, and for UTF-16 what its bytes are like.
struct Charset {
  CodeType codeType = CT_UNKNOWN;
  Utf16Order order = Utf16Order::kByMark;
};

Failure ConvertPieces(const Source& source, const Charset& from, CodeType to, const Sink& sink,
                      CConversionReport& report) {
  Transcoder transcoder(from.codeType, to, 0, from.order);
  CBuffer out;
  Failure failure;
  const auto convert = [&](std::string_view piece, bool last) {
    out.Empty();
    transcoder.Convert(piece, last, out, &report);
    return failure.write = sink(out.Bytes());
  };
  const FileError error =
      source.ForEachPiece([&](std::string_view piece) { return convert(piece, false); });
  if (failure.write) return failure;
  failure.read = error;
  if (!error) convert({}, true);
  return failure;
}

class Converter {
 public:
  Converter(Session& session, const ConvertOptions& options, const Charset& from, CodeType to)
      : session_(session), options_(options), from_(from), to_(to) {}

  void ConvertFile(const std::string& name) {
    Source source(name);
    Charset from = from_;
    // Standard input cannot be read twice, nor looked at before it is converted.
    const bool hold = from.codeType == CT_UNKNOWN || (name == "-" && options_.strict);
    if (const FileError error = hold ? source.Hold() : FileError()) {
      return session_.TellUnreadable(name, error);
    }
    if (from.codeType == CT_UNKNOWN) {
      const Detection found = ExplainDetection(*source.Held());
      if (found.rule == DetectionRule::kNothingTelling) {
        session_.Tell(name, Say::kNotDetected);
        return session_.Raise(kLost);
      }
      from.codeType = found.codeType;
    }
    CConversionReport report(kLossesReported);
    bool written = false;
    const Failure failure = options_.inPlace ? InPlace(source, from, report, written)
                                             : ToOutput(source, from, report, written);
    if (failure.read) return session_.TellUnreadable(name, failure.read);
    if (failure.write) return session_.TellUnwritable(name, failure.write);
    Report(name, from.codeType, report, written);
  }

 private:
  bool Refused(const CConversionReport& report) const {
    return options_.strict && !report.IsEmpty();
  }

  Failure ToOutput(const Source& source, const Charset& from, CConversionReport& report,
                   bool& written) {
    if (options_.strict) {
      const Sink nowhere = [](std::string_view) { return FileError(); };
      const Failure failure = ConvertPieces(source, from, to_, nowhere, report);
      if (failure.read || Refused(report)) return failure;
    }
    written = true;
    report = CConversionReport(kLossesReported);
    const Sink output = [this](std::string_view bytes) {
      session_.Write(bytes);
      return FileError();
    };
    return ConvertPieces(source, from, to_, output, report);
  }

  Failure InPlace(const Source& source, const Charset& from, CConversionReport& report,
                  bool& written) {
    DurableFile file;
    if (const FileError error = file.Open(PathFromUtf8(source.Name()))) return {{}, error};
    const Sink sink = [&file](std::string_view bytes) { return file.Write(bytes); };
    const Failure failure = ConvertPieces(source, from, to_, sink, report);
    if (failure.read || failure.write || Refused(report)) return failure;
    written = true;
    return {{}, file.Commit()};
  }

  void Report(const std::string& name, CodeType from, const CConversionReport& report,
              bool written) {
    if (session_.json) {
      ReportJson(name, from, report, written);
    } else {
      ReportText(name, from, report);
      if (!written) session_.Tell(name, Say::kNotWritten);
    }
    if (report.Replaced() > 0 || !written) session_.Raise(kLost);
  }

  void ReportText(const std::string& name, CodeType from, const CConversionReport& report) {
    if (options_.report && from_.codeType == CT_UNKNOWN) {
      session_.Tell(name, Say::kDetectedAs, {CharSetCode2Name(from)});
    }
    if (report.Replaced() > 0) TellLosses(name, from, ConversionLossKind::kReplaced, report);
    const bool fitsMatter = options_.report || options_.strict;
    if (fitsMatter && report.Fits() > 0) {
      TellLosses(name, from, ConversionLossKind::kFit, report);
    }
    if (!options_.report) return;
    for (const ConversionLoss& loss : report.First()) {
      const bool replaced = loss.kind == ConversionLossKind::kReplaced;
      session_.Tell(name, replaced ? Say::kReportReplaced : Say::kReportFit,
                    {std::to_string(loss.inputOffset), std::to_string(loss.inputLength)});
    }
    const long long all = report.Fits() + report.Replaced();
    const long long untold = all - static_cast<long long>(report.First().size());
    if (untold > 0) session_.Tell(name, Say::kReportMore, {Grouped(untold)});
    if (report.IsEmpty()) session_.Tell(name, Say::kReportExact);
  }

  void TellLosses(const std::string& name, CodeType from, ConversionLossKind kind,
                  const CConversionReport& report) {
    const bool replaced = kind == ConversionLossKind::kReplaced;
    std::string offsets;
    std::size_t told = 0;
    for (const ConversionLoss& loss : report.First()) {
      if (loss.kind != kind || told == kOffsetsTold) continue;
      if (++told > 1) offsets += ", ";
      offsets += std::to_string(loss.inputOffset);
    }
    const long long count = replaced ? report.Replaced() : report.Fits();
    if (count > static_cast<long long>(told)) offsets += ", ...";
    // A charset of all characters lacks none: what was replaced could not be read.
    const bool unread = replaced && (to_ == CT_UTF8 || to_ == CT_UTF7 || to_ == CT_UNICODE);
    session_.Tell(name,
                  unread     ? Say::kUnreadCharacters
                  : replaced ? Say::kLostCharacters
                             : Say::kFittedCharacters,
                  {Grouped(count), CharSetCode2Name(unread ? from : to_), offsets});
  }

  // Standard output is free for reports only when the text goes into files.
  void ReportJson(const std::string& name, CodeType from, const CConversionReport& report,
                  bool written) {
    Json object = {{"file", JsonText(name)},        {"from", CharSetCode2Name(from)},
                   {"to", CharSetCode2Name(to_)},   {"written", written},
                   {"replaced", report.Replaced()}, {"fits", report.Fits()}};
    Json losses = Json::array();
    for (const ConversionLoss& loss : report.First()) {
      losses.push_back({{"kind", loss.kind == ConversionLossKind::kFit ? "fit" : "replaced"},
                        {"offset", loss.inputOffset},
                        {"length", loss.inputLength},
                        {"outputOffset", loss.outputOffset}});
    }
    object["losses"] = std::move(losses);
    const std::string line = JsonLine(object);
    if (options_.inPlace) {
      session_.Write(line);
    } else {
      session_.TellLine(std::string_view(line).substr(0, line.size() - 1));
    }
  }

  Session& session_;
  const ConvertOptions& options_;
  Charset from_;
  CodeType to_;
};

// The charset of an option, with a message for a name that is none or cannot be the target.
// US-ASCII is no target: the library keeps such text in Shift_JIS, and would write that.
Charset CharsetOption(Session& session, const std::string& name, bool isTarget) {
  Charset charset;
  charset.codeType = CodeTypeOfArgument(name, charset.order);
  const bool canBeTarget = charset.order != Utf16Order::kBigEndian && charset.codeType != CT_ASCII;
  if (charset.codeType == CT_UNKNOWN || (isTarget && !canBeTarget)) {
    session.Tell({}, isTarget ? Say::kUnknownTarget : Say::kUnknownCharset, {SafeLine(name)});
    session.Raise(kFailed);
  }
  return charset;
}

void RunConvert(Session& session, const ConvertOptions& options) {
  const CodeType to = CharsetOption(session, options.to, true).codeType;
  const Charset from =
      options.from.empty() ? Charset() : CharsetOption(session, options.from, false);
  std::vector<std::string> files = options.files;
  if (files.empty()) files.emplace_back("-");
  for (const std::string& file : files) {
    if (!options.inPlace || file != "-") continue;
    session.Tell({}, Say::kStdinInPlace);
    session.Raise(kFailed);
  }
  if (session.Status() != kDone) return;
  Converter converter(session, options, from, to);
  std::int64_t done = 0;
  for (const std::string& file : files) {
    converter.ConvertFile(file);
    session.Progress(++done, static_cast<std::int64_t>(files.size()), file);
  }
}

}  // namespace

Runner AddConvert(CLI::App& command) {
  const auto options = std::make_shared<ConvertOptions>();
  command.add_option("-f,--from", options->from, Text(Say::kConvertFrom))->type_name("CHARSET");
  command.add_option("-t,--to", options->to, Text(Say::kConvertTo))
      ->required()
      ->type_name("CHARSET");
  command.add_flag("--in-place", options->inPlace, Text(Say::kConvertInPlace));
  command.add_flag("--report", options->report, Text(Say::kConvertReport));
  command.add_flag("--strict", options->strict, Text(Say::kConvertStrict));
  command.add_option("FILE", options->files, Text(Say::kConvertFile))->type_name("");
  return [options](Session& session) { RunConvert(session, *options); };
}

}  // namespace lumr::tool
