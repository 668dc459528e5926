#include "lumrmisc/charset/convert.h"

#include "lumrmisc/charset/detect.h"
#include "lumrmisc/charset/transcoder_internal.h"

namespace lumr {

namespace {

// Appends the conversion of text to out. makePipeline(dropZero) gives a new pipeline.
//
// Whether the zero bytes have to go is known only after all of the text, and Japanese byte forms
// are made from what is left: so where they have to, the text is converted a second time.
template <typename MakePipeline>
long Run(MakePipeline makePipeline, std::string_view text, CBuffer& out, int emptyFallback,
         CConversionReport* report) {
  const int length = out.GetLength();
  ConversionPipeline pipeline = makePipeline(false);
  const bool mayDropZero = emptyFallback != 0;
  pipeline.Convert(text, true, out, mayDropZero ? nullptr : report);
  if (!mayDropZero) return pipeline.Status();

  const bool dropZero = pipeline.IsEncodingInexact() &&
                        out.Bytes().find('\0', static_cast<std::size_t>(length)) != text.npos;
  if (dropZero || report != nullptr) {
    out.ReleaseBuffer(length);
    makePipeline(dropZero).Convert(text, true, out, report);
  }
  return pipeline.Status();
}

bool IsJapaneseForm(CodeType codeType) {
  return codeType == CT_JIS || codeType == CT_EUC;
}

}  // namespace

long ConvertToOtherCodeType2(CodeType from, std::string_view text, CodeType to, CBuffer& out,
                             int emptyFallback, CConversionReport* report) {
  out.Empty();
  if (text.empty()) return 0;
  long status = 0;
  if (emptyFallback == 0 && report == nullptr && !IsJapaneseForm(from) && !IsJapaneseForm(to) &&
      ConvertInOneStage(CharSetCode2CodePage(from), CharSetCode2CodePage(to), text, out, status)) {
    return status;
  }
  const auto makePipeline = [=](bool dropZero) {
    return ConversionPipeline::OfCodeTypes(from, to, emptyFallback, dropZero);
  };
  return Run(makePipeline, text, out, emptyFallback, report);
}

long ConvertToOtherCodeType2(CodeType from, const char* src, int len, CodeType to, CBuffer& out,
                             int emptyFallback, CConversionReport* report) {
  return ConvertToOtherCodeType2(from, TextOf(src, len), to, out, emptyFallback, report);
}

long ConvertToOtherCodePage2(unsigned cpFrom, std::string_view text, unsigned cpTo, CBuffer& out,
                             int emptyFallback, CConversionReport* report) {
  const bool appends = cpTo == kUtf16CodePage && cpFrom != cpTo;
  if (!appends || text.empty()) out.Empty();
  if (text.empty()) return 0;
  const auto makePipeline = [=](bool dropZero) {
    return ConversionPipeline::OfCodePages(cpFrom, cpTo, emptyFallback, dropZero);
  };
  const int length = out.GetLength();
  long status = 0;
  if (emptyFallback != 0 || report != nullptr ||
      !ConvertInOneStage(cpFrom, cpTo, text, out, status)) {
    status = Run(makePipeline, text, out, emptyFallback, report);
  }
  if (out.GetLength() == length) out.Empty();  // a text of nothing but a byte-order mark
  return status;
}

long ConvertToOtherCodePage2(unsigned cpFrom, const char* src, int len, unsigned cpTo, CBuffer& out,
                             int emptyFallback, CConversionReport* report) {
  return ConvertToOtherCodePage2(cpFrom, TextOf(src, len), cpTo, out, emptyFallback, report);
}

long ConvertToWcs(CodeType ct, const char* src, int len, CBuffer& out) {
  const unsigned codePage = CharSetCode2CodePage(ct);
  out.Empty();
  return ConvertToOtherCodePage2(codePage != 0 ? codePage : kUtf16CodePage, src, len,
                                 kUtf16CodePage, out, 0);
}

CStringW ConvertToWcs(CodeType ct, const char* src, int len) {
  CBuffer out;
  ConvertToWcs(ct, src, len, out);
  return CStringW(out.Units());
}

int ConvertToEditable(CodeType ct, const char* src, int len, CBuffer& out) {
  out.Empty();
  if (ct == CT_UNKNOWN) return 0;
  return ConvertToOtherCodeType2(ct, src, len, CodeTypeSave2Edit(ct), out, 0) >= 0;
}

int ConvertToEditableMbs(CodeType& ct, const char* src, int len, CBuffer& out, int emptyFallback) {
  CBuffer edited;
  const int converted = ConvertToEditable(ct, src, len, edited);
  ct = CodeTypeSave2Edit(ct);
  ConvertToMbsIfWcs(ct, edited.GetBuffer(), edited.GetLength(), out, emptyFallback);
  return converted;
}

int ConvertToEditableMbs(CodeType& ct, const char* src, int len, CStringA& out, int emptyFallback) {
  CBuffer converted;
  const int result = ConvertToEditableMbs(ct, src, len, converted, emptyFallback);
  out = converted.Bytes();
  return result;
}

long ConvertToMbsIfWcs(CodeType& ct, const char* src, int len, CBuffer& out, int emptyFallback) {
  const std::string_view text = TextOf(src, len);
  if (!IsCodeTypeUnicode(ct)) {
    out = text;
    return 0;
  }
  ct = DetectUnicodeCodeType(text, CT_SJIS);
  return ConvertToOtherCodePage2(kUtf16CodePage, text, CharSetCode2CodePage(ct), out,
                                 emptyFallback);
}

long ConvertToMbsIfWcs(CodeType& ct, const char* src, int len, CStringA& out, int emptyFallback) {
  CBuffer converted;
  const long status = ConvertToMbsIfWcs(ct, src, len, converted, emptyFallback);
  out = converted.Bytes();
  return status;
}

long ConvertSjisToCTEditable(const CBuffer& sjis, CodeType ct, CBuffer& out, int emptyFallback) {
  const std::string_view text = sjis.Bytes();
  if (IsCodeTypeUnicode(ct)) {
    return ConvertToOtherCodeType2(CT_SJIS, text, CT_UNICODE, out, emptyFallback);
  }
  if (CharSetCode2CodePage(ct) == kJapaneseCodePage) {
    out = text;
    return 0;
  }
  return ConvertToOtherCodeType2(CT_SJIS, text, CodeTypeSave2Edit(ct), out, emptyFallback);
}

long ConvertUnicodeToCTEditable(const CBuffer& utf16, CodeType ct, CBuffer& out,
                                int emptyFallback) {
  const std::string_view text = utf16.Bytes();
  if (IsCodeTypeUnicode(ct)) {
    out = text;
    return 0;
  }
  return ConvertToOtherCodeType2(CT_UNICODE, text, CodeTypeSave2Edit(ct), out, emptyFallback);
}

void UTF16BE2LE(const char* src, int len, CBuffer& out) {
  out.Empty();
  if (src == nullptr || len < 2) return;
  const int size = len & ~1;
  char* const to = out.GetBuffer(size);
  for (int i = 0; i < size; i += 2) {
    to[i] = src[i + 1];
    to[i + 1] = src[i];
  }
  out.ReleaseBuffer(size);
}

long AddDifferentCodeText(CodeType& curCt, CBuffer& cur, CodeType addCt, const CBuffer& add) {
  const CodeType common = GetPriorCodeType(curCt, addCt);
  ConvToPriorCodeType(curCt, common, cur);
  curCt = common;
  if (addCt == common) {
    cur += add;
    return 0;
  }
  CBuffer converted;
  ConvertToOtherCodeType2(CodeTypeSave2Edit(addCt), add.Bytes(), CodeTypeSave2Edit(common),
                          converted);
  cur += converted;
  return 0;
}

void ConvToPriorCodeType(CodeType from, CodeType to, CBuffer& text) {
  if (from == to || text.IsEmpty()) return;
  CBuffer converted;
  ConvertToOtherCodeType2(CodeTypeSave2Edit(from), text.Bytes(), CodeTypeSave2Edit(to), converted);
  text.MoveFrom(converted);
}

}  // namespace lumr
