// CBuffer: the library's one growable container of bytes, for narrow text, UTF-16 text and
// binary data alike. Everything that converts, encodes or parses writes its result into one.
//
// - Positions and lengths are bytes, also in the wide forms: n UTF-16 units take 2n bytes.
//   UTF-16 is little-endian and may begin at any byte.
// - Two zero bytes follow the content after every operation, so that it reads as a terminated
//   narrow or wide string in place.
// - Narrow text is in the current code page (platform/mbcs.h). Operations on characters read a
//   lead byte followed by a trail byte as one character.
// - Capacity grows to exactly what is asked for, rounded up to a multiple of the increment, and
//   never shrinks before AllocFree. Whoever knows the size asks for it first: SetAllocSize or
//   GetBuffer(n). Appending byte by byte stays linear all the same.
// - Bad arguments (null, negative or outside the content, counts below 1) make an operation do
//   nothing, or answer 0 or -1; a null string is an empty one. Nothing is thrown but
//   std::bad_alloc, also for a size above 2^31 - 64; the content is then as it was.
// - The source of an operation may lie inside its target: b += b, b.Insert(b.GetBuffer(), 3, 1).
// - A buffer belongs to one thread at a time.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "lumrmisc/platform/types.h"

namespace lumr {

enum class TextForm;

class CBuffer {
 public:
  // ---- Made, assigned, appended to ----

  // Strings are taken whole, wide ones as their bytes; a pointer alone ends at its NUL.
  CBuffer() noexcept = default;
  CBuffer(const char* s);
  // Takes n bytes, but nothing when the first of them is NUL: that form is for text. Binary data
  // go through Set.
  CBuffer(const char* p, int n);
  CBuffer(const CStringA& s);
  CBuffer(const CStringW& s);
  // The content; the increment of the new buffer is 16 whatever the other's.
  CBuffer(const CBuffer& other);
  // MoveFrom, increment included.
  CBuffer(CBuffer&& other) noexcept;
  virtual ~CBuffer();

  // All keep the storage and replace the content.
  CBuffer& operator=(const CBuffer& other);
  CBuffer& operator=(const char* s);
  CBuffer& operator=(const char16_t* s);
  CBuffer& operator=(char c);
  CBuffer& operator=(char16_t c);
  CBuffer& operator=(const CStringA& s);
  CBuffer& operator=(const CStringW& s);
  CBuffer& operator=(std::string_view s);
  CBuffer& operator=(std::u16string_view s);

  // All append. A byte within the capacity is two stores, so that writers may go byte by byte.
  CBuffer& operator+=(const CBuffer& other) { return *this += other.Bytes(); }
  CBuffer& operator+=(const char* s);
  CBuffer& operator+=(const char16_t* s);
  CBuffer& operator+=(char c) {
    if (size_ >= allocSize_) Grow(1);
    data_[size_] = c;
    SetSize(size_ + 1);
    return *this;
  }
  CBuffer& operator+=(char16_t c);
  CBuffer& operator+=(const CStringA& s) { return *this += std::string_view(s); }
  CBuffer& operator+=(const CStringW& s) { return *this += std::u16string_view(s); }
  CBuffer& operator+=(std::string_view s);
  CBuffer& operator+=(std::u16string_view s);
  CBuffer& Append(const CBuffer& other) { return *this += other; }

  // Add appends n bytes, and nothing for a null p or n below 1. Set empties first, also then.
  void Add(const void* p, int n);
  void Set(const void* p, int n);

  // ---- Storage and size ----

  void Empty() {  // keeps the storage
    if (data_ != nullptr) SetSize(0);
  }
  void AllocFree();  // gives it back; the increment stays
  // Capacity for n bytes at least. What was written is kept, what is behind it is anything.
  void SetAllocSize(int n);
  // The step in which capacity grows, 16 at first; below 1 it stays as it is.
  void SetIncrSize(int n);
  // The content becomes its first n bytes, or reaches over what the caller wrote behind it.
  // More than the capacity is ignored; a negative n is 0.
  void SetDataSize(int n);
  // The content, null before the first allocation. With n: after SetAllocSize(n), for a caller
  // that writes up to n bytes and then calls ReleaseBuffer.
  char* GetBuffer() { return data_; }
  const char* GetBuffer() const { return data_; }
  char* GetBuffer(int n) {
    if (n > allocSize_) SetAllocSize(n);
    return data_;
  }
  // Sets the size to n, held within 0 and the capacity.
  void ReleaseBuffer(int n) {
    if (data_ != nullptr) SetSize(std::clamp(n, 0, allocSize_));
  }

