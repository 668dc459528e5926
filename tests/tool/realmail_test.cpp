// lumr show on real mail, beside GMime with iconv and beside what other projects expect.
#include <gmime/gmime.h>
#include <gtest/gtest.h>
#include <iconv.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>

#include "lumrmisc/charset/mailcharset.h"
#include "tool/tool_runner.h"

namespace lumr::test {

namespace {

namespace fs = std::filesystem;

// Text with all white space of a run as one space, none at the ends: line ends and trailing
// spaces are not what these comparisons are about.
std::string Squeezed(std::string_view text) {
  std::string squeezed;
  for (const char c : text) {
    const bool isSpace = c == ' ' || c == '\n' || c == '\r' || c == '\t' || c == '\0';
    if (isSpace && (squeezed.empty() || squeezed.back() == ' ')) continue;
    squeezed += isSpace ? ' ' : c;
  }
  if (!squeezed.empty() && squeezed.back() == ' ') squeezed.pop_back();
  return squeezed;
}

// The folder with real mails.
class RealMail : public testing::Test {
 protected:
  void SetUp() override {
    const char* const corpus = std::getenv("LUMRMISC_CORPUS");
    if (corpus == nullptr) GTEST_SKIP() << "LUMRMISC_CORPUS names no folder of real mail";
    folder_ = fs::path(corpus) / "mail";
    for (const auto& entry : fs::directory_iterator(folder_)) {
      if (entry.path().extension() == ".eml") files_.push_back(entry.path().filename().string());
    }
    std::sort(files_.begin(), files_.end());
    ASSERT_FALSE(files_.empty());
  }

  // Every mail as JSON, by its file name.
  std::map<std::string, Json> ShowAll(const ToolRunner& tool) {
    std::map<std::string, Json> shown;
    const RunResult result = tool.Run("show --json \"" + folder_.string() + "\"");
    EXPECT_LE(result.status, 1);
    for (Json& mail : JsonLines(result.out)) {
      const std::string file = fs::path(mail.at("file").get<std::string>()).filename().string();
      shown[file] = std::move(mail);
    }
    return shown;
  }

  fs::path folder_;
  std::vector<std::string> files_;
};

}  // namespace

TEST_F(RealMail, ShowsWithoutACrashAndSafely) {
  const ToolRunner tool;
  for (const std::string& file : files_) {
    SCOPED_TRACE(file);
    const RunResult result = tool.Run("show \"" + (folder_ / file).string() + '"');
    EXPECT_TRUE(result.status == 0 || result.status == 1) << result.status;
    EXPECT_NE(result.out, "");
    EXPECT_EQ(UnsafeIn(result.out), "");
    EXPECT_EQ(UnsafeIn(result.err), "");
  }
}

// ---- Beside GMime and iconv

namespace {

// The charsets in which iconv reads what mail means by a code type.
const char* IconvName(CodeType codeType) {
  switch (codeType) {
    case CT_SJIS:
      return "CP932";
    case CT_EUC:
      return "EUC-JP-MS";
    case CT_KSC5601:
    case CT_EUCKR:
      return "CP949";
    case CT_GB2312:
      return "CP936";
    case CT_BIG5:
      return "CP950";
    case CT_UNICODE:
      return nullptr;  // the byte order needs more than a name
    default:
      return CharSetCode2Name(codeType);
  }
}

// Converts strictly; false when a byte cannot be converted.
bool IconvToUtf8(const char* name, std::string text, std::string& utf8) {
  const iconv_t converter = iconv_open("UTF-8", name);
  if (converter == reinterpret_cast<iconv_t>(-1)) return false;
  utf8.assign(text.size() * 4 + 16, '\0');
  char* in = text.data();
  char* out = utf8.data();
  std::size_t inLeft = text.size();
  std::size_t outLeft = utf8.size();
  const bool converted = iconv(converter, &in, &inLeft, &out, &outLeft) != std::size_t(-1) &&
                         iconv(converter, nullptr, nullptr, &out, &outLeft) != std::size_t(-1);
  iconv_close(converter);
  utf8.resize(utf8.size() - outLeft);
  return converted;
}

struct PeerText {
  std::string type;
  std::string label;
  std::string bytes;
};

// The text parts of a message, decoded by GMime, as far as it finds them.
void CollectTexts(GMimeObject* object, std::vector<PeerText>& texts) {
  if (GMIME_IS_MULTIPART(object)) {
    auto* const multipart = GMIME_MULTIPART(object);
    for (int i = 0; i < g_mime_multipart_get_count(multipart); ++i) {
      CollectTexts(g_mime_multipart_get_part(multipart, i), texts);
    }
  } else if (GMIME_IS_MESSAGE_PART(object)) {
    GMimeMessage* const message = g_mime_message_part_get_message(GMIME_MESSAGE_PART(object));
    if (message != nullptr) CollectTexts(g_mime_message_get_mime_part(message), texts);
  } else if (GMIME_IS_TEXT_PART(object)) {
    const char* const label = g_mime_object_get_content_type_parameter(object, "charset");
    GMimeDataWrapper* const content = g_mime_part_get_content(GMIME_PART(object));
    if (label == nullptr || content == nullptr) return;
    GMimeStream* const memory = g_mime_stream_mem_new();
    g_mime_data_wrapper_write_to_stream(content, memory);
    const GByteArray* const bytes = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(memory));
    char* const type = g_mime_content_type_get_mime_type(g_mime_object_get_content_type(object));
    texts.push_back({type, label, {reinterpret_cast<const char*>(bytes->data), bytes->len}});
    g_free(type);
    g_object_unref(memory);
  }
}

std::vector<PeerText> PeerTexts(const std::string& bytes) {
  static const bool initialised = (g_mime_init(), true);
  static_cast<void>(initialised);
  std::vector<PeerText> texts;
  GMimeStream* const stream = g_mime_stream_mem_new_with_buffer(bytes.data(), bytes.size());
  GMimeParser* const parser = g_mime_parser_new_with_stream(stream);
  GMimeMessage* const message = g_mime_parser_construct_message(parser, nullptr);
  if (message != nullptr) CollectTexts(g_mime_message_get_mime_part(message), texts);
  if (message != nullptr) g_object_unref(message);
  g_object_unref(parser);
  g_object_unref(stream);
  return texts;
}

}  // namespace

