// Paths, reading, folders and errors.
#include "lumrmisc/platform/files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

#include "lumrmisc/platform/files_internal.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/messages.h"
#include "platform/scratch_folder.h"

namespace lumr {
namespace {

TEST(Paths, AreUtf8OnOneSideAndUtf16OnTheOther) {
  const struct {
    std::string_view utf8;
    std::u16string_view path;
  } cases[] = {
      {"", u""},
      {"/home/user", u"/home/user"},
      {"caf\xC3\xA9", u"caf\u00E9"},
      {"\xE5\x8F\x97\xE4\xBF\xA1", u"\u53D7\u4FE1"},
      {"\xF0\x9F\x93\xA7.eml", u"\U0001F4E7.eml"},
      {"\xEF\xBF\xBF\xF4\x8F\xBF\xBF", u"\uFFFF\U0010FFFF"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(PathFromUtf8(c.utf8), c.path) << c.utf8;
    EXPECT_EQ(PathToUtf8(c.path), c.utf8) << c.utf8;
  }
}

TEST(Paths, KeepMalformedNames) {
  const std::string_view malformed[] = {"\x80",
                                        "\xFF",
                                        "a\xC3",
                                        "\xC3(",
                                        "\xC0\x80",
                                        "\xE0\x80\xAF",
                                        "\xE3\x81",
                                        "\xF5\x80\x80\x80",
                                        "\xF4\x90\x80\x80",
                                        "\xED\xA0\x80",
                                        "\xED\xA0\x80\xED\xB0\x80",
                                        "\xF0\x9F\x93"};
  const bool areBytes = internal::NamesAreBytes();
  for (const std::string_view name : malformed) {
    const CStringW path = PathFromUtf8(name);
    if (areBytes) {
      EXPECT_EQ(PathToUtf8(path), name);
      for (const char16_t unit : path)
        EXPECT_TRUE(unit < 0x80 || (unit >= 0xDC80 && unit <= 0xDCFF));
    }
  }
  std::mt19937 random(20240501);
  for (int i = 0; i < 20000; ++i) {
    // Rich in lead bytes, continuations and surrogates.
    const std::size_t length = random() % 9;
    if (areBytes) {
      static constexpr std::string_view kBytes =
          "a\x80\x90\xA0\xBF\xC2\xE0\xE3\xED\xEF\xF0\xF4\xF5\xFF";
      std::string name;
      while (name.size() < length) name += kBytes[random() % kBytes.size()];
      ASSERT_EQ(PathToUtf8(PathFromUtf8(name)), name) << "seed 20240501, round " << i;
    } else {
      static constexpr char16_t kUnits[] = {u'a', 0x3042, 0xD800, 0xDBFF, 0xDC00, 0xDC80, 0xDFFF};
      CStringW name;
      while (name.size() < length) name += kUnits[random() % std::size(kUnits)];
      ASSERT_EQ(PathFromUtf8(PathToUtf8(name)), name) << "seed 20240501, round " << i;
    }
  }
}

TEST(Paths, AreJoinedByOneSeparator) {
  const CStringW s(1, PathSeparator());
  const struct {
    CStringW folder, name, joined;
  } cases[] = {{u"a", u"b", u"a" + s + u"b"},
               {u"a" + s, u"b", u"a" + s + u"b"},
               {u"a", s + u"b", u"a" + s + u"b"},
               {u"", u"b", u"b"},
               {u"a", u"", u"a" + s},
               {s, u"b", s + u"b"},
               {u"", u"", u""}};
  for (const auto& c : cases) EXPECT_EQ(JoinPath(c.folder, c.name), c.joined);
  const CStringW path = u"a" + s + u"b" + s + u"c";
  EXPECT_EQ(NameOfPath(path), u"c");
  EXPECT_EQ(FolderOfPath(path), u"a" + s + u"b" + s);
  EXPECT_EQ(NameOfPath(u"c"), u"c");
  EXPECT_EQ(FolderOfPath(u"c"), u"");
}

TEST(Files, TakeNamesOfAnyLengthAndScript) {
  const ScratchFolder scratch;
  CStringW folder = scratch.Path();
  for (int depth = 0; depth < 5; ++depth)
    folder = JoinPath(folder, CStringW(60, static_cast<char16_t>(0x3042 + depth)));
  std::vector<CStringW> names = {u"\u53D7\u4FE1\U0001F4E7", u"caf\u00E9", u"a b"};
  if (internal::NamesAreBytes()) names.push_back(PathFromUtf8("\xFF\xE3\x81"));
  EXPECT_EQ(KindOf(WriteFileDurably(JoinPath(folder, u"x"), "x")), FileErrorKind::kMissing);
  ASSERT_FALSE(MakeFolders(JoinPath(folder, u"")));
  ASSERT_FALSE(MakeFolders(folder)) << "again";
  for (const CStringW& name : names) {
    const CStringW path = JoinPath(folder, name);
    EXPECT_FALSE(WriteFileDurably(path, PathToUtf8(name)));
    EXPECT_EQ(ContentOf(path), PathToUtf8(name));
    EXPECT_TRUE(PathExists(path));
    EXPECT_FALSE(IsFolder(path));
  }
  std::vector<CStringW> found = {u"from before"};
  EXPECT_FALSE(ListFolder(folder, found));
  std::sort(found.begin(), found.end());
  std::sort(names.begin(), names.end());
  EXPECT_EQ(found, names);
  for (const CStringW& name : names) EXPECT_FALSE(RemoveFile(JoinPath(folder, name)));
  EXPECT_FALSE(RemoveFolder(folder));
  EXPECT_FALSE(PathExists(folder));
}

TEST(Files, AnswerWhatWentWrong) {
  const ScratchFolder folder;
  const CStringW file = folder / u"file";
  const CStringW absent = folder / u"absent";
  const CStringW below = JoinPath(file, u"below");
  const CStringW withNul = CStringW(file).append(1, u'\0') + u"x";
  ASSERT_FALSE(WriteFileDurably(file, "content"));
  std::string content = "from before";
  std::vector<CStringW> names;
  AppendStream stream;
  const struct {
    const char* what;
    FileError error;
    FileErrorKind expected;
    FileErrorKind orElse;  // Windows tells fewer apart
  } cases[] = {
      {"read absent", ReadWholeFile(absent, content), FileErrorKind::kMissing, {}},
      {"read folder", ReadWholeFile(folder.Path(), content), FileErrorKind::kIsFolder, {}},
      {"read below file", ReadWholeFile(below, content), FileErrorKind::kNotFolder,
       FileErrorKind::kMissing},
      {"read nothing", ReadWholeFile(u"", content), FileErrorKind::kMissing, {}},
      {"read NUL", ReadWholeFile(withNul, content), FileErrorKind::kOther, FileErrorKind::kBadName},
      {"write NUL", WriteFileDurably(withNul, "x"), FileErrorKind::kOther, FileErrorKind::kBadName},
      {"write folder", WriteFileDurably(folder.Path(), "x"), FileErrorKind::kIsFolder, {}},
      {"write too long", WriteFileDurably(folder / CStringW(300, u'x'), "x"),
       FileErrorKind::kBadName, FileErrorKind::kMissing},
      {"append to folder", stream.Open(folder.Path(), true), FileErrorKind::kIsFolder, {}},
      {"duplicate absent", DuplicateFile(absent, file), FileErrorKind::kMissing, {}},
      {"rename absent", RenameFile(absent, file), FileErrorKind::kMissing, {}},
      {"remove absent", RemoveFile(absent), FileErrorKind::kMissing, {}},
      {"remove full folder", RemoveFolder(folder.Path()), FileErrorKind::kNotEmpty, {}},
      {"list absent", ListFolder(absent, names), FileErrorKind::kMissing, {}},
      {"make folder over file", MakeFolders(file), FileErrorKind::kExists, {}},
      {"make folder below file", MakeFolders(below), FileErrorKind::kExists,
       FileErrorKind::kNotFolder},
      {"make no folder", MakeFolders(u""), FileErrorKind::kMissing, {}},
  };
  for (const auto& c : cases) {
    const FileErrorKind kind = KindOf(c.error);
    const bool isExpected = kind == c.expected || (c.orElse != FileErrorKind() && kind == c.orElse);
    EXPECT_TRUE(isExpected) << c.what << ": " << static_cast<int>(kind) << ", code "
                            << c.error.code;
  }
  EXPECT_EQ(content, "");
  EXPECT_EQ(ContentOf(file), "content");
  EXPECT_EQ(folder.Count(), 1u);
}

// A disk that gives little at a time, tells no size or a wrong one, and breaks after a while.
class OddDisk : public internal::FileCalls {
 public:
  FileError Query(const CStringW& path, FileInfo& info) override {
    const FileError error = FileCalls::Query(path, info);
    info.size = toldSize;
    return error;
  }
  FileError Read(internal::FileHandle file, char* buffer, std::size_t size,
                 std::size_t& got) override {
    if (readsLeft-- == 0) return ErrorOf(FileErrorKind::kDevice);
    return FileCalls::Read(file, buffer, std::min<std::size_t>(size, 7001), got);
  }
  std::uint64_t toldSize = 0;
  int readsLeft = -1;
};

TEST(ReadWholeFile, ReadsToTheEndWhateverTheSizeSaid) {
  const ScratchFolder folder;
  const CStringW path = folder / u"file";
  std::string content;
  for (const std::size_t size :
       std::initializer_list<std::size_t>{0, 1, 4095, 4096, 4097, 100000}) {
    const std::string written(size, 'x');
    ASSERT_FALSE(WriteFileDurably(path, written));
    for (const std::size_t told : {std::size_t{0}, size, size / 2, size * 2}) {
      SCOPED_TRACE(testing::Message() << size << " told as " << told);
      OddDisk disk;
      disk.toldSize = told;
      const internal::FileCallsForTest odd(disk);
      EXPECT_FALSE(ReadWholeFile(path, content));
      EXPECT_EQ(content, written);
      disk.toldSize = 0;
      EXPECT_FALSE(ReadWholeFile(path, content, size));
      if (size != 0) {
        EXPECT_EQ(KindOf(ReadWholeFile(path, content, size - 1)), FileErrorKind::kTooLarge);
      }
      disk.toldSize = ~std::uint64_t{0};
      EXPECT_EQ(KindOf(ReadWholeFile(path, content)), FileErrorKind::kTooLarge);
      disk.toldSize = size;
      disk.readsLeft = static_cast<int>(size / 7001);
      content = "from before";
      EXPECT_EQ(KindOf(ReadWholeFile(path, content)), FileErrorKind::kDevice);
      EXPECT_EQ(content, "");
    }
  }
}

TEST(Files, AreCopiedRenamedDatedAndProtected) {
  const ScratchFolder folder;
  const CStringW a = folder / u"a";
  const CStringW b = folder / u"b";
  const std::string large(700000, 'a');
  ASSERT_FALSE(WriteFileDurably(a, large));
  ASSERT_FALSE(WriteFileDurably(b, "b"));
  EXPECT_FALSE(DuplicateFile(a, b));
  EXPECT_EQ(ContentOf(b), large);
  EXPECT_FALSE(DuplicateFile(a, a));
  EXPECT_EQ(ContentOf(a), large);
  ASSERT_FALSE(WriteFileDurably(a, "a"));
  EXPECT_FALSE(RenameFile(a, b));
  EXPECT_EQ(ContentOf(a) + ContentOf(b), "(missing)a");

  FileInfo info;
  const CTime then(std::chrono::seconds(1234567890));
  EXPECT_FALSE(SetFileModified(b, then));
  EXPECT_FALSE(QueryFile(b, info));
  EXPECT_EQ(info.modified, then);
  EXPECT_EQ(info.size, 1u);
  EXPECT_TRUE(info.isRegular && !info.isFolder);

  // Durable writing refuses what opening the file for writing would refuse.
  ASSERT_FALSE(SetFileReadOnly(b, true));
  AppendStream stream;
  const FileError refused = stream.Open(b, true);
  stream.Close();
  EXPECT_EQ(WriteFileDurably(b, "c"), refused);
  EXPECT_EQ(ContentOf(b), refused ? "a" : "c");
  ASSERT_FALSE(SetFileReadOnly(b, false));
  EXPECT_FALSE(WriteFileDurably(b, "d"));
  EXPECT_EQ(ContentOf(b), "d");
}

TEST(AppendStream, AppendsOrTruncatesAndCanBeReadMeanwhile) {
  const ScratchFolder folder;
  const CStringW path = folder / u"log";
  AppendStream stream;
  const struct {
    bool append;
    std::string_view text, expected;
  } cases[] = {{true, "one", "one"},
               {true, "two", "onetwo"},
               {false, "three", "three"},
               {true, "", "three"}};
  for (const auto& c : cases) {
    ASSERT_FALSE(stream.Open(path, c.append));
    EXPECT_FALSE(stream.Write(c.text));
    EXPECT_EQ(ContentOf(path), c.expected);
    EXPECT_FALSE(stream.Close());
    EXPECT_FALSE(stream.IsOpen());
  }
}

TEST(Folders, ThatTheSystemNamesExistAndEndInASeparator) {
  for (const CStringW& folder :
       {TemporaryFolder(), HomeFolder(), CurrentFolder(), ProgramFolder()}) {
    EXPECT_TRUE(IsFolder(folder)) << PathToUtf8(folder);
    EXPECT_EQ(NameOfPath(folder), u"");
  }
  EXPECT_NE(UserDataFolder(UserFolder::kSettings), UserDataFolder(UserFolder::kData));
}

TEST(FileErrors, HaveAKindAndOneLineInEveryLanguageAndCodePage) {
  for (int i = 1; i <= static_cast<int>(FileErrorKind::kOther); ++i) {
    const auto kind = static_cast<FileErrorKind>(i);
    EXPECT_EQ(KindOf(ErrorOf(kind)), kind) << i;
    for (const MessageLanguage language : {MessageLanguage::kEnglish, MessageLanguage::kJapanese}) {
      SetMessageLanguage(language);
      for (const unsigned codePage : {1252u, 20127u, 932u}) {
        ASSERT_TRUE(SetCurrentCodePage(codePage));
        const CStringA text = SystemErrorText(ErrorOf(kind));
        SCOPED_TRACE(text);
        EXPECT_FALSE(text.empty());
        EXPECT_EQ(text.find_first_of("\r\n"), CStringA::npos);
        const bool isAscii = std::all_of(text.begin(), text.end(), [](char c) { return c > 0; });
        // kOther has no text of ours, and the system's may be English only.
        if (kind == FileErrorKind::kOther) continue;
        EXPECT_EQ(isAscii, language == MessageLanguage::kEnglish || codePage != 932);
      }
    }
  }
  EXPECT_NE(SystemErrorText({987654}).find("987654"), CStringA::npos);
  EXPECT_EQ(SystemErrorText({}), "");
}

}  // namespace
}  // namespace lumr
