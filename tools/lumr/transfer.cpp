// lumr encode, lumr decode: the transfer encodings of mail.
#include <memory>
#include <string>

#include "command.h"
#include "input.h"
#include "json.h"
#include "lumrmisc/charset/transcoder.h"
#include "lumrmisc/mailtext/transfercoder.h"
#include "outgoing.h"
#include "safetext.h"

namespace lumr::tool {

namespace {

constexpr std::size_t kChunkSize = 1u << 18;

struct TransferOptionValues {
  std::string encoding;
  std::string file = "-";
  TransferOptions options;
  bool binary = false;
};

struct EncodingRow {
  const char* name;
  TransferEncoding encoding;
  bool byLine;  // a text of names, one a line
};
constexpr EncodingRow kEncodings[] = {
    {"base64", TransferEncoding::kBase64, false}, {"qp", TransferEncoding::kQuotedPrintable, false},
    {"uu", TransferEncoding::kUuencode, false},   {"binhex", TransferEncoding::kBinHex, false},
    {"hex", TransferEncoding::kHex, false},       {"url", TransferEncoding::kUrl, false},
    {"imap", TransferEncoding::kImapUtf7, true},
};

const EncodingRow* FindEncoding(std::string_view name) {
  for (const EncodingRow& row : kEncodings) {
    if (name == row.name) return &row;
  }
  return nullptr;
}

// Takes input in pieces and appends what comes of it.
class Stage {
 public:
  virtual ~Stage() = default;
  virtual void Update(std::string_view piece, CBuffer& out) = 0;
  virtual bool Finish(CBuffer& out) = 0;  // false when the input was malformed
};

class CoderStage : public Stage {
 public:
  explicit CoderStage(std::unique_ptr<TransferCoder> coder) : coder_(std::move(coder)) {}
  void Update(std::string_view piece, CBuffer& out) override { coder_->Update(piece, out); }
  bool Finish(CBuffer& out) override { return coder_->Finish(out) != 0; }

 private:
  std::unique_ptr<TransferCoder> coder_;
};

// Mailbox names, one a line: UTF-8 on the terminal's side, UTF-16 on the coder's.
class MailboxNameStage : public Stage {
 public:
  explicit MailboxNameStage(bool encode) : encode_(encode) { Begin(); }

  void Update(std::string_view piece, CBuffer& out) override {
    while (!piece.empty()) {
      const std::size_t feed = piece.find('\n');
      const std::string_view line = piece.substr(0, feed);
      if (!line.empty()) Name(line, false, out);
      if (feed == std::string_view::npos) return;
      Name({}, true, out);
      Begin();
      out += '\n';
      piece.remove_prefix(feed + 1);
    }
  }

  bool Finish(CBuffer& out) override {
    Name({}, true, out);
    return wellFormed_;
  }

 private:
  void Begin() {
    coder_ = encode_ ? MakeTransferEncoder(TransferEncoding::kImapUtf7)
                     : MakeTransferDecoder(TransferEncoding::kImapUtf7, true);
    transcoder_ = encode_ ? std::make_unique<Transcoder>(CT_UTF8, CT_UNICODE, 0)
                          : std::make_unique<Transcoder>(CT_UNICODE, CT_UTF8, 0);
  }

  void Name(std::string_view part, bool last, CBuffer& out) {
    between_.Empty();
    if (encode_) {
      transcoder_->Convert(part, last, between_);
      coder_->Update(between_.Bytes(), out);
      if (last) wellFormed_ = coder_->Finish(out) != 0 && wellFormed_;
    } else {
      coder_->Update(part, between_);
      if (last) wellFormed_ = coder_->Finish(between_) != 0 && wellFormed_;
      transcoder_->Convert(between_.Bytes(), last, out);
    }
    if (last) wellFormed_ = wellFormed_ && transcoder_->Status() == 0;
  }

