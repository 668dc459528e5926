// The vectors of other projects.
#include <gtest/gtest.h>

#include <string>

#include "mailtext/coders.h"
#include "mailtext/corpus.h"
#include "mailtext/decode_rows.h"

namespace lumr {
namespace {

TEST(TransferVectors, Base64) {
  LUMR_NEEDS_CORPUS();
  for (const auto& row : ReadJsonLines("base64.jsonl")) {
    if (row[1] == "valid") {
      EXPECT_EQ(DecodeWhole(kB64, row[5]), FromHex(row[3])) << row[5];
      EXPECT_EQ(Base64(FromHex(row[3]), 0), row[5]);
    } else {
      EXPECT_EQ(RunCoder(MakeTransferDecoder(kB64, true), row[3]).wellFormed, 0) << row[3];
    }
  }
  const std::string photo = ReadVector("photo.b64");
  EXPECT_EQ(DecodeWhole(kB64, photo), ReadVector("photo.jpg"));
  EXPECT_EQ(RunCoder(MakeTransferDecoder(kB64, false), photo, {1, 80, 5000}).wellFormed, 1);
}

TEST(TransferVectors, QuotedPrintable) {
  LUMR_NEEDS_CORPUS();
  EXPECT_EQ(DecodeWhole(kQp, ReadVector("wikipedia.qp")), ReadVector("wikipedia.txt"));
}

TEST(TransferVectors, BinHex) {
  LUMR_NEEDS_CORPUS();
  EXPECT_EQ(DecodeWhole(TransferEncoding::kBinHex, ReadVector("eyeball.gif.hqx")),
            ReadVector("eyeball.gif"));
}

TEST(TransferVectors, UuencodeBetweenLinesOfJunk) {
  LUMR_NEEDS_CORPUS();
  const std::string mail = ReadVector("uu-zeegee.msg.txt");
  const struct {
    const char* name;
    std::string_view start;  // of the GIF: signature, width and height
    std::size_t length;
  } files[] = {
      {"up.gif", "GIF87a\x13\0\x13\0"sv, 110},
      {"zeegee.gif", "GIF87a[\0p\0"sv, 4834},
  };
  for (const auto& file : files) {
    SCOPED_TRACE(file.name);
    const std::string text = mail.substr(mail.find("begin 644 " + std::string(file.name)));
    CStringA name;
    CBuffer data;
    EXPECT_EQ(DecodeUuencode(text, nullptr, &name, &data), 1);
    EXPECT_EQ(name, file.name);
    EXPECT_EQ(data.Bytes().substr(0, 10), file.start);
    EXPECT_EQ(data.Bytes().size(), file.length);
    EXPECT_EQ(data.Bytes().back(), ';');  // ends a GIF
  }
  // The lenient coder finds the first one by itself.
  EXPECT_EQ(RunCoder(MakeTransferDecoder(kUu, true), mail).text.size(), files[0].length);
}

TEST(TransferVectors, MailboxNames) {
  LUMR_NEEDS_CORPUS();
  for (const auto& row : ReadJsonLines("imap-utf7.jsonl")) {
    const std::string &text = row[1], &encoded = row[3];
    CStringW name;
    DecodeImap4UTF7(encoded, name);
    EXPECT_EQ(Utf8(name), text) << encoded;
    CBuffer back;
    EncodeImap4UTF7(name, back);
    EXPECT_EQ(back, encoded);
  }
}

}  // namespace
}  // namespace lumr
