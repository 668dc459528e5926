// The text browsers w3m and lynx, as commands that print a page as text. They read UTF-8, which the
// input, UTF-16, is made before.
#include "command_internal.h"
#include "lumrmisc/charset/convert.h"
#include "peers.h"

namespace lumr::bench {
namespace {

std::string Converted(CodeType from, CodeType to, std::string_view text) {
  CBuffer out;
  ConvertToOtherCodeType2(from, text, to, out);
  return std::string(out.Bytes());
}

// The first result is made UTF-16 again, to be compared.
Contender Dump(const char* name, const std::string& program, std::vector<std::string> arguments) {
  if (program.empty()) return NotBuilt(name);
  Contender contender{name, [program, arguments](std::string_view input) -> Operation {
                        const std::string html = Converted(CT_UNICODE, CT_UTF8, input);
                        return [run = RunCommand(program, arguments, html),
                                out = std::string()](std::string_view text) mutable {
                          out = Converted(CT_UTF8, CT_UNICODE, run(text));
                          return std::string_view(out);
                        };
                      }};
  contender.isCommand = true;
  return contender;
}

}  // namespace

Contender W3mDump() {
  return Dump("w3m -dump", LUMRMISC_BENCH_W3M,
              {"-dump", "-T", "text/html", "-I", "UTF-8", "-O", "UTF-8", "-cols", "200"});
}

Contender LynxDump() {
  return Dump("lynx -dump", LUMRMISC_BENCH_LYNX,
              {"-dump", "-stdin", "-force_html", "-nolist", "-width=200", "-assume_charset=utf-8",
               "-display_charset=utf-8"});
}

}  // namespace lumr::bench
