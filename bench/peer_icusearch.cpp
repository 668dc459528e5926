// ICU's two ways to find a word whatever its case, width and kind of kana.
#include "peers.h"

#ifdef LUMRMISC_BENCH_ICUI18N

#include <unicode/ucnv.h>
#include <unicode/unorm2.h>
#include <unicode/usearch.h>
#include <unicode/ustring.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "peer_internal.h"

namespace lumr::bench {
namespace {

// The input as UTF-16; a charset other than that is converted first, at each call.
class Utf16Input {
 public:
  Utf16Input(const std::string& charset, std::size_t size) {
    if (charset == "UTF-16LE") return;
    UErrorCode error = U_ZERO_ERROR;
    converter_.reset(ucnv_open(charset.c_str(), &error), &ucnv_close);
    if (U_FAILURE(error)) throw std::runtime_error("ICU has no charset " + charset);
    room_ = MakeRoom<UChar>(size + 16);
  }
  std::u16string_view Of(std::string_view input) {
    if (!converter_) return {reinterpret_cast<const UChar*>(input.data()), input.size() / 2};
    UErrorCode error = U_ZERO_ERROR;
    const std::int32_t length =
        ucnv_toUChars(converter_.get(), room_.get(), static_cast<std::int32_t>(input.size() + 16),
                      input.data(), static_cast<std::int32_t>(input.size()), &error);
    return {room_.get(), static_cast<std::size_t>(length)};
  }

 private:
  std::shared_ptr<UConverter> converter_;
  std::shared_ptr<UChar[]> room_;
};

std::int32_t Count(std::u16string_view text) {
  return static_cast<std::int32_t>(text.size());
}

std::shared_ptr<UCollator> OpenCollator() {
  UErrorCode error = U_ZERO_ERROR;
  std::shared_ptr<UCollator> collator(ucol_open("ja", &error), &ucol_close);
  if (U_FAILURE(error)) throw std::runtime_error("ICU has no collator for Japanese");
  ucol_setStrength(collator.get(), UCOL_SECONDARY);
  return collator;
}

std::u16string NfkcFolded(std::u16string_view text) {
  UErrorCode error = U_ZERO_ERROR;
  const UNormalizer2* const normalizer = unorm2_getNFKCCasefoldInstance(&error);
  std::u16string out(text.size() * 4, u'\0');
  out.resize(static_cast<std::size_t>(
      unorm2_normalize(normalizer, text.data(), Count(text), out.data(), Count(out), &error)));
  return out;
}

}  // namespace

Contender IcuStringSearch(const std::string& charset, std::u16string_view word) {
  return {
      "ICU usearch", [charset, word = std::u16string(word)](std::string_view sample) -> Operation {
        return [utf16 = Utf16Input(charset, sample.size()), word, collator = OpenCollator(),
                result = std::string()](std::string_view input) mutable -> std::string_view {
          const std::u16string_view text = utf16.Of(input);
          UErrorCode error = U_ZERO_ERROR;
          UStringSearch* const search = usearch_openFromCollator(
              word.data(), Count(word), text.data(), Count(text), collator.get(), nullptr, &error);
          result = std::to_string(usearch_first(search, &error));
          usearch_close(search);
          return result;
        };
      }};
}

Contender IcuFoldAndFind(const std::string& charset, std::u16string_view word) {
  return {"ICU NFKC casefold, find",
          [charset, word = NfkcFolded(word)](std::string_view sample) -> Operation {
            return [utf16 = Utf16Input(charset, sample.size()), word,
                    room = MakeRoom<UChar>(2 * sample.size() + 16), size = 2 * sample.size() + 16,
                    result = std::string()](std::string_view input) mutable -> std::string_view {
              const std::u16string_view text = utf16.Of(input);
              UErrorCode error = U_ZERO_ERROR;
              const UNormalizer2* const normalizer = unorm2_getNFKCCasefoldInstance(&error);
              const std::int32_t length =
                  unorm2_normalize(normalizer, text.data(), Count(text), room.get(),
                                   static_cast<std::int32_t>(size), &error);
              const UChar* const found =
                  u_strFindFirst(room.get(), length, word.data(), Count(word));
              result = std::to_string(found == nullptr ? -1 : found - room.get());
              return result;
            };
          }};
}

}  // namespace lumr::bench

#else

namespace lumr::bench {
Contender IcuStringSearch(const std::string&, std::u16string_view) {
  return NotBuilt("ICU usearch");
}
Contender IcuFoldAndFind(const std::string&, std::u16string_view) {
  return NotBuilt("ICU NFKC casefold, find");
}
}  // namespace lumr::bench

#endif
