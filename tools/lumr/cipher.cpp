// lumr cipher: data under a pass phrase, in the form of enciphered setting files.
#include <string>

#include "cipherkey.h"
#include "input.h"
#include "json.h"
#include "lumrmisc/crypto/blowfish.h"
#include "subcommands.h"

namespace lumr::tool {

namespace {

struct CipherOptions {
  std::string file = "-";
  KeySource key;
};

void Declare(CLI::App& command, CipherOptions& options) {
  command.add_option("FILE", options.file, Text(Say::kCipherFile))->type_name("");
  options.key.Declare(command);
}

using Cipher = bool (*)(const char* key, const std::string& in, CBuffer& out, CStringA& message);

const unsigned char* BytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

bool Encipher(const char* key, const std::string& in, CBuffer& out, CStringA&) {
  return EncodeBlowFish(key, BytesOf(in), static_cast<int>(in.size()), out) != 0;
}

bool Decipher(const char* key, const std::string& in, CBuffer& out, CStringA& message) {
  return DecodeBlowFish(key, BytesOf(in), static_cast<int>(in.size()), out, message) != 0;
}

template <Cipher kCipher>
void Run(Session& session, CipherOptions& options) {
  const Secret* const key = options.key.Get(session);
  if (key == nullptr) return;
  std::string in;
  if (const FileError error = ReadAll(options.file, in)) {
    return session.TellUnreadable(options.file, error);
  }
  CBuffer out;
  CStringA message;
  const bool done = kCipher(key->Text(), in, out, message);
  if (done) session.Write(out.Bytes());
  if (!done) session.Raise(kLost);
  if (session.json) {
    const std::string line =
        JsonLine({{"file", JsonText(options.file)}, {"done", done}, {"size", out.GetLength()}});
    session.TellLine(std::string_view(line).substr(0, line.size() - 1));
  } else if (!done) {
    session.Tell(options.file, LibraryText(message));
  }
}

constexpr Subcommand<CipherOptions> kRows[] = {
    {"encrypt", Say::kCipherEncrypt, Declare, Run<Encipher>},
    {"decrypt", Say::kCipherDecrypt, Declare, Run<Decipher>},
};

}  // namespace

Runner AddCipher(CLI::App& command) {
  return AddSubcommands<CipherOptions>(command, kRows);
}

}  // namespace lumr::tool
