// Link finders: what the slow rules say, inside the text and on the borders of its characters; a
// text that grows has the links of the whole; whatever is found, all of it takes linear time.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/transfer_properties.h"
#include "lumrmisc/mailtext/links.h"
#include "tests/mailtext/link_model.h"

namespace {

using namespace lumr;

constexpr CodeType kCodeTypes[] = {CT_SJIS, CT_GB2312, CT_KSC5601, CT_BIG5, CT_WIN1252, CT_UTF8};

void CheckFirst(std::string_view text, CodeType codeType, const linkmodel::Model& model) {
  std::size_t start = 0;
  std::size_t end = 0;
  LinkRange wanted{-1, 0, kLinkUrl};
  if (model.FindUrl(0, start, end)) wanted = model.Range(start, end, kLinkUrl);
  LinkRange found;
  found.start = FindUrlA(text.data(), static_cast<int>(text.size()), codeType, found.length);
  Require(found == wanted);
}

// Repeated calls move on, stay inside and end.
void CheckCalls(std::string_view text, CodeType codeType) {
  while (!text.empty()) {
    int length = 0;
    const int start = FindUrlA(text.data(), static_cast<int>(text.size()), codeType, length);
    if (start < 0) return;
    Require(length > 0 && static_cast<std::size_t>(start + length) <= text.size());
    Require(!IsCodeTypeUnicode(codeType) || (start % 2 == 0 && length % 2 == 0));
    text.remove_prefix(static_cast<std::size_t>(start + length));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const CodeType codeType = kCodeTypes[data[0] % std::size(kCodeTypes)];
  const std::size_t cut = data[1];
  const TightCopy input({reinterpret_cast<const char*>(data) + 2, size - 2});
  const std::string_view text = input;
  const linkmodel::Model model(text, codeType);
  CheckFirst(text, codeType, model);
  CheckCalls(text, codeType);
  std::vector<LinkRange> links;
  LinkFinder finder(codeType);
  finder.FindAll(text, links);
  if (size < 512) Require(links == model.FindAll());

  // Behind this many characters a finder keeps its place.
  const std::string longer = std::string(4200, '.') + std::string(text);
  std::vector<LinkRange> whole;
  LinkFinder(codeType).FindAll(longer, whole);
  finder.FindAll(std::string_view(longer).substr(0, 4200), links);
  for (std::size_t end = 4200; end < longer.size();) {
    end = std::min(longer.size(), end + 2 * (cut + 1));
    finder.FindMore(std::string_view(longer).substr(0, end), links);
  }
  Require(links == whole);
  return 0;
}
