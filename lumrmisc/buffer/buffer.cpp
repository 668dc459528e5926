#include "lumrmisc/buffer/buffer.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>
#include <string>
#include <utility>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/buffer/textscan.h"
#include "lumrmisc/platform/memory.h"
#include "lumrmisc/platform/unicode.h"

namespace lumr {
namespace {

constexpr std::uint64_t kMaxCapacity = 0x7FFFFFC0;  // 2^31 - 64
constexpr std::size_t kTerminator = 2;

std::string_view Given(const void* p, int n) {
  if (p == nullptr || n <= 0) return {};
  return {static_cast<const char*>(p), static_cast<std::size_t>(n)};
}

std::string_view UnitBytes(const char16_t& c) {
  return {reinterpret_cast<const char*>(&c), sizeof c};
}

}  // namespace

// ---- Made, assigned, appended to ----

CBuffer::CBuffer(const char* s) {
  Assign(CountedText(s));
}

CBuffer::CBuffer(const char* p, int n) {
  const std::string_view bytes = Given(p, n);
  if (!bytes.empty() && bytes[0] != '\0') Assign(bytes);
}

CBuffer::CBuffer(const CStringA& s) {
  Assign(s);
}
CBuffer::CBuffer(const CStringW& s) {
  Assign(BytesOf(s));
}
CBuffer::CBuffer(const CBuffer& other) {
  Assign(other.Bytes());
}
CBuffer::CBuffer(CBuffer&& other) noexcept {
  MoveFrom(other);
}
CBuffer::~CBuffer() {
  AllocFree();
}

CBuffer& CBuffer::operator=(const CBuffer& other) {
  CopyFrom(other);
  return *this;
}

CBuffer& CBuffer::operator=(const char* s) {
  return *this = CountedText(s);
}
CBuffer& CBuffer::operator=(char c) {
  return *this = std::string_view(&c, 1);
}
CBuffer& CBuffer::operator=(char16_t c) {
  return *this = UnitBytes(c);
}
CBuffer& CBuffer::operator=(const char16_t* s) {
  return *this = CountedUnits(s);
}
CBuffer& CBuffer::operator=(const CStringA& s) {
  return *this = std::string_view(s);
}
CBuffer& CBuffer::operator=(const CStringW& s) {
  return *this = BytesOf(s);
}
CBuffer& CBuffer::operator=(std::u16string_view s) {
  return *this = BytesOf(s);
}

CBuffer& CBuffer::operator=(std::string_view s) {
  Assign(s);
  return *this;
}

CBuffer& CBuffer::operator+=(const char* s) {
  return *this += CountedText(s);
}
CBuffer& CBuffer::operator+=(const char16_t* s) {
  return *this += CountedUnits(s);
}
CBuffer& CBuffer::operator+=(char16_t c) {
  return *this += UnitBytes(c);
}
CBuffer& CBuffer::operator+=(std::u16string_view s) {
  return *this += BytesOf(s);
}

CBuffer& CBuffer::operator+=(std::string_view s) {
  if (s.empty()) return *this;
  const bool inside = Inside(s.data());
  const std::size_t offset = inside ? static_cast<std::size_t>(s.data() - data_) : 0;
  Grow(s.size());
  std::memmove(data_ + size_, inside ? data_ + offset : s.data(), s.size());
  SetSize(size_ + static_cast<int>(s.size()));
  return *this;
}

void CBuffer::Add(const void* p, int n) {
  *this += Given(p, n);
}

void CBuffer::Set(const void* p, int n) {
  Assign(Given(p, n));
}

// ---- Storage and size ----

// std::less orders pointers into different objects too.
bool CBuffer::Inside(const char* p) const {
  return data_ != nullptr && !std::less<>()(p, data_) &&
         std::less<>()(p, data_ + allocSize_ + kTerminator);
}

std::size_t CBuffer::Rounded(std::uint64_t capacity) const {
  const auto increment = static_cast<std::uint64_t>(incrSize_);
  const std::uint64_t rounded = (capacity + increment - 1) / increment * increment;
  if (rounded > kMaxCapacity) throw std::bad_alloc();
  return static_cast<std::size_t>(rounded);
}

void CBuffer::Reserve(std::uint64_t capacity) {
  if (capacity <= static_cast<std::uint64_t>(allocSize_)) return;
  const std::size_t rounded = Rounded(capacity);
  const std::size_t block = rounded + kTerminator;
  if (data_ == nullptr) {
    data_ = static_cast<char*>(AllocateBlock(block));
    SetSize(0);
  } else {
    const std::size_t oldBlock = static_cast<std::size_t>(allocSize_) + kTerminator;
    const std::size_t used = static_cast<std::size_t>(size_) + kTerminator;
    data_ = static_cast<char*>(GrowBlock(data_, oldBlock, used, block));
  }
  allocSize_ = static_cast<int>(rounded);
}

void CBuffer::Grow(std::uint64_t more) {
  Reserve(static_cast<std::uint64_t>(size_) + more);
}

// The content that goes is not copied into a larger block; s may lie in it all the same.
void CBuffer::Assign(std::string_view s) {
  if (s.size() > static_cast<std::size_t>(allocSize_)) {
    const std::size_t rounded = Rounded(s.size());
    char* const block = static_cast<char*>(AllocateBlock(rounded + kTerminator));
    std::memcpy(block, s.data(), s.size());
    AllocFree();
    data_ = block;
    allocSize_ = static_cast<int>(rounded);
  } else if (!s.empty()) {
    std::memmove(data_, s.data(), s.size());
  }
  if (data_ != nullptr) SetSize(static_cast<int>(s.size()));
}

void CBuffer::AllocFree() {
  if (data_ != nullptr) ReleaseBlock(data_, static_cast<std::size_t>(allocSize_) + kTerminator);
  data_ = nullptr;
  size_ = 0;
  allocSize_ = 0;
}

void CBuffer::SetAllocSize(int n) {
  if (n > 0) Reserve(static_cast<std::uint64_t>(n));
}

void CBuffer::SetIncrSize(int n) {
  if (n > 0) incrSize_ = n;
}

void CBuffer::SetDataSize(int n) {
  if (n <= allocSize_) ReleaseBuffer(n);
}

void CBuffer::CopyFrom(const CBuffer& other) {
  if (this != &other) Assign(other.Bytes());
}

void CBuffer::MoveFrom(CBuffer& other) noexcept {
  if (this == &other) return;
  AllocFree();
  data_ = std::exchange(other.data_, nullptr);
  size_ = std::exchange(other.size_, 0);
  allocSize_ = std::exchange(other.allocSize_, 0);
  incrSize_ = other.incrSize_;
}

// ---- Editing ----

void CBuffer::Delete(int pos, int n) {
  if (pos < 0 || pos > size_) return;
  n = std::min(n, size_ - pos);
  if (n <= 0) return;
  std::memmove(data_ + pos, data_ + pos + n, static_cast<std::size_t>(size_ - pos - n));
  SetSize(size_ - n);
}

// Makes room for n bytes at pos and gives its address.
char* CBuffer::OpenGap(std::uint64_t n, int pos) {
  Grow(n);
  char* const gap = data_ + pos;
  std::memmove(gap + n, gap, static_cast<std::size_t>(size_ - pos));
  SetSize(size_ + static_cast<int>(n));
  return gap;
}

void CBuffer::Insert(char c, int n, int pos) {
  if (n <= 0 || pos < 0 || pos > size_) return;
  const auto count = static_cast<std::size_t>(n);
  std::memset(OpenGap(count, pos), static_cast<unsigned char>(c), count);
}

void CBuffer::Insert(char16_t c, int n, int pos) {
  if (n <= 0 || pos < 0 || pos > size_) return;
  char* unit = OpenGap(std::uint64_t{2} * static_cast<std::uint64_t>(n), pos);
  for (int i = 0; i < n; ++i, unit += sizeof c) StoreUnit(unit, c);
}

void CBuffer::Insert(const void* p, int n, int pos) {
  std::string_view source = Given(p, n);
  if (source.empty() || pos < 0 || pos > size_) return;
  // A source in this block may be torn apart by the gap, so it is set aside.
  std::string aside;
  if (Inside(source.data())) source = aside = source;
  std::memcpy(OpenGap(source.size(), pos), source.data(), source.size());
}

void CBuffer::Overwrite(const void* p, int n, int pos) {
  const std::string_view source = Given(p, n);
  if (source.empty() || pos < 0 || pos > size_ - n) return;
  std::memmove(data_ + pos, source.data(), source.size());
}

CBuffer& CBuffer::Left(int n, CBuffer& out) const {
  return Mid(0, n, out);
}

CBuffer& CBuffer::Mid(int start, CBuffer& out) const {
  return Mid(start, size_, out);
}

CBuffer& CBuffer::Mid(int start, int n, CBuffer& out) const {
  const auto from = static_cast<std::size_t>(std::clamp(start, 0, size_));
  out.Assign(Bytes().substr(from, static_cast<std::size_t>(std::max(n, 0))));
  return out;
}

int CBuffer::Truncate(int n) {
  if (n < 0 || n > size_) return 0;
  SetDataSize(n);
  return 1;
}

void CBuffer::Trim(int wide) {
  TrimLeft(wide);
  TrimRight(wide);
}

void CBuffer::TrimLeft(int wide) {
  int pos = 0;
  if (wide == 0) {
    if (SkipSpace(pos) != 0) Delete(0, pos);
  } else if (lumr::SkipSpace(Units().data(), size_ / 2, pos) != 0) {
    Delete(0, 2 * pos);
  }
}

void CBuffer::TrimRight(int wide) {
  if (wide == 0) {
    // No white space byte is a trail byte in any code page, so the end can be looked at alone.
    int end = size_;
    while (end > 0 && IsAsciiSpace(data_[end - 1])) --end;
    Truncate(end);
    return;
  }
  const std::u16string_view units = Units();
  std::size_t end = units.size();
  while (end > 0 && IsUnitSpace(units[end - 1])) --end;
  if (end < units.size()) Truncate(static_cast<int>(2 * end));
}

void CBuffer::ExceptCrlf(int wide) {
  const auto isBreak = [](char16_t c) { return c == u'\r' || c == u'\n'; };
  if (wide != 0) {
    char16_t* const units = reinterpret_cast<char16_t*>(data_);
    SetDataSize(2 * static_cast<int>(std::remove_if(units, units + size_ / 2, isBreak) - units));
  } else {
    SetDataSize(static_cast<int>(std::remove_if(data_, data_ + size_, isBreak) - data_));
  }
}

void CBuffer::ExceptNull() {
  SetDataSize(static_cast<int>(std::remove(data_, data_ + size_, '\0') - data_));
}

}  // namespace lumr