// Every text that is strictly in its charset, and that the tool shows, shows as iconv has it: so
// without U+FFFD too.
TEST_F(RealMail, ShowsTextsAsTheirLabelsSay) {
  const ToolRunner tool;
  const std::map<std::string, Json> shown = ShowAll(tool);
  int compared = 0;
  for (const std::string& file : files_) {
    SCOPED_TRACE(file);
    ASSERT_TRUE(shown.count(file));
    for (const PeerText& peer : PeerTexts(Contents(folder_ / file))) {
      SCOPED_TRACE(peer.label);
      const char* const name = IconvName(CodeTypeOfMailLabel(peer.label));
      std::string utf8;
      if (name == nullptr || !IconvToUtf8(name, peer.bytes, utf8)) continue;
      const std::string expected = Squeezed(utf8);
      const std::string_view begin = std::string_view(expected).substr(0, 8);
      bool isThere = false;
      std::string other;  // a text that begins as this one, which is this one read otherwise
      for (const Json& part : shown.at(file).at("parts")) {
        if (!part.contains("text") || part.at("type") != peer.type) continue;
        const std::string text = Squeezed(part.at("text").get<std::string>());
        isThere = isThere || text == expected;
        if (text.compare(0, begin.size(), begin) == 0 && begin.size() == 8) other = text;
      }
      compared += isThere;
      EXPECT_TRUE(isThere || other.empty()) << other << "\nis, as iconv reads it:\n" << expected;
    }
  }
  EXPECT_GT(compared, 150);
}

// ---- Beside what other projects expect

