// What every module stands on besides the byte buffer: allocation that never returns null, the
// exceptions, bounded string lengths and sizes for hash tables.
//
// Out of memory is std::bad_alloc everywhere. Bad arguments never throw.
#pragma once

#include <exception>
#include <string_view>

#include "lumrmisc/platform/files.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

// ---- Allocation ----

// Memory from the heap of the C library. Never null, also for size 0; throws std::bad_alloc.
// Sizes above 2^31 - 64 are negative numbers gone astray and throw too. lu_realloc leaves the
// old block as it was when it throws; a null p makes it lu_malloc. lu_free takes null.
void* lu_malloc(unsigned size);
void* lu_realloc(void* p, unsigned size);
void lu_free(void* p);

// ---- Lengths and emptiness ----

// The number of bytes before the first NUL among the first max bytes, or max when there is none.
// A max below 1 is returned as it is; a null s has length 0.
int lu_strnlen(const char* s, int max);

// The same for UTF-16 text, in bytes: maxBytes is first rounded down to an even number (-5 gives
// -6), and returned if that is below 1. The result is even. s may stand at any address.
int lu_wcsnlen(const char16_t* s, int maxBytes);

// 1 when s is null or begins with NUL.
int IsEmpty(const char* s);
int IsEmpty(const char16_t* s);

// ---- Sizes ----

// A prime not below n for the size of a hash table; below 4, n itself. Above the largest prime
// of 32 bits, 4294967291, that prime.
unsigned GetPrimeUpper(unsigned n);

// Does nothing; callers may leave their dumps in place.
void debug_out(const void* data, int len);

// ---- Exceptions ----

// The base of the library's exceptions. A catcher shows the text of GetErrorMessage only when
// that returns 1.
class CException : public std::exception {
 public:
  // Writes the message, in the current code page, into buf of max bytes: at most max - 1 bytes
  // of it, a two-byte character never cut in half, and a terminator. 1 when there is a message,
  // 0 when there is none (buf then receives an empty text). 0 and nothing written when buf is
  // null or max is 0. helpContext is not touched.
  virtual int GetErrorMessage(char* buf, unsigned max, unsigned* helpContext = nullptr) const;
  const char* what() const noexcept override { return "lumr::CException"; }
};

// A failure with a message for the user.
class CStrException : public CException {
 public:
  // The message is copied; null is an empty one.
  explicit CStrException(const char* message);
  explicit CStrException(CStringA message);

  // Returns 1 for an empty message too.
  int GetErrorMessage(char* buf, unsigned max, unsigned* helpContext = nullptr) const override;
  const char* what() const noexcept override { return message_.c_str(); }

 private:
  CStringA message_;
};

// Thrown to leave a path of processing silently: the catcher ends the operation and tells the
// user nothing. It has no message.
class CLeaveOnlyException : public CException {
 public:
  const char* what() const noexcept override { return "lumr::CLeaveOnlyException"; }
};

// A file that could not be opened, read or written, where an interface throws for that.
class CFileException : public CException {
 public:
  CFileException(FileError error, CStringW path);

  FileError GetError() const { return error_; }
  const CStringW& GetPath() const { return path_; }

  // The system's text for the error.
  int GetErrorMessage(char* buf, unsigned max, unsigned* helpContext = nullptr) const override;
  const char* what() const noexcept override { return message_.c_str(); }

 private:
  FileError error_;
  CStringW path_;
  CStringA message_;
};

}  // namespace lumr
