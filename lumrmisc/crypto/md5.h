// MD5 (RFC 1321) and HMAC-MD5 (RFC 2104).
//
// MD5 no longer withstands an attacker who can choose the text: two texts of one digest are made
// in seconds. It serves here to turn a pass phrase into a key and to answer the challenges of mail
// protocols (HMAC-MD5, which that attack does not reach), not to prove where a text comes from.
//
// Everything that a digest was computed from is wiped from the library's own memory.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace lumr {

// A digest under way: Update any number of times with pieces of any size, then Final.
class Md5 {
 public:
  Md5() { Init(); }
  ~Md5();
  Md5(const Md5&) = default;
  Md5& operator=(const Md5&) = default;

  // Begins a new digest, whatever was fed before.
  void Init();
  // Null data or no bytes: nothing.
  void Update(const void* data, std::size_t length);
  // Writes the digest of all pieces; the object then begins a new one.
  void Final(unsigned char digest[16]);

 private:
  std::array<std::uint32_t, 4> state_;
  std::uint64_t length_;  // bytes so far
  std::array<unsigned char, 64> block_;
};

// MD5 of a terminated text, its terminator not included; null is an empty text.
void MD5String(const char* text, unsigned char digest[16]);
// MD5 of length bytes; null data is no bytes.
void MD5Void(const void* data, unsigned int length, unsigned char digest[16]);

// HMAC-MD5 of text under key, lengths in bytes. A negative length counts as 0, a null pointer as
// no bytes. c5 is the name that callers of the first days know.
void hmac_md5(const unsigned char* text, int textLength, const unsigned char* key, int keyLength,
              unsigned char digest[16]);
void c5(const unsigned char* text, int textLength, const unsigned char* key, int keyLength,
        unsigned char digest[16]);

}  // namespace lumr