namespace {

// Where we read a message otherwise than its source project, and why.
struct Difference {
  const char* message;
  const char* field;
  const char* why;
};
constexpr Difference kDifferences[] = {
    {"imaptools-forwarded-message.eml", "attachments",
     "a message inside without a file name is listed by its subject"},
    {"stalwart-legacy-049.eml", "text",
     "uuencoded files are listed with the attachments and not shown as text"},
    {"mail-weird-to-header.eml", "to", "the first address of the field is empty, and shown so"},
};

bool IsDeliberate(const std::string& message, const std::string& field) {
  return std::any_of(std::begin(kDifferences), std::end(kDifferences), [&](const Difference& row) {
    return message == row.message && field == row.field;
  });
}

// All texts of one type, as the expectations hold them.
std::string JoinedText(const Json& mail, std::string_view type) {
  std::string joined;
  for (const Json& part : mail.at("parts")) {
    if (part.at("type") == type) joined += part.at("text").get<std::string>() + ' ';
  }
  return Squeezed(joined);
}

std::string JoinedAddresses(const Json& addresses) {
  std::string joined;
  for (const Json& address : addresses) {
    const std::string name = address.at("name");
    const std::string mailbox = address.at("email");
    if (!joined.empty()) joined += ',';
    joined += name.empty() || name == mailbox ? mailbox : name + " <" + mailbox + '>';
  }
  return Squeezed(joined);
}

// Addresses as they stand in a header, in that form: the tool does not take them apart.
std::string PlainAddresses(const std::string& header) {
  std::string plain;
  const std::string squeezed = Squeezed(header);
  for (std::size_t i = 0; i < squeezed.size(); ++i) {
    const bool isAfterComma = plain.empty() || plain.back() == ',';
    if (squeezed[i] == '"' || (isAfterComma && squeezed[i] == ' ')) continue;
    if (isAfterComma && squeezed[i] == '<') {
      const std::size_t end = squeezed.find('>', i);
      plain += squeezed.substr(i + 1, end - i - 1);
      i = end;
    } else {
      plain += squeezed[i];
    }
  }
  return plain;
}

// The form of expected.jsonl out of the other one, a tree of parts with their headers.
Json RowOfTree(const std::string& message, const Json& tree) {
  Json row = {{"message", message}, {"subject", ""}, {"text", ""}};
  for (const Json& header : tree.at("parts").at(0).at("headers")) {
    const Json& name = header.at("name");
    const Json& value = header.at("value");
    if (name == "subject") row["subject"] = value.at("Text");
    if (name != "from" && name != "to") continue;
    Json addresses = Json::array();
    for (const Json& address : value.at("Address").at("List")) {
      addresses.push_back({{"name", address.at("name")}, {"email", address.at("address")}});
    }
    row[name.get<std::string>()] = name == "from" ? addresses.at(0) : addresses;
  }
  for (const Json& index : tree.at("text_body")) {
    const Json& body = tree.at("parts").at(index.get<std::size_t>()).at("body");
    if (body.contains("Text")) row["text"] = body.at("Text");
  }
  return row;
}

std::string NamesOf(const Json& attachments, const char* key) {
  Json names = Json::array();
  for (const Json& attachment : attachments) names.push_back(attachment.at(key));
  return names.dump();
}

}  // namespace

TEST_F(RealMail, ShowsWhatItsSourceProjectsExpect) {
  const ToolRunner tool;
  const std::map<std::string, Json> shown = ShowAll(tool);
  std::vector<Json> rows = JsonLines(Contents(folder_ / "expected.jsonl"));
  for (const std::string& file : files_) {
    const fs::path tree = folder_ / (file.substr(0, file.size() - 4) + ".expected.json");
    if (fs::exists(tree)) rows.push_back(RowOfTree(file, Json::parse(Contents(tree))));
  }
  for (const Json& row : rows) {
    const std::string message = row.at("message");
    SCOPED_TRACE(message);
    ASSERT_TRUE(shown.count(message));
    const Json& mail = shown.at(message);
    struct Field {
      const char* name;
      std::string ours, theirs;
    };
    std::vector<Field> fields = {
        {"subject", mail.at("subject"), Squeezed(row.at("subject").get<std::string>())},
        {"from", PlainAddresses(mail.at("from")), JoinedAddresses(Json::array({row.at("from")}))},
        {"to", PlainAddresses(mail.at("to")), JoinedAddresses(row.at("to"))},
        {"text", JoinedText(mail, "text/plain"), Squeezed(row.at("text").get<std::string>())},
    };
    if (row.contains("attachments")) {
      fields.push_back({"attachments", NamesOf(mail.at("attachments"), "name"),
                        NamesOf(row.at("attachments"), "filename")});
    }
    for (const Field& field : fields) {
      SCOPED_TRACE(field.name);
      EXPECT_EQ(field.ours != field.theirs, IsDeliberate(message, field.name))
          << field.ours << "\nwhere is expected:\n"
          << field.theirs;
    }
  }
}

}  // namespace lumr::test
