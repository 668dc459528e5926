#include "lumrmisc/buffer/fixbuffer.h"

#include <cstring>
#include <utility>

#include "lumrmisc/platform/memory.h"

namespace lumr {
namespace {

std::size_t BlockSize(int size) {
  return static_cast<std::size_t>(size) + 2;
}

char* CopyOfBlock(const char* data, int size) {
  void* const block = AllocateBlock(BlockSize(size));
  std::memcpy(block, data, BlockSize(size));
  return static_cast<char*>(block);
}

bool IsPageBlock(int size) {
  return BlockSize(size) >= kPageBlockMinimum;
}

}  // namespace

CFixBuffer::CFixBuffer(CFixBuffer&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}

CFixBuffer& CFixBuffer::operator=(const CFixBuffer& other) {
  if (this == &other) return *this;
  char* const copy = other.size_ > 0 ? CopyOfBlock(other.data_, other.size_) : nullptr;
  AllocFree();
  data_ = copy;
  size_ = other.size_;
  return *this;
}

void CFixBuffer::MoveFrom(CBuffer& source) {
  if (IsPageBlock(source.allocSize_) && !IsPageBlock(source.size_)) {
    char* const copy = source.size_ > 0 ? CopyOfBlock(source.data_, source.size_) : nullptr;
    AllocFree();
    data_ = copy;
    size_ = source.size_;
    source.AllocFree();
    return;
  }
  AllocFree();
  data_ = std::exchange(source.data_, nullptr);
  size_ = std::exchange(source.size_, 0);
  source.allocSize_ = 0;
}

void CFixBuffer::AllocFree() {
  if (data_ != nullptr) ReleaseBlock(data_, BlockSize(size_));
  data_ = nullptr;
  size_ = 0;
}

}  // namespace lumr
