#include <locale.h>
#include <string.h>

#include <algorithm>
#include <iterator>

#include "lumrmisc/platform/files_internal.h"
#include "lumrmisc/platform/posix/posix_internal.h"

namespace lumr {
namespace {

struct ErrorRow {
  FileErrorKind kind;
  int code;
};
// The first row of a kind is the error that stands for it.
constexpr ErrorRow kErrors[] = {
    {FileErrorKind::kNone, 0},
    {FileErrorKind::kMissing, ENOENT},
    {FileErrorKind::kDenied, EACCES},
    {FileErrorKind::kDenied, EPERM},
    {FileErrorKind::kDenied, EROFS},
    {FileErrorKind::kExists, EEXIST},
    {FileErrorKind::kIsFolder, EISDIR},
    {FileErrorKind::kNotFolder, ENOTDIR},
    {FileErrorKind::kNotEmpty, ENOTEMPTY},
    {FileErrorKind::kNoSpace, ENOSPC},
    {FileErrorKind::kNoSpace, EDQUOT},
    {FileErrorKind::kTooLarge, EFBIG},
    {FileErrorKind::kTooLarge, EOVERFLOW},
    {FileErrorKind::kBusy, EBUSY},
    {FileErrorKind::kBusy, ETXTBSY},
    {FileErrorKind::kDevice, EIO},
    {FileErrorKind::kBadName, ENAMETOOLONG},
    {FileErrorKind::kBadName, EILSEQ},
    {FileErrorKind::kTooManyOpen, EMFILE},
    {FileErrorKind::kTooManyOpen, ENFILE},
    {FileErrorKind::kInterrupted, ECANCELED},
    {FileErrorKind::kInterrupted, EINTR},
    {FileErrorKind::kOther, EINVAL},
};

}  // namespace

FileErrorKind KindOf(FileError error) {
  const auto row = std::find_if(std::begin(kErrors), std::end(kErrors),
                                [&](const ErrorRow& r) { return r.code == error.code; });
  return row == std::end(kErrors) ? FileErrorKind::kOther : row->kind;
}

FileError ErrorOf(FileErrorKind kind) {
  const auto row = std::find_if(std::begin(kErrors), std::end(kErrors),
                                [&](const ErrorRow& r) { return r.kind == kind; });
  return {row->code};
}

// The C library's texts in the C locale, English on every machine.
CStringW internal::SystemWords(FileError error, MessageLanguage language) {
  if (language != MessageLanguage::kEnglish) return {};
  static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
  if (cLocale == static_cast<locale_t>(nullptr)) return {};
  const char* const text = strerror_l(error.code, cLocale);
  return text == nullptr ? CStringW() : PathFromUtf8(text);
}

}  // namespace lumr
