// The Date headers of real mail, as GMime reads them.
#include <gmime/gmime.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "lumrmisc/mailtext/date.h"
#include "mailtext/corpus.h"

namespace lumr {
namespace {

std::string Peer(const std::string& text) {
  GDateTime* const date = g_mime_utils_header_decode_date(text.c_str());
  if (date == nullptr) return "none";
  const CTime time{std::chrono::seconds(g_date_time_to_unix(date))};
  const auto zone = static_cast<int>(g_date_time_get_utc_offset(date) / 60'000'000);
  g_date_time_unref(date);
  return FormatMailDate(time, zone);
}

std::string Ours(const std::string& text) {
  MailDate date;
  return ParseMailDate(text, date) == 0 ? "none" : FormatMailDate(date.time, date.zoneMinutes);
}

// The values of all Date headers in a message, those of attached messages too.
std::vector<std::string> DatesIn(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<std::string> dates;
  bool isDate = false;
  for (std::string line; std::getline(file, line);) {
    if (line.ends_with('\r')) line.pop_back();
    const bool isFold = line.starts_with(' ') || line.starts_with('\t');
    if (isDate && isFold) dates.back() += "\r\n" + line;
    isDate = (isDate && isFold) || line.starts_with("Date:");
    if (line.starts_with("Date:")) dates.push_back(line.substr(5));
  }
  return dates;
}

TEST(ParseMailDate, ReadsRealMailAsGmimeDoes) {
  LUMR_NEEDS_CORPUS();
  const std::map<std::string, std::string> differences = {
      // GMime takes the whole time for lost.
      {" Tue, 17 Jul 2012 22:23:35.882 0000", "Tue, 17 Jul 2012 22:23:35 +0000"},
      // It knows the zones of North America only.
      {" Sat, 06 Jul 2013 23:34:45 JST", "Sat, 06 Jul 2013 23:34:45 +0900"},
      // And no offset without the zero.
      {" Mon, 21 Aug 95 13:30:57 -600", "Mon, 21 Aug 1995 13:30:57 -0600"},
  };
  g_mime_init();
  int count = 0;
  const std::filesystem::path corpus = std::getenv("LUMRMISC_CORPUS");
  for (const auto& entry : std::filesystem::directory_iterator(corpus / "mail")) {
    if (entry.path().extension() != ".eml") continue;
    for (const std::string& text : DatesIn(entry.path())) {
      const auto difference = differences.find(text);
      EXPECT_EQ(Ours(text), difference == differences.end() ? Peer(text) : difference->second)
          << entry.path().filename() << ": " << text << " GMime: " << Peer(text);
      ++count;
    }
  }
  EXPECT_GT(count, 200);
}

}  // namespace
}  // namespace lumr
