#include "lumrmisc/buffer/frame.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "lumrmisc/platform/mbcs.h"

namespace lumr {
namespace {

constexpr unsigned kMaxAllocation = 0x7FFFFFC0;  // 2^31 - 64

void* NotNull(void* block) {
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

std::size_t Allocation(unsigned size) {
  if (size > kMaxAllocation) throw std::bad_alloc();
  return std::max(size, 1u);
}

// Whether the odd number n, at least 3, is a prime.
bool IsOddPrime(std::uint64_t n) {
  for (std::uint64_t divisor = 3; divisor * divisor <= n; divisor += 2) {
    if (n % divisor == 0) return false;
  }
  return true;
}

int CopyMessage(std::string_view message, char* buf, unsigned max) {
  if (buf == nullptr || max == 0) return 0;
  std::size_t size = std::min<std::size_t>(message.size(), max - 1);
  if (size < message.size() && CurrentMbcsPage().IsTrailInContext(message, size)) --size;
  std::memcpy(buf, message.data(), size);
  buf[size] = '\0';
  return 1;
}

}  // namespace

void* lu_malloc(unsigned size) {
  return NotNull(std::malloc(Allocation(size)));
}

void* lu_realloc(void* p, unsigned size) {
  return NotNull(std::realloc(p, Allocation(size)));
}

void lu_free(void* p) {
  std::free(p);
}

int lu_strnlen(const char* s, int max) {
  if (max < 1) return max;
  if (s == nullptr) return 0;
  const void* const end = std::memchr(s, 0, static_cast<std::size_t>(max));
  return end == nullptr ? max : static_cast<int>(static_cast<const char*>(end) - s);
}

int lu_wcsnlen(const char16_t* s, int maxBytes) {
  const int max = maxBytes & ~1;
  if (max < 1) return max;
  if (s == nullptr) return 0;
  const char* const begin = reinterpret_cast<const char*>(s);
  int length = 0;
  while (length < max && LoadUnit(begin + length) != 0) length += 2;
  return length;
}

int IsEmpty(const char* s) {
  return s == nullptr || *s == '\0';
}

int IsEmpty(const char16_t* s) {
  return s == nullptr || LoadUnit(s) == 0;
}

unsigned GetPrimeUpper(unsigned n) {
  constexpr unsigned kLargest = 4294967291u;
  if (n < 4) return n;
  if (n > kLargest) return kLargest;
  unsigned candidate = n | 1u;
  while (!IsOddPrime(candidate)) candidate += 2;
  return candidate;
}

void debug_out(const void*, int) {}

int CException::GetErrorMessage(char* buf, unsigned max, unsigned*) const {
  CopyMessage("", buf, max);
  return 0;
}

CStrException::CStrException(const char* message) : message_(message == nullptr ? "" : message) {}

CStrException::CStrException(CStringA message) : message_(std::move(message)) {}

int CStrException::GetErrorMessage(char* buf, unsigned max, unsigned*) const {
  return CopyMessage(message_, buf, max);
}

CFileException::CFileException(FileError error, CStringW path)
    : error_(error), path_(std::move(path)), message_(SystemErrorText(error)) {}

int CFileException::GetErrorMessage(char* buf, unsigned max, unsigned*) const {
  return CopyMessage(message_, buf, max);
}

}  // namespace lumr
