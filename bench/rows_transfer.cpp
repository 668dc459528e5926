// Transfer encodings.
#include <algorithm>

#include "lumrmisc/mailtext/transfer.h"
#include "ours.h"
#include "peers.h"

namespace lumr::bench {
namespace {

constexpr int kBase64Line = 76;

const char16_t* Units(std::string_view bytes) {
  return reinterpret_cast<const char16_t*>(bytes.data());
}

std::string_view UnitBytes(const CStringW& text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}

void ToBase64(std::string_view data, CBuffer& out) {
  EncodeBase64(data, kBase64Line, out);
}

void ToQuotedPrintable(std::string_view data, CBuffer& out) {
  EncodeQuotedPrintable(data, 1, out);
}

void ToUuencode(std::string_view data, CBuffer& out) {
  EncodeUuencode("644", "data.bin", data, out);
}

void ToImapUtf7(std::string_view text, CBuffer& out) {
  EncodeImap4UTF7(Units(text), Length(text) / 2, out);
}

// A text encoded by our own encoder, whose results the encoder's row compares.
template <auto Encoder>
std::string Encoded(std::string text) {
  CBuffer out;
  Encoder(text, out);
  return std::string(View(out));
}

Contender FromImapUtf7() {
  return {"LumrMisc", [](std::string_view) -> Operation {
            return [out = CStringW()](std::string_view text) mutable {
              DecodeImap4UTF7(text, out);
              return UnitBytes(out);
            };
          }};
}

// Each encoder has its own line length and line end.
std::string WithoutLineEnds(std::string_view text) {
  std::string out(text);
  std::erase_if(out, [](char c) { return c == '\r' || c == '\n'; });
  return out;
}

// The data lines only: GMime leaves the first and last line to its caller.
std::string UuencodedLines(std::string_view text) {
  std::string out(text);
  std::erase(out, '\r');
  if (out.starts_with("begin ")) out.erase(0, out.find('\n') + 1);
  return out.substr(0, out.find("`\n"));
}

int HexValue(char digit) {
  return digit <= '9' ? digit - '0' : (digit & 0x5F) - 'A' + 10;
}

// What quoted-printable text means: encoders differ in where they break lines and in whether
// they end them in LF or CR LF. Takes well-formed text only.
std::string QuotedMeaning(std::string_view text) {
  std::string out;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '\r') continue;
    if (text[at] != '=') {
      out += text[at];
    } else if (text[at + 1] == '\r' || text[at + 1] == '\n') {
      at = text.find('\n', at);
    } else {
      out += static_cast<char>(HexValue(text[at + 1]) * 16 + HexValue(text[at + 2]));
      at += 2;
    }
  }
  // GMime ends the text with a soft break or a line end of its own.
  while (out.ends_with('\n')) out.pop_back();
  return out;
}

std::vector<Input> AllBytes(double mark) {
  return {{Corpus::kJapanese, "CP932", mark},
          {Corpus::kAscii, "CP932", mark},
          {Corpus::kRandom, "", mark}};
}

std::vector<Row> Base64Rows() {
  return {
      Binary({"Base64 encode in lines",
              AllBytes(3),
              Ours(&ToBase64),
              {GmimeBase64Encode(), OpensslBase64Encode(), GlibBase64Encode()},
              nullptr,
              &WithoutLineEnds}),
      Binary({"Base64 decode, CR LF",
              AllBytes(3),
              Ours([](std::string_view text, CBuffer& out) { DecodeBase64(text, out); }),
              {GmimeBase64Decode(), OpensslBase64Decode(), GlibBase64Decode()},
              &Encoded<&ToBase64>}),
  };
}

std::vector<Row> TextRows() {
  return {
      {"Quoted-printable encode",
       {{Corpus::kJapanese, "UTF-8", 4}, {Corpus::kAscii, "UTF-8", 4}, {Corpus::kRandom, "", 0}},
       Ours(&ToQuotedPrintable),
       {GmimeQuotedEncode()},
       nullptr,
       &QuotedMeaning},
      {"Quoted-printable decode",
       {{Corpus::kJapanese, "UTF-8", 4}, {Corpus::kAscii, "UTF-8", 1.2}, {Corpus::kRandom, "", 0}},
       Ours([](std::string_view text, CBuffer& out) { DecodeQuotedPrintable(text, out); }),
       {GmimeQuotedDecode()},
       &Encoded<&ToQuotedPrintable>},
      Binary({"uuencode",
              AllBytes(2),
              Ours(&ToUuencode),
              {GmimeUuencode()},
              nullptr,
              &UuencodedLines}),
      Binary({"uudecode",
              AllBytes(2),
              Ours([](std::string_view text, CBuffer& out) {
                DecodeUuencode(text, nullptr, nullptr, &out);
              }),
              {GmimeUudecode()},
              &Encoded<&ToUuencode>}),
  };
}

std::vector<Row> ImapRows() {
  const std::vector<Input> inputs = {{Corpus::kJapanese, "UTF-16LE", 2},
                                     {Corpus::kAscii, "UTF-16LE", 2},
                                     {Corpus::kRandom, "", 0}};
  return {
      {"IMAP UTF-7 encode",
       inputs,
       Ours(&ToImapUtf7),
       {Iconv("UTF-16LE", "UTF-7-IMAP"), IcuEncode("IMAP-mailbox-name")}},
      {"IMAP UTF-7 decode",
       inputs,
       FromImapUtf7(),
       {Iconv("UTF-7-IMAP", "UTF-16LE"), IcuDecode("IMAP-mailbox-name")},
       &Encoded<&ToImapUtf7>},
  };
}

}  // namespace

std::vector<Row> TransferRows() {
  std::vector<Row> rows = Base64Rows();
  for (const auto& more : {TextRows(), ImapRows()}) {
    rows.insert(rows.end(), more.begin(), more.end());
  }
  return rows;
}

}  // namespace lumr::bench
