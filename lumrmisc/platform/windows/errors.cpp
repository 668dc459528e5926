#include <algorithm>
#include <iterator>

#include "lumrmisc/platform/files_internal.h"
#include "lumrmisc/platform/windows/windows_internal.h"

namespace lumr {
namespace {

// Not in every compiler's headers.
constexpr DWORD kDirectoryNotSupported = 336;
constexpr DWORD kDiskQuotaExceeded = 1295;

struct ErrorRow {
  FileErrorKind kind;
  DWORD code;
};
// The first row of a kind is the error that stands for it.
constexpr ErrorRow kErrors[] = {
    {FileErrorKind::kNone, ERROR_SUCCESS},
    {FileErrorKind::kMissing, ERROR_FILE_NOT_FOUND},
    {FileErrorKind::kMissing, ERROR_PATH_NOT_FOUND},
    {FileErrorKind::kMissing, ERROR_INVALID_DRIVE},
    {FileErrorKind::kMissing, ERROR_BAD_NETPATH},
    {FileErrorKind::kMissing, ERROR_BAD_NET_NAME},
    {FileErrorKind::kDenied, ERROR_ACCESS_DENIED},
    {FileErrorKind::kDenied, ERROR_WRITE_PROTECT},
    {FileErrorKind::kDenied, ERROR_PRIVILEGE_NOT_HELD},
    {FileErrorKind::kExists, ERROR_ALREADY_EXISTS},
    {FileErrorKind::kExists, ERROR_FILE_EXISTS},
    {FileErrorKind::kIsFolder, kDirectoryNotSupported},
    {FileErrorKind::kNotFolder, ERROR_DIRECTORY},
    {FileErrorKind::kNotEmpty, ERROR_DIR_NOT_EMPTY},
    {FileErrorKind::kNoSpace, ERROR_DISK_FULL},
    {FileErrorKind::kNoSpace, ERROR_HANDLE_DISK_FULL},
    {FileErrorKind::kNoSpace, kDiskQuotaExceeded},
    {FileErrorKind::kTooLarge, ERROR_FILE_TOO_LARGE},
    {FileErrorKind::kBusy, ERROR_SHARING_VIOLATION},
    {FileErrorKind::kBusy, ERROR_LOCK_VIOLATION},
    {FileErrorKind::kBusy, ERROR_BUSY},
    {FileErrorKind::kDevice, ERROR_IO_DEVICE},
    {FileErrorKind::kDevice, ERROR_CRC},
    {FileErrorKind::kDevice, ERROR_WRITE_FAULT},
    {FileErrorKind::kDevice, ERROR_READ_FAULT},
    {FileErrorKind::kBadName, ERROR_INVALID_NAME},
    {FileErrorKind::kBadName, ERROR_BAD_PATHNAME},
    {FileErrorKind::kBadName, ERROR_FILENAME_EXCED_RANGE},
    {FileErrorKind::kTooManyOpen, ERROR_TOO_MANY_OPEN_FILES},
    {FileErrorKind::kInterrupted, ERROR_CANCELLED},
    {FileErrorKind::kInterrupted, ERROR_OPERATION_ABORTED},
    {FileErrorKind::kOther, ERROR_GEN_FAILURE},
};

constexpr WORD LanguageId(MessageLanguage language) {
  return language == MessageLanguage::kJapanese ? MAKELANGID(LANG_JAPANESE, SUBLANG_DEFAULT)
                                                : MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US);
}

}  // namespace

FileErrorKind KindOf(FileError error) {
  const auto code = static_cast<DWORD>(error.code);
  const auto row = std::find_if(std::begin(kErrors), std::end(kErrors),
                                [&](const ErrorRow& r) { return r.code == code; });
  return row == std::end(kErrors) ? FileErrorKind::kOther : row->kind;
}

FileError ErrorOf(FileErrorKind kind) {
  const auto row = std::find_if(std::begin(kErrors), std::end(kErrors),
                                [&](const ErrorRow& r) { return r.kind == kind; });
  return {static_cast<int>(row->code)};
}

CStringW internal::SystemWords(FileError error, MessageLanguage language) {
  // The maximum-width mask turns the line breaks inside a text into spaces.
  constexpr DWORD kFlags =
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
  wchar_t text[1024];
  DWORD length = FormatMessageW(kFlags, nullptr, static_cast<DWORD>(error.code),
                                LanguageId(language), text, std::size(text), nullptr);
  while (length != 0 && text[length - 1] <= L' ') --length;
  return windows::Units({text, length});
}

}  // namespace lumr
