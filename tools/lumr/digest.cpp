// lumr digest: MD5 and HMAC-MD5 of files.
#include <string>
#include <vector>

#include "cipherkey.h"
#include "input.h"
#include "json.h"
#include "lumrmisc/crypto/md5.h"
#include "safetext.h"
#include "subcommands.h"

namespace lumr::tool {

namespace {

constexpr std::size_t kChunkSize = 1u << 18;

struct DigestOptions {
  std::vector<std::string> files;
  KeySource key;
};

void DeclareMd5(CLI::App& command, DigestOptions& options) {
  command.add_option("FILE", options.files, Text(Say::kDigestFile))->type_name("");
}

void DeclareHmac(CLI::App& command, DigestOptions& options) {
  DeclareMd5(command, options);
  options.key.Declare(command);
}

FileError Md5Of(const std::string& file, unsigned char digest[16]) {
  Input input;
  if (const FileError error = input.Open(file)) return error;
  Md5 md5;
  std::string buffer(kChunkSize, '\0');
  for (;;) {
    std::size_t got = 0;
    if (const FileError error = input.Read(buffer.data(), buffer.size(), got)) return error;
    if (got == 0) break;
    md5.Update(buffer.data(), got);
  }
  md5.Final(digest);
  return {};
}

FileError HmacOf(const std::string& file, const Secret& key, unsigned char digest[16]) {
  std::string content;
  if (const FileError error = ReadAll(file, content)) return error;
  const auto bytes = [](const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
  };
  hmac_md5(bytes(content), static_cast<int>(content.size()), bytes(key.Bytes()),
           static_cast<int>(key.Bytes().size()), digest);
  return {};
}

void Print(Session& session, const std::string& file, const char* algorithm,
           const unsigned char digest[16]) {
  std::string hex;
  for (std::size_t i = 0; i < 16; ++i) {
    hex += "0123456789abcdef"[digest[i] >> 4];
    hex += "0123456789abcdef"[digest[i] & 15];
  }
  session.Write(
      session.json ? JsonLine({{"file", JsonText(file)}, {"algorithm", algorithm}, {"digest", hex}})
                   : hex + "  " + SafeLine(file) + '\n');
}

template <typename Digest>
void RunFiles(Session& session, const DigestOptions& options, const char* algorithm,
              Digest digestOf) {
  std::vector<std::string> files = options.files;
  if (files.empty()) files.emplace_back("-");
  std::int64_t done = 0;
  for (const std::string& file : files) {
    unsigned char digest[16];
    if (const FileError error = digestOf(file, digest)) {
      session.TellUnreadable(file, error);
    } else {
      Print(session, file, algorithm, digest);
    }
    session.Progress(++done, static_cast<std::int64_t>(files.size()), file);
  }
}

void RunMd5(Session& session, DigestOptions& options) {
  RunFiles(session, options, "md5", Md5Of);
}

void RunHmac(Session& session, DigestOptions& options) {
  const Secret* const key = options.key.Get(session);
  if (key == nullptr) return;
  RunFiles(session, options, "hmac-md5", [key](const std::string& file, unsigned char* digest) {
    return HmacOf(file, *key, digest);
  });
}

constexpr Subcommand<DigestOptions> kRows[] = {
    {"md5", Say::kDigestMd5, DeclareMd5, RunMd5},
    {"hmac-md5", Say::kDigestHmac, DeclareHmac, RunHmac},
};

}  // namespace

Runner AddDigest(CLI::App& command) {
  return AddSubcommands<DigestOptions>(command, kRows);
}

}  // namespace lumr::tool