  bool encode_;
  bool wellFormed_ = true;
  std::unique_ptr<TransferCoder> coder_;
  std::unique_ptr<Transcoder> transcoder_;
  CBuffer between_;
};

std::unique_ptr<Stage> MakeStage(const EncodingRow& row, bool encode,
                                 const TransferOptions& options) {
  if (row.byLine) return std::make_unique<MailboxNameStage>(encode);
  return std::make_unique<CoderStage>(encode ? MakeTransferEncoder(row.encoding, options)
                                             : MakeTransferDecoder(row.encoding, true));
}

// Runs a whole input through a stage to standard output.
FileError Pump(Session& session, const std::string& file, Stage& stage, bool& wellFormed) {
  Input input;
  if (const FileError error = input.Open(file)) return error;
  std::string buffer(kChunkSize, '\0');
  CBuffer out;
  for (;;) {
    std::size_t got = 0;
    if (const FileError error = input.Read(buffer.data(), buffer.size(), got)) return error;
    out.Empty();
    if (got == 0) break;
    stage.Update(std::string_view(buffer.data(), got), out);
    session.Write(out.Bytes());
  }
  wellFormed = stage.Finish(out);
  session.Write(out.Bytes());
  return {};
}

void RunTransfer(Session& session, TransferOptionValues& values, bool encode) {
  const EncodingRow* const row = FindEncoding(values.encoding);
  if (row == nullptr || (encode && row->encoding == TransferEncoding::kBinHex)) {
    session.Tell({}, row == nullptr ? Say::kUnknownEncoding : Say::kBinHexDecodeOnly,
                 {SafeLine(values.encoding)});
    session.Raise(kFailed);
    return;
  }
  if (values.binary) values.options.textMode = 0;
  const auto stage = MakeStage(*row, encode, values.options);
  bool wellFormed = true;
  if (const FileError error = Pump(session, values.file, *stage, wellFormed)) {
    session.TellUnreadable(values.file, error);
    return;
  }
  if (!wellFormed) session.Raise(kLost);
  if (session.json) {
    const std::string line = JsonLine(
        {{"file", JsonText(values.file)}, {"encoding", row->name}, {"wellFormed", wellFormed}});
    session.TellLine(std::string_view(line).substr(0, line.size() - 1));
  } else if (!wellFormed) {
    session.Tell(values.file, encode ? Say::kBadTextInput : Say::kMalformedInput, {row->name});
  }
}

// Options that one encoding has; with another they would be ignored in silence.
struct OptionRow {
  const char* option;
  std::string_view encoding;
};
constexpr OptionRow kOptions[] = {
    {"--wrap", "base64"}, {"--binary", "qp"}, {"--all", "hex"}, {"--name", "uu"}};

bool CheckOptions(Session& session, const CLI::App& command, const TransferOptionValues& values) {
  if (FindEncoding(values.encoding) == nullptr) return true;  // is told elsewhere
  for (const OptionRow& row : kOptions) {
    if (row.encoding == values.encoding || command.count(row.option) == 0) continue;
    session.Tell({}, Say::kOptionOfEncoding, {row.option, row.encoding});
    session.Raise(kFailed);
    return false;
  }
  return CheckHeaderOption(session, "--name", values.options.uuName);
}

std::shared_ptr<TransferOptionValues> AddCommon(CLI::App& command, Say kind, Say file) {
  auto values = std::make_shared<TransferOptionValues>();
  command.add_option("ENCODING", values->encoding, Text(kind))->required()->type_name("");
  command.add_option("FILE", values->file, Text(file))->type_name("");
  return values;
}

}  // namespace

Runner AddEncode(CLI::App& command) {
  const auto values = AddCommon(command, Say::kEncodeKind, Say::kEncodeFile);
  command.add_option("--wrap", values->options.lineLength, Text(Say::kEncodeWrap))
      ->check(CLI::Range(0, 1 << 20).description(""))
      ->type_name("N");
  command.add_flag("--binary", values->binary, Text(Say::kEncodeBinary));
  command.add_flag("--all", values->options.encodeAll, Text(Say::kEncodeAll));
  command.add_option("--name", values->options.uuName, Text(Say::kEncodeName))->type_name("NAME");
  return [values, &command](Session& session) {
    if (CheckOptions(session, command, *values)) RunTransfer(session, *values, true);
  };
}

Runner AddDecode(CLI::App& command) {
  const auto values = AddCommon(command, Say::kDecodeKind, Say::kDecodeFile);
  return [values](Session& session) { RunTransfer(session, *values, false); };
}

}  // namespace lumr::tool
