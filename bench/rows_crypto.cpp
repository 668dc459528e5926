// Digests and Blowfish.
#include <algorithm>

#include "lumrmisc/crypto/blowfish.h"
#include "lumrmisc/crypto/md5.h"
#include "ours.h"
#include "peers.h"

namespace lumr::bench {
namespace {

const unsigned char* BytesOf(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

unsigned char* RoomIn(CBuffer& out, std::size_t size) {
  char* const room = out.GetBuffer(static_cast<int>(size));
  out.ReleaseBuffer(static_cast<int>(size));
  return reinterpret_cast<unsigned char*>(room);
}

void DigestMd5(std::string_view text, CBuffer& out) {
  MD5Void(text.data(), static_cast<unsigned>(text.size()), RoomIn(out, 16));
}

void DigestHmac(std::string_view text, CBuffer& out) {
  hmac_md5(BytesOf(text), Length(text), BytesOf(text), kHmacKeySize, RoomIn(out, 16));
}

// Our words are little-endian, the peers' big-endian. Words that read the same both ways are one
// input for all, and the results are equal when the bytes of each word are put in one order.
std::string PalindromeWords(std::string text) {
  text.resize(text.size() / 8 * 8);
  for (std::size_t at = 0; at + 4 <= text.size(); at += 4) {
    text[at + 3] = text[at];
    text[at + 2] = text[at + 1];
  }
  return text;
}

std::string WordsInOneOrder(std::string_view output) {
  std::string out(output);
  for (std::size_t at = 0; at + 4 <= out.size(); at += 4) {
    const std::string word = out.substr(at, 4);
    const std::string turned(word.rbegin(), word.rend());
    out.replace(at, 4, std::min(word, turned));
  }
  return out;
}

template <typename Cipher>
Contender OurBlowfish(Cipher cipher) {
  return {"LumrMisc", [cipher](std::string_view) -> Operation {
            const auto blowfish = std::make_shared<CBlowFish>();
            blowfish->Initialize(BytesOf(kBlowfishKey), Length(kBlowfishKey));
            return [blowfish, cipher, out = CBuffer()](std::string_view input) mutable {
              cipher(*blowfish, BytesOf(input), RoomIn(out, input.size()),
                     static_cast<std::uint32_t>(input.size()));
              return View(out);
            };
          }};
}

void Encipher(const CBlowFish& blowfish, const unsigned char* in, unsigned char* out,
              std::uint32_t size) {
  blowfish.Encode(in, out, size);
}

void Decipher(const CBlowFish& blowfish, const unsigned char* in, unsigned char* out,
              std::uint32_t size) {
  blowfish.Decode(in, out, size);
}

Contender OurKeySchedule() {
  return {"LumrMisc", [](std::string_view) -> Operation {
            return [blowfish = std::make_shared<CBlowFish>(),
                    out = CBuffer()](std::string_view key) mutable {
              constexpr unsigned char kZero[8] = {};
              blowfish->Initialize(BytesOf(key), Length(key));
              blowfish->Encode(kZero, RoomIn(out, 8), 8);
              return View(out);
            };
          }};
}

Row InRecords(std::size_t bytes, Row row) {
  row.recordBytes = bytes;
  return row;
}

std::vector<Input> AnyBytes(double mark) {
  return {{Corpus::kRandom, "", mark}};
}

std::vector<Input> ShortTexts(double mark) {
  return {{Corpus::kAscii, "UTF-8", mark}};
}

}  // namespace

std::vector<Row> CryptoRows() {
  constexpr std::size_t kLarge = std::size_t{1} << 20;
  const std::vector<Contender> md5 = {OpensslMd5(), NettleMd5(), GcryptMd5()};
  return {
      MarkedFrom(kLarge, Binary({"MD5", AnyBytes(1), Ours(&DigestMd5), md5})),
      InRecords(64, Binary({"MD5 of short texts", ShortTexts(1), Ours(&DigestMd5), md5})),
      InRecords(64, Binary({"HMAC-MD5 of short texts",
                            ShortTexts(1.5),
                            Ours(&DigestHmac),
                            {OpensslHmacMd5(), NettleHmacMd5(), GcryptHmacMd5()}})),
      MarkedFrom(kLarge, Binary({"Blowfish encipher",
                                 AnyBytes(1.5),
                                 OurBlowfish(&Encipher),
                                 {OpensslBlowfishEncipher(), NettleBlowfishEncipher(),
                                  GcryptBlowfishEncipher()},
                                 &PalindromeWords,
                                 &WordsInOneOrder})),
      MarkedFrom(kLarge, Binary({"Blowfish decipher",
                                 AnyBytes(1.5),
                                 OurBlowfish(&Decipher),
                                 {OpensslBlowfishDecipher(), NettleBlowfishDecipher(),
                                  GcryptBlowfishDecipher()},
                                 &PalindromeWords,
                                 &WordsInOneOrder})),
      InRecords(16, Binary({"Blowfish key schedule",
                            ShortTexts(1),
                            OurKeySchedule(),
                            {OpensslBlowfishKey(), NettleBlowfishKey(), GcryptBlowfishKey()},
                            nullptr,
                            &WordsInOneOrder})),
  };
}

}  // namespace lumr::bench
