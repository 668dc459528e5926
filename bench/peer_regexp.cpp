// Peers of the regular expressions: all matches of a text, their number in decimal.
#include <memory>
#include <stdexcept>

#include "lumrmisc/charset/convert.h"
#include "peers.h"

#ifdef LUMRMISC_BENCH_ONIGURUMA
#include <oniguruma.h>
#endif
#ifdef LUMRMISC_BENCH_PCRE2
#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>
#endif

namespace lumr::bench {

#ifdef LUMRMISC_BENCH_ONIGURUMA

namespace {

const OnigUChar* Bytes(std::string_view text) {
  return reinterpret_cast<const OnigUChar*>(text.data());
}

struct OnigProgram {
  OnigProgram(std::string_view utf8, const std::string& charset) {
    const OnigEncoding encoding = charset == "CP932" ? ONIG_ENCODING_SJIS : ONIG_ENCODING_UTF16_LE;
    OnigEncoding encodings[] = {encoding};
    onig_initialize(encodings, 1);
    const std::string pattern = EncodeText(utf8, charset);
    OnigErrorInfo info;
    if (onig_new(&program, Bytes(pattern), Bytes(pattern) + pattern.size(), ONIG_OPTION_NONE,
                 encoding, ONIG_SYNTAX_PERL, &info) != ONIG_NORMAL) {
      throw std::runtime_error("Oniguruma does not take the pattern");
    }
  }
  ~OnigProgram() {
    onig_region_free(region, 1);
    onig_free(program);
  }
  OnigProgram(const OnigProgram&) = delete;
  OnigProgram& operator=(const OnigProgram&) = delete;

  regex_t* program = nullptr;
  OnigRegion* region = onig_region_new();
};

std::size_t CountMatches(const OnigProgram& on, std::string_view text) {
  const OnigUChar* const begin = Bytes(text);
  const OnigUChar* const end = begin + text.size();
  std::size_t count = 0;
  for (const OnigUChar* from = begin; from < end; from = begin + on.region->end[0]) {
    const int at = onig_search(on.program, begin, end, from, end, on.region, ONIG_OPTION_NONE);
    if (at < 0) break;
    ++count;
  }
  return count;
}

}  // namespace

Contender OnigurumaAll(const std::string& utf8, const std::string& charset) {
  return {"Oniguruma", [utf8, charset](std::string_view) -> Operation {
            return [program = std::make_shared<OnigProgram>(utf8, charset),
                    count = std::string()](std::string_view input) mutable -> std::string_view {
              return count = std::to_string(CountMatches(*program, input));
            };
          }};
}

#else
Contender OnigurumaAll(const std::string&, const std::string&) {
  return NotBuilt("Oniguruma");
}
#endif

#ifdef LUMRMISC_BENCH_PCRE2

namespace {

struct PcreProgram {
  PcreProgram(std::string_view utf8, bool jit) {
    const std::string pattern = EncodeText(utf8, "UTF-16LE");
    int error = 0;
    PCRE2_SIZE where = 0;
    code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern.data()), pattern.size() / 2, 0,
                         &error, &where, nullptr);
    if (code == nullptr) throw std::runtime_error("PCRE2 does not take the pattern");
    if (jit && pcre2_jit_compile(code, PCRE2_JIT_COMPLETE) != 0) {
      throw std::runtime_error("PCRE2 has no JIT here");
    }
    data = pcre2_match_data_create_from_pattern(code, nullptr);
    options = jit ? 0 : PCRE2_NO_JIT;
  }
  ~PcreProgram() {
    pcre2_match_data_free(data);
    pcre2_code_free(code);
  }
  PcreProgram(const PcreProgram&) = delete;
  PcreProgram& operator=(const PcreProgram&) = delete;

  pcre2_code* code = nullptr;
  pcre2_match_data* data = nullptr;
  std::uint32_t options = 0;
  std::u16string text;  // the input in UTF-16, which is read in place of it
};

std::size_t CountMatches(const PcreProgram& pcre) {
  const auto* const text = reinterpret_cast<PCRE2_SPTR>(pcre.text.data());
  const PCRE2_SIZE* const ends = pcre2_get_ovector_pointer(pcre.data);
  std::size_t count = 0;
  for (PCRE2_SIZE from = 0; from < pcre.text.size(); from = ends[1]) {
    if (pcre2_match(pcre.code, text, pcre.text.size(), from, pcre.options, pcre.data, nullptr) <
        0) {
      break;
    }
    ++count;
  }
  return count;
}

}  // namespace

Contender Pcre2All(const std::string& utf8, const std::string& charset, bool jit) {
  return {jit ? "PCRE2-16 JIT" : "PCRE2-16 interpreter",
          [utf8, charset, jit](std::string_view input) -> Operation {
            auto program = std::make_shared<PcreProgram>(utf8, jit);
            CBuffer units;
            ConvertToOtherCodeType2(charset == "CP932" ? CT_SJIS : CT_UNICODE, input, CT_UNICODE,
                                    units);
            program->text = units.Units();
            return [program, count = std::string()](std::string_view) mutable -> std::string_view {
              return count = std::to_string(CountMatches(*program));
            };
          }};
}

std::string Pcre2Version() {
  return "PCRE2 " LUMRMISC_BENCH_PCRE2;
}

#else
Contender Pcre2All(const std::string&, const std::string&, bool jit) {
  return NotBuilt(jit ? "PCRE2-16 JIT" : "PCRE2-16 interpreter");
}
std::string Pcre2Version() {
  return {};
}
#endif

}  // namespace lumr::bench
