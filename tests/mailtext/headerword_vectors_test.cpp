// The vectors of other projects.
#include <gtest/gtest.h>

#include <string>

#include "lumrmisc/mailtext/headerword.h"
#include "mailtext/corpus.h"

namespace lumr {
namespace {

// Where this reader deliberately answers otherwise than the source of the vectors expects.
struct Different {
  const char* source;
  const char* expected;  // ours
  const char* reason;
};

constexpr Different kDifferent[] = {
    {"jsmime-words-024", "ab", "an unknown label: what the bytes say is better than code"},
    {"jsmime-words-026", "Almost", "so is a word without its end"},
    {"jsmime-words-028", "??", "code page 936 has no codes of four bytes"},
    {"jsmime-words-034", "a💩💩💩💩💩💩💩\ufffd\ufffd", "the expectation's own text is damaged"},
    {"mail-parser-text-022", "Some text here", "no space is added to a word glued to text"},
    {"mail-parser-text-028", "[SUSPECTED SPAM]This is the original subject", "as above"},
    {"jsmime-8bit-006", "è\ufffd", "rather UTF-8 that was cut than three letters"},
    {"jsmime-8bit-008", "èS!0", "no header is in UTF-16: the bytes tell"},
    {"jsmime-8bit-010", "èS!0", "nor in UTF-32"},
};

void ExpectDecoded(std::string_view raw, std::string_view charset, std::string_view expected,
                   std::string_view source) {
  for (const Different& different : kDifferent) {
    if (source == different.source) expected = different.expected;
  }
  EXPECT_EQ(Utf8(DecodeHeaderValue(raw, charset)), expected) << source << ": " << raw;
}

TEST(HeaderVectors, EncodedWords) {
  LUMR_NEEDS_CORPUS();
  for (const auto& row : ReadJsonLines("encoded-words.jsonl")) {
    ExpectDecoded(row[1], {}, row[3], row[5]);
  }
}

TEST(HeaderVectors, RawText) {
  LUMR_NEEDS_CORPUS();
  for (const auto& row : ReadJsonLines("raw-8bit-headers.jsonl")) {
    ExpectDecoded(FromHex(row[1]), row[5] == "null" ? "" : row[5], row[3], row[7]);
  }
}

TEST(HeaderVectors, FoldedFields) {
  LUMR_NEEDS_CORPUS();
  const std::string mail = ReadVector("headers-encoded.txt");
  const struct {
    const char* field;
    const char* expected;
  } fields[] = {
      {"Subject", "¡Hola, señor!"},
      {"To", "Müller Müzner <muzner@example.com>"},
      {"Other", "في إيه يا باشا"},
      {"From", "\"Jon Snow\" <jsnow@example.com>, Müller Müzner <muzner@example.com>"},
      {"Cc", "Andreas Müzner <andreas.muzner@example.com>"},
      {"Bcc", "Andreas Müzner <andreas.muzner@example.com>"},
      {"Test", "Технические работы (ERP Галактика и Отчеты ТД)"},
      {"Subject-X", "FAMILY eCarsharing GAUTING STA-CL51E - Buchung geändert Text"},
  };
  for (const auto& field : fields) {
    const std::size_t begin = mail.find(std::string("\r\n").append(field.field).append(": ")) + 2;
    std::size_t end = begin;
    do {
      end = mail.find("\r\n", end) + 2;
    } while (mail[end] == ' ' || mail[end] == '\t');
    const std::size_t colon = mail.find(':', begin) + 1;
    EXPECT_EQ(Utf8(DecodeHeaderValue(std::string_view(mail).substr(colon, end - colon))),
              field.expected)
        << field.field;
  }
}

}  // namespace
}  // namespace lumr
