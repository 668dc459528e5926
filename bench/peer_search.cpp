// Peers of the searches, of detection and of appending.
#include <cstring>
#include <memory>
#include <stdexcept>

#include "peers.h"

#ifdef LUMRMISC_BENCH_UCHARDET
#include <uchardet.h>
#endif
#ifdef LUMRMISC_BENCH_ONIGURUMA
#include <oniguruma.h>
#endif

namespace lumr::bench {

Contender Memmem(std::string_view word) {
  return {"memmem", [word = std::string(word)](std::string_view) -> Operation {
            return [word,
                    position = std::string()](std::string_view input) mutable -> std::string_view {
              const void* const found =
                  memmem(input.data(), input.size(), word.data(), word.size());
              position = std::to_string(
                  found == nullptr ? -1 : static_cast<const char*>(found) - input.data());
              return position;
            };
          }};
}

Contender StringViewFind(std::string_view word) {
  return {"string_view::find", [word = std::string(word)](std::string_view) -> Operation {
            return [word,
                    position = std::string()](std::string_view input) mutable -> std::string_view {
              const std::size_t found = input.find(word);
              position = std::to_string(
                  found == std::string_view::npos ? -1 : static_cast<std::ptrdiff_t>(found));
              return position;
            };
          }};
}

Contender StringPushBack() {
  return {"string::push_back", [](std::string_view) -> Operation {
            return [out = std::string()](std::string_view input) mutable -> std::string_view {
              out = std::string();
              for (const char byte : input) out.push_back(byte);
              return out;
            };
          }};
}

#ifdef LUMRMISC_BENCH_UCHARDET

Contender Uchardet() {
  return {"uchardet", [](std::string_view) -> Operation {
            return [detector = std::shared_ptr<struct uchardet>(uchardet_new(), &uchardet_delete)](
                       std::string_view input) -> std::string_view {
              uchardet_reset(detector.get());
              uchardet_handle_data(detector.get(), input.data(), input.size());
              uchardet_data_end(detector.get());
              return uchardet_get_charset(detector.get());
            };
          }};
}

std::string UchardetVersion() {
  return "uchardet " LUMRMISC_BENCH_UCHARDET;
}

#else
Contender Uchardet() {
  return NotBuilt("uchardet");
}
std::string UchardetVersion() {
  return {};
}
#endif

#ifdef LUMRMISC_BENCH_ONIGURUMA

namespace {

const OnigUChar* OnigBytes(std::string_view text) {
  return reinterpret_cast<const OnigUChar*>(text.data());
}

std::shared_ptr<re_pattern_buffer> CompileWord(std::string_view word) {
  OnigEncoding encodings[] = {ONIG_ENCODING_SJIS};
  onig_initialize(encodings, 1);
  regex_t* program = nullptr;
  OnigErrorInfo info;
  if (onig_new(&program, OnigBytes(word), OnigBytes(word) + word.size(), ONIG_OPTION_NONE,
               ONIG_ENCODING_SJIS, ONIG_SYNTAX_ASIS, &info) != ONIG_NORMAL) {
    throw std::runtime_error("Oniguruma does not take the word");
  }
  return {program, &onig_free};
}

}  // namespace

Contender Oniguruma(std::string_view word) {
  return {"Oniguruma", [word = std::string(word)](std::string_view) -> Operation {
            return [program = CompileWord(word),
                    position = std::string()](std::string_view input) mutable -> std::string_view {
              const OnigUChar* const begin = OnigBytes(input);
              const OnigUChar* const end = begin + input.size();
              position = std::to_string(
                  onig_search(program.get(), begin, end, begin, end, nullptr, ONIG_OPTION_NONE));
              return position;
            };
          }};
}

std::string OnigurumaVersion() {
  return std::string("Oniguruma ") + onig_version();
}

#else
Contender Oniguruma(std::string_view) {
  return NotBuilt("Oniguruma");
}
std::string OnigurumaVersion() {
  return {};
}
#endif

}  // namespace lumr::bench
