// lumr grep: lines of files and of mail that hold words or match a pattern.
#include "grep.h"

#include <algorithm>
#include <filesystem>
#include <memory>

#include "charsets.h"
#include "command.h"
#include "input.h"
#include "lumrmisc/charset/mailcharset.h"
#include "safetext.h"

namespace lumr::tool {

namespace {

struct Arguments {
  GrepOptions options;
  std::vector<std::string> words;       // of -e
  std::vector<std::string> positional;  // words and places, or places alone
  std::vector<std::string> places;
  std::string explained;
  bool anyWord = false;
};

bool IsThere(const std::string& name) {
  return name == "-" || PathExists(PathFromUtf8(name));
}

// Tells words from places where no -e or -E did: the first argument is a word, and so are those
// behind it up to the first one that is there as a file or folder; the last is a place in any case.
void SplitPositional(Arguments& arguments) {
  std::vector<std::string>& all = arguments.positional;
  MatchOptions& match = arguments.options.match;
  match.words = arguments.words;
  auto firstPlace = all.begin();
  if (!match.isPattern && match.words.empty() && !all.empty()) {
    firstPlace = std::find_if(all.begin() + 1, all.end(), IsThere);
    if (firstPlace == all.end() && all.size() > 1) --firstPlace;
    match.words.assign(all.begin(), firstPlace);
  }
  arguments.places.assign(firstPlace, all.end());
  if (arguments.places.empty()) arguments.places = {arguments.options.recursive ? "." : "-"};
}

bool IsLink(const std::string& name) {
  std::error_code error;
  return std::filesystem::is_symlink(std::filesystem::path(std::u8string(name.begin(), name.end())),
                                     error);
}

// What a large text is detected by: a piece of it from the line on that first has something to
// tell. To try every charset on all of it takes ten times as long as the search.
std::string_view Sample(std::string_view content) {
  constexpr std::size_t kWholeSize = std::size_t{4} << 20;
  constexpr std::size_t kSampleSize = std::size_t{1} << 20;
  if (content.size() <= kWholeSize) return content;
  const auto telling = std::find_if(content.begin(), content.end(), [](char byte) {
    return byte == 0 || byte == 0x1B || static_cast<unsigned char>(byte) >= 0x80;
  });
  if (telling == content.end() || *telling == 0) return content.substr(0, kSampleSize);
  const auto place = static_cast<std::size_t>(telling - content.begin());
  const std::size_t lineEnd = content.rfind('\n', place);
  const std::size_t begin = lineEnd == content.npos ? 0 : lineEnd + 1;
  // To the end of a line, so that no character is cut.
  return content.substr(begin, content.find('\n', begin + kSampleSize) - begin);
}

class Searcher {
 public:
  Searcher(Session& session, const Arguments& arguments, LineMatcher& matcher, CodeType codeType,
           Utf16Order order)
      : session_(session),
        options_(arguments.options),
        codeType_(codeType),
        order_(order),
        grep_(session, options_, matcher,
              options_.mail || options_.recursive || arguments.places.size() > 1) {}

  void SearchPlace(const std::string& place) {
    const bool isFolder = place != "-" && IsFolder(PathFromUtf8(place));
    if (isFolder && options_.recursive) {
      SearchFolders(place);
    } else if (options_.mail) {
      GrepMail(session_, place, grep_);
    } else if (isFolder) {
      session_.TellUnreadable(place, ErrorOf(FileErrorKind::kIsFolder));
    } else {
      SearchFile(place);
    }
  }

  bool FoundAny() const { return grep_.FoundAny(); }

 private:
  void SearchFile(const std::string& name) {
    std::string content;
    if (const FileError error = ReadAll(name, content)) {
      return session_.TellUnreadable(name, error);
    }
    GrepText text;
    text.name = name;
    text.bytes = content;
    text.codeType = codeType_;
    text.order = order_;
    if (codeType_ == CT_UNKNOWN) {
      const MailCharset charset = ResolveMailCharset({}, Sample(content));
      text.codeType = charset.codeType;
      text.order = charset.order;
    }
    grep_.Search(text);
    grep_.EndFile(text);
    session_.Progress(++done_, 0, name);
  }

  // Folders that are links are left alone, since they may lead back; so is what is no file.
  void SearchFolders(const std::string& top) {
    std::vector<std::string> waiting = {top};
    while (!waiting.empty()) {
      const std::string folder = std::move(waiting.back());
      waiting.pop_back();
      std::vector<CStringW> names;
      if (const FileError error = ListFolder(PathFromUtf8(folder), names)) {
        session_.TellUnreadable(folder, error);
        continue;
      }
      std::sort(names.begin(), names.end());
      SearchFolder(folder, names, waiting);
    }
  }