  // The sizes of content and capacity in bytes; whether there is no content.
  int GetLength() const { return size_; }
  int GetAllocSize() const { return allocSize_; }
  int IsEmpty() const { return size_ == 0; }

  // The content as a view; valid until the buffer changes. Units leaves out an odd last byte.
  std::string_view Bytes() const { return {Data(), static_cast<std::size_t>(size_)}; }
  std::u16string_view Units() const {
    return {reinterpret_cast<const char16_t*>(Data()), static_cast<std::size_t>(size_) / 2};
  }
  operator const char*() const { return Data(); }  // never null
  explicit operator bool() const = delete;         // would ask for the pointer, not the content

  // The byte at i, unchecked; of a buffer without storage nothing may be written.
  template <std::integral Index>
  char& operator[](Index i) {
    return const_cast<char*>(Data())[i];
  }
  template <std::integral Index>
  const char& operator[](Index i) const {
    return Data()[i];
  }
  char GetAt(int i) const { return Data()[i]; }
  void SetAt(int i, char c) { data_[i] = c; }

  void CopyFrom(const CBuffer& other);  // the content; storage and increment stay
  // Takes over storage, content and increment; the other is left empty, without storage.
  void MoveFrom(CBuffer& other) noexcept;
  void Check() const {}  // a hook for looking into buffers while debugging

  // ---- Editing ----

  // Removes n bytes at pos, fewer at the end of the content.
  void Delete(int pos, int n);
  // Inserts n copies of c, or n bytes of p, at 0 <= pos <= size; the wide form inserts 2n bytes.
  void Insert(char c, int n, int pos);
  void Insert(char16_t c, int n, int pos);
  void Insert(const void* p, int n, int pos);
  // Replaces n bytes at pos; does nothing when they do not lie inside the content.
  void Overwrite(const void* p, int n, int pos);

  // Copy a part into out and return out. Left: the first n bytes, or all. Mid: the rest from
  // start, or n bytes of it; a negative start is 0, one past the end gives an empty out.
  CBuffer& Left(int n, CBuffer& out) const;
  CBuffer& Mid(int start, CBuffer& out) const;
  CBuffer& Mid(int start, int n, CBuffer& out) const;

  // Cuts the content to n bytes and returns 1; 0 when n is negative or more than there is.
  int Truncate(int n);

  // Remove white space at both ends, at the start, at the end; wide non-zero reads UTF-16. At
  // the start of narrow text two-byte characters go like white space, since SkipSpace steps over
  // them (textscan.h), and a content without any other character stays whole.
  void Trim(int wide = 0);
  void TrimLeft(int wide = 0);
  void TrimRight(int wide = 0);

  void ExceptCrlf(int wide = 0);  // removes every CR and LF; wide: and an odd last byte
  void ExceptNull();              // removes every zero byte

  // ---- Comparison ----

  friend bool operator==(const CBuffer& a, const CBuffer& b) { return a.Bytes() == b.Bytes(); }
  friend bool operator==(const CBuffer& a, const char* b);
  friend bool operator==(const CBuffer& a, const CStringA& b) { return a.Bytes() == b; }
  friend bool operator==(const CBuffer& a, std::string_view b) { return a.Bytes() == b; }

  // Whether the content from pos to its end is the string s. With wide, s points to UTF-16 text.
  // 0 also for a buffer without storage, even when s is empty.
  int Equal(const char* s, int wide = 0, int pos = 0, int nocase = 0) const;
  // Whether the n bytes at pos are the first of s (n negative: all of s). With wide n/2 units
  // count. s holds n bytes; one that ends before them is read past its NUL only where the content
  // has a NUL too, and differs otherwise.
  int EqualN(const char* s, int n, int wide = 0, int pos = 0, int nocase = 0) const;
  int EndWith(const char* s, int wide = 0, int nocase = 0) const;

  // 1 when the byte at pos is the second of a two-byte character, read from the start.
  int IsMbsTrail(int pos) const;

  // Reads the decimal digits that are the len bytes at start, a sign before them when sign is
  // non-zero (and required then), into value; no digits are 0. Returns 0 and leaves value alone
  // when another byte is among them, the number does not fit an int, or when start + len is not
  // less than the size: a number that ends with the content is refused, since parsers that read
  // on take it for one cut short.
  int GetNumber(int start, int len, int sign, int& value) const;

