// Buffers that hold a content in exactly its size: for content that is kept and no longer
// changed, many at a time. No virtual functions; two zero bytes follow the content.
#pragma once

#include <cstddef>
#include <string_view>

#include "lumrmisc/buffer/buffer.h"

namespace lumr {

class CFixBuffer {
 public:
  CFixBuffer() noexcept = default;
  CFixBuffer(const CFixBuffer& other) { *this = other; }
  CFixBuffer(CFixBuffer&& other) noexcept;
  ~CFixBuffer() { AllocFree(); }

  // A copy of its own, in a block of exactly its size. Throws std::bad_alloc; the content is
  // then as it was.
  CFixBuffer& operator=(const CFixBuffer& other);

  // Takes over content and block of a buffer, which is left empty, without storage. A small
  // content in a page block is copied into a heap block of its own (platform/memory.h has the
  // rule), because the fixed buffer tells the kind of its block by the size of its content.
  void MoveFrom(CBuffer& source);

  void AllocFree();

  int GetLength() const { return size_; }
  int IsEmpty() const { return size_ == 0; }
  std::string_view Bytes() const { return {Data(), static_cast<std::size_t>(size_)}; }
  operator const char*() const { return Data(); }  // never null
  explicit operator bool() const = delete;

 private:
  static constexpr char kNoContent[2] = {};

  const char* Data() const { return data_ != nullptr ? data_ : kNoContent; }

  char* data_ = nullptr;
  int size_ = 0;
};

// A fixed buffer with one number beside its content, which belongs to whoever uses it: 1 after
// construction and after AllocFree, copied with the buffer.
class CTextFixBuffer : public CFixBuffer {
 public:
  int GetAttribute() const { return attribute_; }
  void SetAttribute(int attribute) { attribute_ = attribute; }
  void AllocFree() {
    CFixBuffer::AllocFree();
    attribute_ = 1;
  }

 private:
  int attribute_ = 1;
};

}  // namespace lumr
