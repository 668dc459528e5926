#include "mailsource.h"

#include <algorithm>
#include <optional>
#include <tuple>

#include "input.h"

namespace lumr::tool {

namespace {

constexpr std::size_t kPieceSize = 1u << 18;
constexpr std::string_view kFromLine = "From ";

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool StartsWith(std::string_view text, std::string_view begin) {
  return text.substr(0, begin.size()) == begin;
}

// ---- Folders

// "10" comes behind "9", as in folders that number their messages.
bool NameLess(const CStringW& a, const CStringW& b) {
  const auto key = [](const CStringW& name) {
    const bool isNumber = std::all_of(name.begin(), name.end(),
                                      [](char16_t unit) { return unit >= u'0' && unit <= u'9'; });
    return std::make_tuple(!isNumber, isNumber ? name.size() : 0, std::u16string_view(name));
  };
  return key(a) < key(b);
}

struct FolderFile {
  CStringW path;
  std::uint64_t size;
};

// Adds the files in a folder, sorted by name.
FileError AddFiles(const CStringW& folder, std::vector<FolderFile>& files) {
  std::vector<CStringW> names;
  if (const FileError error = ListFolder(folder, names)) return error;
  std::sort(names.begin(), names.end(), NameLess);
  for (const CStringW& name : names) {
    if (name.front() == u'.') continue;
    CStringW path = JoinPath(folder, name);
    FileInfo info;
    const bool isOther = !QueryFile(path, info) && !info.isRegular;  // a folder, a pipe
    if (!isOther) files.push_back({std::move(path), info.size});
  }
  return {};
}

FileError FilesOf(const CStringW& folder, std::vector<FolderFile>& files) {
  const CStringW cur = JoinPath(folder, u"cur");
  const CStringW fresh = JoinPath(folder, u"new");
  if (!IsFolder(cur) || !IsFolder(fresh)) return AddFiles(folder, files);
  if (const FileError error = AddFiles(fresh, files)) return error;
  return AddFiles(cur, files);
}

// ---- Files

// Lines of an input that is read in pieces.
class LineReader {
 public:
  // size: of the file, where it is known; no more room is taken for a small one.
  LineReader(Input& input, std::string begin, std::uint64_t size)
      : input_(input),
        buffer_(std::move(begin)),
        piece_(size == 0 ? kPieceSize : std::min<std::size_t>(kPieceSize, size + 1)) {}

  // The next line with its line feed; empty at the end. Good until the next call.
  FileError Next(std::string_view& line) {
    std::size_t searched = pos_;
    for (;;) {
      const std::size_t feed = buffer_.find('\n', searched);
      if (feed != std::string::npos) return Take(feed + 1, line);
      if (atEnd_) return Take(buffer_.size(), line);
      searched = buffer_.size() - pos_;
      buffer_.erase(0, pos_);
      pos_ = 0;
      if (const FileError error = Fill()) return error;
    }
  }

 private:
  FileError Take(std::size_t end, std::string_view& line) {
    line = std::string_view(buffer_).substr(pos_, end - pos_);
    pos_ = end;
    return {};
  }

  FileError Fill() {
    const std::size_t used = buffer_.size();
    if (used > kWholeLimit) return ErrorOf(FileErrorKind::kTooLarge);
    buffer_.resize(used + piece_);
    std::size_t got = 0;
    const FileError error = input_.Read(buffer_.data() + used, piece_, got);
    buffer_.resize(used + got);
    atEnd_ = got == 0;
    return error;
  }