  void SearchFolder(const std::string& folder, const std::vector<CStringW>& names,
                    std::vector<std::string>& waiting) {
    const CStringW path = PathFromUtf8(folder);
    if (options_.mail) GrepMail(session_, folder, grep_);
    const std::size_t firstInside = waiting.size();
    for (const CStringW& name : names) {
      const std::string inside = PathToUtf8(JoinPath(path, name));
      FileInfo info;
      if (const FileError error = QueryFile(PathFromUtf8(inside), info)) {
        if (!IsLink(inside)) session_.TellUnreadable(inside, error);
      } else if (info.isFolder) {
        const bool isMailPart =
            options_.mail && (name == u"cur" || name == u"new" || name == u"tmp");
        if (!isMailPart && !IsLink(inside)) waiting.push_back(inside);
      } else if (info.isRegular && !options_.mail) {
        SearchFile(inside);
      }
    }
    std::reverse(waiting.begin() + static_cast<std::ptrdiff_t>(firstInside), waiting.end());
  }

  Session& session_;
  const GrepOptions& options_;
  CodeType codeType_;
  Utf16Order order_;
  Grep grep_;
  std::int64_t done_ = 0;
};

bool Refuse(Session& session, Say why, std::string_view argument = {}) {
  session.Tell({}, why, {argument});
  session.Raise(kFailed);
  return false;
}

bool Check(Session& session, const Arguments& arguments) {
  const MatchOptions& match = arguments.options.match;
  if (arguments.options.mail && arguments.options.byteOffset) {
    return Refuse(session, Say::kGrepMailOffset);
  }
  const bool hasEmpty = std::any_of(match.words.begin(), match.words.end(),
                                    [](const std::string& word) { return word.empty(); });
  if (!match.isPattern && (match.words.empty() || hasEmpty)) {
    return Refuse(session, Say::kGrepNoWord);
  }
  return true;
}

void RunGrep(Session& session, Arguments& arguments) {
  if (!arguments.explained.empty()) {
    arguments.options.match.pattern = arguments.explained;
    return ExplainPattern(session, arguments.options.match);
  }
  SplitPositional(arguments);
  if (!Check(session, arguments)) return;
  CodeType codeType = CT_UNKNOWN;
  Utf16Order order = Utf16Order::kByMark;
  if (!arguments.options.from.empty()) {
    codeType = CodeTypeOfArgument(arguments.options.from, order);
    if (codeType == CT_UNKNOWN) {
      Refuse(session, Say::kUnknownCharset, SafeLine(arguments.options.from));
      return;
    }
  }
  const auto matcher = MakeMatcher(session, arguments.options.match);
  if (matcher == nullptr) return;
  Searcher searcher(session, arguments, *matcher, codeType, order);
  for (const std::string& place : arguments.places) searcher.SearchPlace(place);
  session.Conclude(searcher.FoundAny());
}

void AddMatchOptions(CLI::App& command, Arguments& arguments) {
  MatchOptions& match = arguments.options.match;
  command.add_flag("-i,--ignore-case", match.ignoreCase, Text(Say::kGrepIgnoreCase));
  command.add_flag("-w,--ignore-width", match.ignoreWidth, Text(Say::kGrepIgnoreWidth));
  command.add_flag("-k,--ignore-kana", match.ignoreKana, Text(Say::kGrepIgnoreKana));
  command.add_option("-e,--word", arguments.words, Text(Say::kGrepWord))
      ->type_name("WORD")
      ->allow_extra_args(false);
  CLI::Option* const pattern =
      command.add_option("-E,--pattern", match.pattern, Text(Say::kGrepPattern))
          ->type_name("PATTERN");
  pattern->excludes("--word");
  CLI::Option* const any = command.add_flag("--any", arguments.anyWord, Text(Say::kGrepAny));
  command.add_flag("--all", match.allWords, Text(Say::kGrepAll))->excludes(any);
  command.add_option("--explain", arguments.explained, Text(Say::kGrepExplain))
      ->type_name("PATTERN");
}

void AddPlaceOptions(CLI::App& command, Arguments& arguments) {
  GrepOptions& options = arguments.options;
  options.color = "auto";
  command.add_flag("-r,--recursive", options.recursive, Text(Say::kGrepRecursive));
  command.add_flag("--mail", options.mail, Text(Say::kGrepMail));
  command.add_option("-f,--from", options.from, Text(Say::kGrepFrom))->type_name("CHARSET");
  command.add_flag("-n,--line-number", options.lineNumbers, Text(Say::kGrepNumber));
  command.add_flag("-b,--byte-offset", options.byteOffset, Text(Say::kGrepByteOffset));
  command.add_flag("-o,--only-matching", options.onlyMatching, Text(Say::kGrepOnly));
  command.add_flag("-c,--count", options.count, Text(Say::kGrepCount));
  command.add_flag("-l,--files-with-matches", options.filesOnly, Text(Say::kGrepFiles));
  command.add_option("--color", options.color, Text(Say::kGrepColor))
      ->type_name("auto|always|never")
      ->check(CLI::IsMember({"auto", "always", "never"}).description(""));
}

}  // namespace

Runner AddGrep(CLI::App& command) {
  const auto arguments = std::make_shared<Arguments>();
  command.add_option("WORD FILE", arguments->positional, Text(Say::kGrepArguments))->type_name("");
  AddMatchOptions(command, *arguments);
  AddPlaceOptions(command, *arguments);
  return [arguments, &command](Session& session) {
    arguments->options.match.isPattern = command.count("--pattern") > 0;
    RunGrep(session, *arguments);
  };
}

}  // namespace lumr::tool
