// Blowfish, block by block, and the enciphered form of data under a pass phrase.
//
// What this protects against: somebody who comes by the file and has not the pass phrase cannot
// read it. What not: equal blocks of 8 bytes give equal enciphered blocks (electronic codebook
// mode), so repetitions show; there is no integrity check, so damage and exchanged blocks go
// unnoticed; the key is the plain MD5 of the pass phrase, so short phrases can be guessed fast.
// Files of many years are in this form, which is why it stays.
//
// Keys and tables are wiped when an object ends; plain data in the caller's buffers is the
// caller's.
#pragma once

#include <cstdint>
#include <memory>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

// The cipher. A block is two 32-bit words, bytes 0-3 and 4-7, each in little-endian order; the
// published test vectors are big-endian, stored files are not.
class CBlowFish {
 public:
  CBlowFish();
  ~CBlowFish();
  CBlowFish(const CBlowFish&) = delete;
  CBlowFish& operator=(const CBlowFish&) = delete;

  // Sets the key of keyLength bytes, taken cyclically where it is shorter than 72 bytes; what is
  // beyond 72 has no effect. A null or empty key does nothing; before the first key the
  // tables are the cipher's initial ones.
  void Initialize(const unsigned char* key, int keyLength);

  // length in bytes rounded up to a multiple of 8; 0 stays 0. Past 2^32 - 8 there is no such
  // number: 0.
  static std::uint32_t GetOutputLength(std::uint32_t length);

  // Enciphers length bytes of in, the last block padded with zero bytes, into out, which holds
  // GetOutputLength(length) bytes and may be in itself. Gives that number. Null: 0, nothing.
  std::uint32_t Encode(const unsigned char* in, unsigned char* out, std::uint32_t length) const;
  // Deciphers (length - 1) / 8 + 1 blocks of in to out, which may be in itself; length is a
  // multiple of 8, and the rest of a last block that is not is read too. 0 or null: nothing.
  void Decode(const unsigned char* in, unsigned char* out, std::uint32_t length) const;

 private:
  struct Tables;

  void Blowfish_encipher(std::uint32_t& left, std::uint32_t& right) const;
  void Blowfish_decipher(std::uint32_t& left, std::uint32_t& right) const;

  std::unique_ptr<Tables> tables_;
};

// Enciphers data under a pass phrase: its length (4 bytes, little-endian), the data, zero bytes up
// to a multiple of 8, all enciphered. out is emptied first and must not hold data.
// 1 when done. A null or empty pass phrase copies the data and gives 0: nothing was enciphered.
// Null data or a length below 1 gives 1 and an empty out.
int EncodeBlowFish(const char* passPhrase, const unsigned char* data, int length, CBuffer& out);

// The inverse. 1 when done; otherwise 0 and message says why: 3133 when the length is not a
// multiple of 8, 3134 when the pass phrase is empty (out stays as it was) or wrong as far as the
// stored length tells. A wrong pass phrase whose garbage passes that test gives garbage. Null data
// or a length below 1 gives 1 and an empty out. out must not hold data.
int DecodeBlowFish(const char* passPhrase, const unsigned char* data, int length, CBuffer& out,
                   CStringA& message);

}  // namespace lumr