  // ---- Search ----
  //
  // All give a byte position or -1. Forward searches begin at start, which counts as a border of
  // characters; backward ones look at what lies wholly before end, and -1 is the end of the
  // content. The Ascii forms look at every byte. nocase ignores case: of ASCII letters in the
  // Ascii forms, else by the code page, in wide text by Unicode. An empty or null s is not found.

  int FindAsciiChar(char c, int start = 0) const;
  int FindChar(char c, int start = 0) const;  // finds no byte of a two-byte character
  // Any byte of set, at every byte: it may be half a character.
  int FindOneOfChar(const char* set, int start = 0) const;
  int FindAsciiPhrase(const char* s, int start = 0, int nocase = 0) const;
  int FindPhrase(const char* s, int start = 0, int nocase = 0) const;
  int FindPhrase(const char16_t* s, int start = 0, int nocase = 0) const;  // every 2 bytes

  // An end past the content is the content's end; below -1 nothing is found. The phrase forms
  // take every negative end for the content's, except the wide one, which steps down by 2 bytes
  // from end as it is given.
  int ReverseFindAsciiChar(char c, int end = -1) const;
  int ReverseFindChar(char c, int end = -1) const;
  int ReverseFindAsciiPhrase(const char* s, int end = -1, int nocase = 0) const;
  int ReverseFindPhrase(const char* s, int end = -1, int nocase = 0) const;
  int ReverseFindPhrase(const char16_t* s, int end = -1, int nocase = 0) const;

  // As the functions of the same name in textscan.h, over the content.
  int SkipSpace(int& pos) const;
  int SkipNotSpace(int& pos) const;

  // ---- Replacement ----

  // Replace every from between start and start + count (count below 1: the end) by to, and give
  // the number of replacements. The search goes on behind each replacement, and start and count
  // mean the content as it was before: "aaa" with "a" for "aa" becomes "aaaaaa", 3 replacements.
  // A null to deletes.
  int ReplaceAsciiPhraseAll(const char* from, const char* to, int start = 0, int count = 0,
                            int nocase = 0);
  int ReplacePhraseAll(const char* from, const char* to, int start = 0, int count = 0,
                       int nocase = 0);
  int ReplacePhraseAll(const char16_t* from, const char16_t* to, int start = 0, int count = 0,
                       int nocase = 0);

  // Copies the next run of characters that are not among those of delims, from pos on, into
  // token, and moves pos behind the delimiter that ends it (or to the end). token is left empty,
  // and pos as it was, when there is no further one.
  void Tokenize(const char* delims, int& pos, CBuffer& token) const;

 private:
  friend class CFixBuffer;

  alignas(char16_t) static constexpr char kNoContent[2] = {};

  const char* Data() const { return data_ != nullptr ? data_ : kNoContent; }
  bool Inside(const char* p) const;
  // Sets the size within the capacity, with the terminator pair. Storage must exist.
  void SetSize(int n) {
    size_ = n;
    StoreUnit(data_ + n, 0);
  }
  std::size_t Rounded(std::uint64_t capacity) const;
  void Reserve(std::uint64_t capacity);
  void Grow(std::uint64_t more);  // capacity for more bytes behind the content
  void Assign(std::string_view s);
  char* OpenGap(std::uint64_t n, int pos);
  int ReplaceAll(TextForm form, std::string_view from, std::string_view to, int start, int count,
                 int nocase);

  char* data_ = nullptr;
  int size_ = 0;
  int allocSize_ = 0;
  int incrSize_ = 16;
};

// A buffer with one number beside its content, which belongs to whoever uses it: 1 after
// construction and after Empty, copied with the buffer.
class CTextBuffer : public CBuffer {
 public:
  CTextBuffer() noexcept = default;
  using CBuffer::CBuffer;
  CTextBuffer(const CTextBuffer&) = default;
  CTextBuffer& operator=(const CTextBuffer&) = default;
  using CBuffer::operator=;

  int GetAttribute() const { return attribute_; }
  void SetAttribute(int attribute) { attribute_ = attribute; }
  void Empty() {
    CBuffer::Empty();
    attribute_ = 1;
  }

 private:
  int attribute_ = 1;
};

// A wide string with the same number.
class CtStringW : public CStringW {
 public:
  CtStringW() = default;
  using CStringW::CStringW;
  using CStringW::operator=;

  int GetAttribute() const { return attribute_; }
  void SetAttribute(int attribute) { attribute_ = attribute; }
  void Empty() {
    clear();
    attribute_ = 1;
  }
  int IsEmpty() const { return empty(); }

 private:
  int attribute_ = 1;
};

}  // namespace lumr
