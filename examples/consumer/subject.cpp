// Prints the text of a raw header value as UTF-8: subject '=?ISO-2022-JP?B?GyRCJDMkcxsoQg==?='
#include <cstdio>

#include "lumrmisc/lumrmisc.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: subject HEADER-VALUE\n", stderr);
    return 2;
  }
  const lumr::CStringW subject = lumr::DecodeHeaderValue(argv[1]);
  const lumr::CBuffer utf16(subject);
  lumr::CBuffer utf8;
  lumr::ConvertToOtherCodeType2(lumr::CT_UNICODE, utf16, utf16.GetLength(), lumr::CT_UTF8, utf8, 0);
  std::puts(utf8);
}
