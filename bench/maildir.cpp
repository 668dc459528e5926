#include "maildir.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "lumrmisc/mailtext/transfer.h"
#include "ours.h"

namespace lumr::bench {
namespace {

constexpr const char* kBoundary = "----=_Part_7c1e";

std::string Base64(std::string_view data, int lineLength) {
  CBuffer out;
  EncodeBase64(data, lineLength, out);
  return std::string(View(out));
}

std::string QuotedPrintable(std::string_view text) {
  CBuffer out;
  EncodeQuotedPrintable(text, 1, out);
  return std::string(View(out));
}

// Most mail is a page, some is long.
std::string Body(Random& random) {
  const std::size_t lines = random.OneIn(20) ? 100 + random.Below(300) : 5 + random.Below(60);
  std::string body;
  for (std::size_t i = 0; i < lines; ++i) body += MakeLine(Corpus::kJapanese, random) + "\r\n";
  return body;
}

// The first characters of a line of text, as an encoded word.
std::string Subject(Random& random, const std::string& charset) {
  std::string text;
  while (text.size() < 45) text = MakeLine(Corpus::kJapanese, random);
  std::size_t end = 45;
  while ((static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return "=?" + charset + "?B?" + Base64(EncodeText(text.substr(0, end), charset), 0) + "?=";
}

std::string Header(Random& random, const std::string& charset) {
  const std::string number = std::to_string(random.Below(100000));
  return "Received: from mail.example.jp (mail.example.jp [192.0.2.1])\r\n"
         "\tby mx.example.co.jp (Postfix) with ESMTP id " +
         number +
         "\r\n"
         "\tfor <list@example.co.jp>; Mon, 4 Mar 2024 10:20:30 +0900 (JST)\r\n"
         "Message-ID: <" +
         number +
         ".4@example.jp>\r\n"
         "Date: Mon, 4 Mar 2024 10:20:30 +0900\r\n"
         "From: " +
         Subject(random, charset) + " <sender" + number +
         "@example.jp>\r\n"
         "To: list@example.co.jp\r\n"
         "Subject: " +
         Subject(random, charset) +
         "\r\n"
         "MIME-Version: 1.0\r\n";
}

std::string Part(const std::string& type, const std::string& encoding, const std::string& body) {
  return "Content-Type: " + type + "\r\nContent-Transfer-Encoding: " + encoding + "\r\n\r\n" + body;
}

std::string JisPart(const std::string& text) {
  return Part("text/plain; charset=ISO-2022-JP", "7bit", EncodeText(text, "ISO-2022-JP"));
}

std::string Base64Part(const std::string& text, const std::string& subtype = "plain") {
  return Part("text/" + subtype + "; charset=UTF-8", "base64", Base64(text, 76));
}

std::string QuotedPart(const std::string& text, const std::string& subtype = "plain") {
  return Part("text/" + subtype + "; charset=UTF-8", "quoted-printable", QuotedPrintable(text));
}

std::string Html(const std::string& text) {
  return "<html><body><pre>" + text + "</pre></body></html>\r\n";
}

std::string Attachment(Random& random) {
  std::string data(1000 + random.Below(60000), '\0');
  for (char& byte : data) byte = static_cast<char>(random.Next() >> 56);
  return Part(
      "application/octet-stream; name=\"data.bin\"\r\n"
      "Content-Disposition: attachment; filename=\"data.bin\"",
      "base64", Base64(data, 76));
}

std::string Multipart(const std::string& subtype, const std::string& first,
                      const std::string& second) {
  const std::string boundary = std::string("\r\n--") + kBoundary;
  return "Content-Type: multipart/" + subtype + "; boundary=\"" + kBoundary + "\"\r\n\r\n" +
         boundary + "\r\n" + first + boundary + "\r\n" + second + boundary + "--\r\n";
}

}  // namespace

std::string MakeMessage(Random& random) {
  const std::string text = Body(random);
  switch (random.Below(10)) {
    case 0:
    case 1:
    case 2:
      return Header(random, "ISO-2022-JP") + JisPart(text);
    case 3:
    case 4:
    case 5:
      return Header(random, "UTF-8") + Base64Part(text);
    case 6:
    case 7:
      return Header(random, "UTF-8") + QuotedPart(text);
    case 8:
      return Header(random, "UTF-8") +
             Multipart("alternative", QuotedPart(text), Base64Part(Html(text), "html"));
    default:
      return Header(random, "ISO-2022-JP") + Multipart("mixed", JisPart(text), Attachment(random));
  }
}

void MakeMaildir(const std::filesystem::path& directory, std::size_t count) {
  for (const char* folder : {"cur", "new", "tmp"}) {
    std::filesystem::create_directories(directory / folder);
  }
  Random random(4);
  for (std::size_t i = 0; i < count; ++i) {
    char name[48];
    std::snprintf(name, sizeof name, "%010zu.M%zuP1.bench:2,S", 1700000000 + i, i);
    std::ofstream file(directory / "cur" / name, std::ios::binary);
    file << MakeMessage(random);
    if (!file.flush()) throw std::runtime_error("cannot write " + directory.string());
  }
}

}  // namespace lumr::bench
