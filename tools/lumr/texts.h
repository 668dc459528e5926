// What the tool says, in Japanese and in English.
//
// The language is the one that the library's messages are handed out in (SetMessageLanguage).
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace lumr::tool {

enum class Say {
  // Help.
  kAbout,
  kNoMailFooter,
  kUsage,
  kOption,
  kOptions,
  kCommands,
  kCommand,
  kArguments,
  kExamples,
  kShowExamples,
  kDetectExamples,
  kConvertExamples,
  kEncodeExamples,
  kDecodeExamples,
  kCharsetsExamples,
  kOptHelp,
  kOptVersion,
  kOptJson,
  kOptLang,
  kShowHelp,
  kShowMail,
  kDetectHelp,
  kDetectFile,
  kConvertHelp,
  kConvertFrom,
  kConvertTo,
  kConvertInPlace,
  kConvertReport,
  kConvertStrict,
  kConvertFile,
  kEncodeHelp,
  kEncodeKind,
  kEncodeFile,
  kEncodeWrap,
  kEncodeBinary,
  kEncodeAll,
  kEncodeName,
  kDecodeHelp,
  kDecodeKind,
  kDecodeFile,
  kCharsetsHelp,

  // Why a file cannot be read or written.
  kReasonMissing,
  kReasonFolder,
  kReasonDenied,
  kReasonFull,
  kReasonTooLarge,
  kReasonName,

  // Problems. {0} is the file where one is named.
  kCannotRead,
  kCannotWrite,
  kStandardOutput,
  kEmptyFile,
  kOutOfMemory,
  kUnknownCharset,
  kUnknownTarget,
  kUnknownLanguage,
  kUsageError,
  kTryHelp,
  kStdinInPlace,
  kNoMailCommands,
  kBinHexDecodeOnly,
  kUnknownEncoding,
  kMalformedInput,
  kBadTextInput,

  // convert
  kLostCharacters,
  kFittedCharacters,
  kNotWritten,
  kNotDetected,
  kDetectedAs,
  kReportReplaced,
  kReportFit,
  kReportMore,
  kReportExact,

  // detect
  kRuleEmpty,
  kRulePlainAscii,
  kRuleEscape,
  kRuleUtf8,
  kRuleUtf16BigEndian,
  kRuleUtf16,
  kRuleEucByte,
  kRuleSJisByte,
  kRuleAmbiguous,
  kRuleNothingTelling,
  kAtByte,

  // charsets
  kHeadNumber,
  kHeadName,
  kHeadAliases,
  kHeadCodePage,
  kHeadDisplayName,

  // show
  kNoMessages,
  kNotMail,
  kPartNote,
  kNoLabel,
  kUnknownLabel,
  kLabelLies,
  kReplacedInPart,
  kMalformedTransfer,
  kUnknownTransfer,
  kNotBase64,
  kHtmlSource,
  kPartSkipped,
  kTooDeep,
  kNoContent,
  kTruncated,
  kNoParts,
  kBoundaryGuessed,
  kAttachedMessage,
  kAttachments,
  kAttachmentSize,
  kUnnamed,

  kCount
};

// The text of a row with {0}, {1}, ... replaced by the arguments. UTF-8.
std::string Text(Say row, std::initializer_list<std::string_view> arguments = {});

// Chooses the language: wanted ("ja", "en"; empty: the user's, by LC_ALL, LC_MESSAGES and LANG,
// where ja means Japanese and all else English). False when wanted is no language of ours.
bool ChooseLanguage(std::string_view wanted);

}  // namespace lumr::tool