  Input& input_;
  std::string buffer_;
  std::size_t piece_;
  std::size_t pos_ = 0;
  bool atEnd_ = false;
};

// A line that separates messages ends in a date, so it has a time in it. Text that begins with
// "From " behind an empty line is not always escaped.
bool IsSeparator(std::string_view line) {
  if (!StartsWith(line, kFromLine)) return false;
  for (std::size_t i = kFromLine.size(); i + 5 <= line.size(); ++i) {
    if (line[i + 2] == ':' && IsDigit(line[i]) && IsDigit(line[i + 1]) && IsDigit(line[i + 3]) &&
        IsDigit(line[i + 4])) {
      return true;
    }
  }
  return false;
}

bool IsBreak(std::string_view line) {
  return line == "\n" || line == "\r\n";
}

// ">From ", ">>From ": one level of escaping is taken off.
std::string_view Unescaped(std::string_view line) {
  const std::size_t from = line.find_first_not_of('>');
  const bool escaped =
      from != std::string_view::npos && from > 0 && StartsWith(line.substr(from), kFromLine);
  return escaped ? line.substr(1) : line;
}

class MailFiles {
 public:
  MailFiles(Session& session, const TakeMail& take) : session_(session), take_(take) {}

  // of: how many files there are, size: the file's, as far as they are known.
  void ReadFile(const std::string& name, std::int64_t of, std::uint64_t size) {
    if (const FileError error = TryFile(name, of, size)) session_.TellUnreadable(name, error);
  }

 private:
  FileError TryFile(const std::string& name, std::int64_t of, std::uint64_t size) {
    Input input;
    if (const FileError error = input.Open(name)) return error;
    bytes_.resize(0);
    if (size > kWholeLimit) return TryMbox(input, {}, name, size);
    if (const FileError error = ReadBegin(input)) return error;
    if (StartsWith(bytes_.View(), kFromLine)) {
      return TryMbox(input, std::string(bytes_.View()), name, size);
    }
    if (const FileError error = ReadRest(input, bytes_, size)) return error;
    if (bytes_.size() == 0) {
      session_.Tell(name, Say::kEmptyFile);
      session_.Raise(kLost);
      return {};
    }
    take_({name, 0, of}, bytes_);
    return {};
  }

  // As much as tells an mbox.
  FileError ReadBegin(Input& input) {
    while (bytes_.size() < kFromLine.size()) {
      const std::size_t used = bytes_.size();
      bytes_.resize(kFromLine.size());
      std::size_t got = 0;
      const FileError error = input.Read(bytes_.data() + used, kFromLine.size() - used, got);
      bytes_.resize(used + got);
      if (error || got == 0) return error;
    }
    return {};
  }

  FileError TryMbox(Input& input, std::string begin, const std::string& name, std::uint64_t size) {
    LineReader lines(input, std::move(begin), size);
    bytes_.resize(0);
    std::int64_t number = 0;
    bool behindBreak = true;
    std::string_view line;
    for (;;) {
      if (const FileError error = lines.Next(line)) return error;
      const bool separates = behindBreak && IsSeparator(line);
      if ((line.empty() || separates) && bytes_.size() > 0) {
        const bool isOnlyOne = line.empty() && number == 0;
        take_({name, isOnlyOne ? 0 : ++number, 0}, bytes_);
        bytes_.resize(0);
      }
      if (line.empty()) return {};
      if (bytes_.size() + line.size() > kWholeLimit) return ErrorOf(FileErrorKind::kTooLarge);
      behindBreak = IsBreak(line);
      bytes_.append(separates ? line : Unescaped(line));
    }
  }

  Session& session_;
  const TakeMail& take_;
  MailBytes bytes_;
};

}  // namespace

void ForEachMail(Session& session, const std::string& place, const TakeMail& take) {
  MailFiles reader(session, take);
  const CStringW path = PathFromUtf8(place);
  if (place == "-" || !IsFolder(path)) {
    reader.ReadFile(place, 0, ExpectedSize(place));
    return;
  }
  std::vector<FolderFile> files;
  if (const FileError error = FilesOf(path, files)) return session.TellUnreadable(place, error);
  for (const FolderFile& file : files) {
    reader.ReadFile(PathToUtf8(file.path), static_cast<std::int64_t>(files.size()), file.size);
  }
}

}  // namespace lumr::tool
