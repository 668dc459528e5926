#include "texts.h"

#include <cstdlib>
#include <iterator>

#include "lumrmisc/platform/messages.h"

namespace lumr::tool {

namespace {

struct TextRow {
  Say row;
  const char* japanese;
  const char* english;
};

// In the order of the enumeration.
constexpr TextRow kTexts[] = {
    // Help.
    {Say::kAbout, "日本語のメールを読み、文字コードと転送符号化を変換します。",
     "Reads Japanese mail, and converts charsets and transfer encodings."},
    {Say::kNoMailFooter,
     "この lumr にはメールのコマンド（show, reply, check）が入っていません。GMime "
     "なしで作られています。",
     "The mail commands (show, reply, check) are missing in this build: it was made without "
     "GMime."},
    {Say::kUsage, "使い方", "Usage"},
    {Say::kOption, "オプション", "OPTION..."},
    {Say::kOptions, "オプション", "Options"},
    {Say::kCommands, "コマンド", "Commands"},
    {Say::kCommand, "コマンド", "COMMAND"},
    {Say::kArguments, "引数", "Arguments"},
    {Say::kExamples, "例", "Examples"},
    {Say::kShowExamples,
     "  lumr show mail.eml              1 通のメールを読む\n"
     "  lumr show ~/Maildir             メールディレクトリーの全メール\n"
     "  curl -s URL | lumr show -       標準入力から\n"
     "  lumr show --json Maildir | jq -r .subject\n",
     "  lumr show mail.eml              reads one message\n"
     "  lumr show ~/Maildir             all messages of a maildir\n"
     "  curl -s URL | lumr show -       from standard input\n"
     "  lumr show --json Maildir | jq -r .subject\n"},
    {Say::kDetectExamples,
     "  lumr detect *.txt               文字コードと、そう判断した理由\n"
     "  lumr detect --json - < a.txt\n",
     "  lumr detect *.txt               the charset of each, and why\n"
     "  lumr detect --json - < a.txt\n"},
    {Say::kConvertExamples,
     "  lumr convert -t utf-8 a.txt               変換元は自動判別\n"
     "  lumr convert -f euc-jp -t utf-8 < a > b   標準入力から標準出力へ\n"
     "  lumr convert -t utf-8 --in-place --strict *.txt\n"
     "                                            失う文字のないファイルだけを書き換える\n",
     "  lumr convert -t utf-8 a.txt               the source is detected\n"
     "  lumr convert -f euc-jp -t utf-8 < a > b   standard input to standard output\n"
     "  lumr convert -t utf-8 --in-place --strict *.txt\n"
     "                                            rewrites the files that lose nothing\n"},
    {Say::kEncodeExamples,
     "  lumr encode base64 photo.jpg\n"
     "  echo 受信箱 | lumr encode imap    IMAP のメールボックス名\n",
     "  lumr encode base64 photo.jpg\n"
     "  echo 受信箱 | lumr encode imap    mailbox names of IMAP\n"},
    {Say::kDecodeExamples,
     "  lumr decode base64 body.txt > photo.jpg\n"
     "  echo '&U9dP4Xux-' | lumr decode imap\n",
     "  lumr decode base64 body.txt > photo.jpg\n"
     "  echo '&U9dP4Xux-' | lumr decode imap\n"},
    {Say::kCharsetsExamples,
     "  lumr charsets\n"
     "  lumr charsets --json | jq -r '.names[0]'\n",
     "  lumr charsets\n"
     "  lumr charsets --json | jq -r '.names[0]'\n"},
    {Say::kLinksExamples,
     "  lumr links memo.txt\n"
     "  lumr links --json - < memo.txt | jq -r .text\n",
     "  lumr links memo.txt\n"
     "  lumr links --json - < memo.txt | jq -r .text\n"},
    {Say::kOptHelp, "この説明を表示して終わる", "Print this help and exit"},
    {Say::kOptVersion, "版を表示して終わる", "Print the version and exit"},
    {Say::kOptJson, "1 行に 1 つの JSON オブジェクトで出力する", "Print one JSON object a line"},
    {Say::kOptLang, "メッセージの言語: ja または en", "Language of messages: ja or en"},
    {Say::kShowHelp, "メールを読めるテキストにして表示する", "Print mail as readable text"},
    {Say::kShowMail, "メールのファイル、- （標準入力）、Maildir、フォルダー、mbox",
     "A mail file, - (standard input), a maildir, a folder of files, an mbox"},
    {Say::kDetectHelp, "文字コードを判別し、その理由を示す",
     "Detect the charset of files, and say why"},
    {Say::kDetectFile, "ファイル、または - （標準入力）", "A file, or - (standard input)"},
    {Say::kConvertHelp, "文字コードを変換する", "Convert text from one charset to another"},
    {Say::kConvertFrom,
     "変換元の文字コード（lumr charsets の名前か番号）。\n"
     "省くと自動判別し、ファイル全体を読み込む（2 GiB まで）",
     "Charset of the input, by name or number (see lumr charsets).\n"
     "Without it the charset is detected, for which the whole\n"
     "input is read into memory (up to 2 GiB)"},
    {Say::kConvertTo, "変換先の文字コード", "Charset of the result"},
    {Say::kConvertInPlace, "結果をファイルに書き戻す。書き終えるまで元の内容が残る",
     "Write the result back to the file, which keeps its old\n"
     "content until the new one is whole"},
    {Say::kConvertReport, "正確に変換できなかった文字を報告する",
     "Report what was not converted exactly"},
    {Say::kConvertStrict, "元に戻せない文字が 1 つでもあれば、何も書き出さない",
     "Write nothing for a file of which a single character would\n"
     "not convert back"},
    {Say::kConvertFile, "ファイル、または - （標準入力、既定）",
     "A file, or - (standard input, the default)"},
    {Say::kEncodeHelp, "メールの転送符号化で符号化する", "Encode bytes for mail"},
    {Say::kEncodeKind, "base64, qp, uu, hex, url, imap のどれか",
     "One of base64, qp, uu, hex, url, imap"},
    {Say::kEncodeFile, "ファイル、または - （標準入力、既定）",
     "A file, or - (standard input, the default)"},
    {Say::kEncodeWrap, "base64: 1 行の文字数。0 は改行なし（既定 76）",
     "base64: characters a line, 0 for one line (default 76)"},
    {Say::kEncodeBinary, "qp: 改行も符号化する", "qp: encode line breaks too"},
    {Say::kEncodeAll, "hex: 英数字も符号化する", "hex: encode letters and digits too"},
    {Say::kEncodeName, "uu: begin 行に書くファイル名", "uu: file name of the begin line"},
    {Say::kDecodeHelp, "メールの転送符号化を元に戻す", "Decode what was encoded for mail"},
    {Say::kDecodeKind, "base64, qp, uu, binhex, hex, url, imap のどれか",
     "One of base64, qp, uu, binhex, hex, url, imap"},
    {Say::kDecodeFile, "ファイル、または - （標準入力、既定）",
     "A file, or - (standard input, the default)"},
    {Say::kCharsetsHelp, "扱える文字コードを一覧する", "List the charsets"},
    {Say::kLinksHelp, "テキストの中の URL、パス、メールアドレスを一覧する",
     "List the URLs, paths and mail addresses of a text"},
    {Say::kLinksFile, "ファイル、または - （標準入力、既定）",
     "A file, or - (standard input, the default)"},
    {Say::kLinksFrom, "テキストの文字コード。省くと自動判別する",
     "Charset of the text; detected without it"},
    {Say::kWrapHelp, "テキストの長い行を日本語の禁則で折り返す",
     "Turn the long lines of a text by the rules of Japanese"},
    {Say::kWrapExamples,
     "  lumr wrap -w 60 memo.txt\n"
     "  lumr wrap --quote '> ' - < body.txt     引用にする\n"
     "  lumr wrap --explain memo.txt            折り返した理由を示す\n",
     "  lumr wrap -w 60 memo.txt\n"
     "  lumr wrap --quote '> ' - < body.txt     as a quotation\n"
     "  lumr wrap --explain memo.txt            says why a line ends where it does\n"},
    {Say::kUnwrapHelp, "折り返された行をつなぐ", "Join the lines that were turned"},
    {Say::kUnwrapExamples, "  lumr unwrap memo.txt | lumr wrap -w 40\n",
     "  lumr unwrap memo.txt | lumr wrap -w 40\n"},
    {Say::kWrapFile, "ファイル、または - （標準入力、既定）",
     "A file, or - (standard input, the default)"},
    {Say::kWrapColumns, "1 行の桁数（既定 72）。全角文字は 2 桁",
     "Columns a line (default 72); full-width characters take two"},
    {Say::kWrapFrom, "テキストの文字コード。省くと自動判別する",
     "Charset of the text; detected without it"},
    {Say::kWrapQuote, "各行の先頭に付ける引用記号。桁数に含める",
     "A quote mark to put before each line; its columns count"},
    {Say::kWrapExplain, "行番号、桁数、内容と、そこで折り返した理由を表示する",
     "Print number, columns and text of each line, and why it ends there"},
    {Say::kLookWidth, "本文を N 桁で折り返す（既定: 端末の幅。端末でなければ折り返さない）",
     "Turn the text at N columns (default: the terminal's width;\n"
     "lines stay as they are where there is no terminal)"},
    {Say::kLookSettings,
     "エディターの設定（折り返し、引用、色）を設定ファイルから読む。\n"
     "セクションを省くと Editor",
     "Take the editor's settings (turning, quotes, colours) from a\n"
     "setting data file; the section is Editor unless given"},

    // Why a file cannot be read or written.
    {Say::kReasonMissing, "ファイルがありません", "there is no such file"},
    {Say::kReasonFolder, "フォルダーです", "it is a folder"},
    {Say::kReasonDenied, "権限がありません", "permission is denied"},
    {Say::kReasonFull, "ディスクがいっぱいです", "the disk is full"},
    {Say::kReasonTooLarge, "2 GiB を超えています", "it is larger than 2 GiB"},
    {Say::kReasonName, "使えない名前です", "the name cannot be used"},

    // Problems.
    {Say::kCannotRead, "読めません: {0}", "cannot be read: {0}"},
    {Say::kCannotWrite, "書けません: {0}", "cannot be written: {0}"},
    {Say::kStandardOutput, "標準出力", "standard output"},
    {Say::kEmptyFile, "空のファイルです", "the file is empty"},
    {Say::kOutOfMemory, "メモリーが足りません", "not enough memory"},
    {Say::kUnknownCharset, "文字コード「{0}」は知りません。lumr charsets で一覧できます",
     "unknown charset '{0}'; lumr charsets lists them"},
    {Say::kUnknownTarget,
     "文字コード「{0}」には変換できません。lumr charsets にあるものを US-ASCII のほか選べます",
     "cannot convert to the charset '{0}'; all of lumr charsets but US-ASCII can be had"},
    {Say::kUnknownLanguage, "言語「{0}」は知りません。ja か en を指定してください",
     "unknown language '{0}'; there are ja and en"},
    {Say::kUsageError, "使い方が違います: {0}", "wrong usage: {0}"},
    // What is wrong with the command line.
    {Say::kCommandMissing, "コマンドがありません", "a command is missing"},
    {Say::kUnknownCommand, "コマンド「{0}」は知りません", "unknown command '{0}'"},
    {Say::kArgumentMissing, "{0} がありません", "{0} is missing"},
    {Say::kExtraArguments, "次のものは受け取れません: {0}", "this was not expected: {0}"},
    {Say::kOptionValueMissing, "{0} の値がありません", "{0} lacks its value"},
    {Say::kOptionValue, "{0} の値「{1}」は使えません", "{0} cannot be '{1}'"},
    {Say::kOptionRange, "{0} の値「{1}」は {2} から {3} までの数ではありません",
     "the value '{1}' of {0} is no number from {2} to {3}"},
    {Say::kOptionChoice, "{0} の値「{1}」は使えません。{2} のどれかを指定してください",
     "{0} cannot be '{1}', only one of {2}"},
    {Say::kOptionTooOften, "{0} は {1} 個までです。{2} 個あります",
     "there may be at most {1} of {0}, and there are {2}"},
    {Say::kOptionNeeds, "{0} には {1} も要ります", "{0} needs {1} too"},
    {Say::kOptionExcludes, "{0} と {1} は一緒に使えません", "{0} and {1} exclude each other"},
    {Say::kTryHelp, "{0} --help で説明を表示します", "{0} --help tells more"},
    {Say::kStdinInPlace, "--in-place にはファイル名が要ります。標準入力は書き換えられません",
     "--in-place needs the names of files; standard input cannot be rewritten"},
    {Say::kNoMailCommands,
     "この lumr にはメールのコマンドが入っていません。GMime なしで作られています",
     "the mail commands are missing in this build: it was made without GMime"},
    {Say::kBinHexDecodeOnly, "BinHex への符号化はできません。復号だけです",
     "BinHex can only be decoded"},
    {Say::kOptionOfEncoding, "{0} が使えるのは {1} だけです", "{0} is an option of {1} alone"},
    {Say::kUnknownEncoding,
     "符号化「{0}」は知りません。base64, qp, uu, binhex, hex, url, imap があります",
     "unknown encoding '{0}'; there are base64, qp, uu, binhex, hex, url and imap"},
    {Say::kMalformedInput, "{0} として正しくないところがあります。読めた部分だけを出力しました",
     "the input is not well-formed {0}; what could be read was written"},
    {Say::kBadTextInput, "正しい UTF-8 ではありません。読めない部分は置き換えました",
     "the input is not valid UTF-8; what could not be read was replaced"},
    {Say::kUnreadableText, "{0} として読めない文字を置き換えました",
     "characters that cannot be read as {0} were replaced"},

    // convert
    {Say::kLostCharacters, "{0} 文字が {1} に変換できず、置き換えました（位置 {2}）",
     "characters that {1} lacks were replaced: {0} (at byte {2})"},
    {Say::kUnreadCharacters, "{1} として読めない {0} 文字を置き換えました（位置 {2}）",
     "characters that cannot be read as {1} were replaced: {0} (at byte {2})"},
    {Say::kFittedCharacters, "{0} 文字は {1} では元に戻せない別の文字になります（位置 {2}）",
     "characters that do not come back from {1} as they were: {0} (at byte {2})"},
    {Say::kNotWritten, "何も書き出していません", "nothing was written"},
    {Say::kNotDetected, "文字コードを判別できません。-f で指定してください。何も書き出していません",
     "the charset cannot be detected, so -f is needed; nothing was written"},
    {Say::kDetectedAs, "{0} と判別しました", "detected as {0}"},
    {Say::kReportReplaced, "位置 {0} の {1} バイト: 置き換え", "byte {0}, {1} long: replaced"},
    {Say::kReportFit, "位置 {0} の {1} バイト: 似た文字", "byte {0}, {1} long: look-alike"},
    {Say::kReportMore, "ほかに {0} 文字", "{0} more"},
    {Say::kReportExact, "すべて正確に変換しました", "everything was converted exactly"},

    // detect
    {Say::kRuleEmpty, "空です", "there is nothing in it"},
    {Say::kRulePlainAscii, "ASCII の文字だけです", "only printable ASCII and white space"},
    {Say::kRuleEscape, "ISO-2022-JP のエスケープシーケンス", "an escape sequence of ISO-2022-JP"},
    {Say::kRuleUtf8, "全体が UTF-8 の形", "all of it has the form of UTF-8"},
    {Say::kRuleUtf16BigEndian, "UTF-16 ビッグエンディアンのバイト順マーク",
     "the big-endian byte-order mark of UTF-16"},
    {Say::kRuleUtf16, "全体が日本語の文字の UTF-16", "all of it is UTF-16 of Japanese characters"},
    {Say::kRuleEucByte, "EUC-JP にしかないバイトの並び", "bytes that only EUC-JP has"},
    {Say::kRuleSJisByte, "Shift_JIS にしかないバイトの並び", "bytes that only Shift_JIS has"},
    {Say::kRuleAmbiguous, "EUC-JP とも Shift_JIS とも読め、EUC-JP とみなします",
     "it reads as EUC-JP and as Shift_JIS; EUC-JP is taken"},
    {Say::kRuleNothingTelling, "手がかりになるバイトがありません", "no byte in it tells"},
    {Say::kAtByte, "（位置 {0}: {1}）", " (at {0}: {1})"},

    // wrap: what moved a break
    {Say::kRuleAtLimit, "桁数", "the limit"},
    {Say::kRuleLineEnd, "行の終わり", "end of the line"},
    {Say::kRuleOneCharacter, "1 文字も入らない", "not one character fits"},
    {Say::kRuleUrlEnd, "リンクの直後", "behind a link"},
    {Say::kRuleBeforeUrl, "リンクの前まで戻す", "back before a link"},
    {Say::kRuleBehindUrl, "長いリンクの終わりまで", "on to the end of a long link"},
    {Say::kRuleWord, "単語の前まで戻す", "back before a word"},
    {Say::kRuleHang, "ぶら下げ", "a closing mark or space hangs"},
    {Say::kRulePushBack, "行頭・行末の禁則で戻す", "back, for what must not begin or end a line"},

    // charsets
    {Say::kHeadNumber, "番号", "Number"},
    {Say::kHeadName, "名前", "Name"},
    {Say::kHeadAliases, "別名", "Aliases"},
    {Say::kHeadCodePage, "コードページ", "Code page"},
    {Say::kHeadDisplayName, "表示名", "Display name"},

    // show
    {Say::kNoMessages, "メールがありません", "there are no messages"},
    {Say::kNotMail, "メールではありません。ヘッダーがありません",
     "this is no mail: it does not begin with a header"},
    {Say::kPartNote, "パート {0}{1}: ", "part {0}{1}: "},
    {Say::kNoLabel, "文字コードの指定がありません。{1} として読みました",
     "there is no charset label; read as {1}"},
    {Say::kUnknownLabel, "文字コード「{0}」は知りません。{1} として読みました",
     "unknown charset '{0}'; read as {1}"},
    {Say::kLabelLies, "文字コードは {0} と書かれていますが、内容は違います。{1} として読みました",
     "labelled {0}, which the text is not; read as {1}"},
    {Say::kReplacedInPart, "{1} として読めない文字が {0} 個あり、置き換えました",
     "characters that cannot be read as {1} were replaced: {0}"},
    {Say::kMalformedTransfer, "転送符号化が壊れています。読めた部分だけを表示します",
     "the transfer encoding is damaged; what could be read is shown"},
    {Say::kUnknownTransfer, "知らない転送符号化です。そのまま表示します",
     "unknown transfer encoding; shown as it is"},
    {Say::kNotBase64, "Base64 と書かれていますが、内容は違います。そのまま表示します",
     "labelled Base64, which the text is not; shown as it is"},
    {Say::kPartSkipped, "表示できません: {0}", "not shown: {0}"},
    {Say::kTooDeep, "入れ子が深すぎます", "it is nested too deeply"},
    {Say::kNoContent, "中身がありません", "it has no content"},
    {Say::kTruncated, "メールが途中で切れているようです。最後の区切りがありません",
     "the message seems to be cut off: its last boundary is missing"},
    {Say::kNoParts, "マルチパートなのに区切りがありません。本文としてそのまま表示します",
     "a multipart without a boundary in it; its text is shown as it is"},
    {Say::kBoundaryGuessed, "マルチパートの区切りがヘッダーになく、本文から見つけました",
     "the boundary of a multipart is missing in its header; it was found in the text"},
    {Say::kAttachedMessage, "添付されたメール", "attached message"},
    {Say::kAttachments, "添付ファイル {0} 件:", "Attachments ({0}):"},
    {Say::kAttachmentSize, "{0} バイト", "{0} bytes"},
    {Say::kUnnamed, "（名前なし）", "(no name)"},

    // settings, users, digest, cipher: help
    {Say::kSettingsHelp, "設定ファイルを読み、変更し、検査する",
     "Read, change and check setting data files"},
    {Say::kSettingsExamples,
     "  lumr settings get Mail.ini General Version\n"
     "  lumr settings set Mail.ini General Version 2   予備のコピーがあればそれも\n"
     "  lumr settings check *.ini                      壊れている行をすべて挙げる\n"
     "  lumr settings encrypt --key-file key Mail.ini\n",
     "  lumr settings get Mail.ini General Version\n"
     "  lumr settings set Mail.ini General Version 2   and in its reserve copy, if it has one\n"
     "  lumr settings check *.ini                      names every damaged line\n"
     "  lumr settings encrypt --key-file key Mail.ini\n"},
    {Say::kUsersHelp, "メールソフトのユーザーを一覧し、変更する",
     "List and change the users of a mail client"},
    {Say::kUsersExamples,
     "  lumr users list ~/.config/Lumora\n"
     "  lumr users add DIR 名前                新しい ID を表示する\n"
     "  lumr users password DIR 3              パスワードは端末で聞く\n",
     "  lumr users list ~/.config/Lumora\n"
     "  lumr users add DIR NAME                prints the new ID\n"
     "  lumr users password DIR 3              asks for the password on the terminal\n"},
    {Say::kDigestHelp, "MD5 と HMAC-MD5 を計算する", "Compute MD5 and HMAC-MD5"},
    {Say::kDigestExamples,
     "  lumr digest md5 *.eml\n"
     "  lumr digest hmac-md5 --key-file key - < challenge\n",
     "  lumr digest md5 *.eml\n"
     "  lumr digest hmac-md5 --key-file key - < challenge\n"},
    {Say::kCipherHelp, "鍵でデータを暗号化し、復号する", "Encipher and decipher data under a key"},
    {Say::kCipherExamples,
     "  lumr cipher encrypt --key-file key mail.eml > mail.bin\n"
     "  lumr cipher decrypt mail.bin                    鍵は端末で聞く\n",
     "  lumr cipher encrypt --key-file key mail.eml > mail.bin\n"
     "  lumr cipher decrypt mail.bin                    asks for the key on the terminal\n"},
    {Say::kOptKeyFile, "鍵を 1 行目に書いたファイル。なければ端末で聞く",
     "A file whose first line is the key; without it the terminal is asked"},
    {Say::kSettingsGet, "値を表示する", "Print a value"},
    {Say::kSettingsSet, "値を設定する", "Set a value"},
    {Say::kSettingsUnset, "値、またはキー全体を削除する", "Remove a value, or a whole key"},
    {Say::kSettingsList, "すべての値を表示する", "Print all values"},
    {Say::kSettingsCheck, "壊れている箇所をすべて挙げる。予備のコピーも検査する",
     "Name every defect, in the reserve copy too"},
    {Say::kSettingsDiff, "2 つのファイルの違いを表示する。順序は問わない",
     "Print what differs between two files, in whatever order"},
    {Say::kSettingsEncrypt, "ファイルを暗号化する", "Encipher files"},
    {Say::kSettingsDecrypt, "ファイルの暗号化を解く", "Decipher files"},
    {Say::kSettingsFile, "設定ファイル", "A setting data file"},
    {Say::kSettingsFiles, "設定ファイル", "Setting data files"},
    {Say::kSettingsKey, "キー（[ ] の中の名前）", "The key: the name in brackets"},
    {Say::kSettingsName, "値の名前", "The name of the value"},
    {Say::kSettingsValue, "値", "The value"},
    {Say::kSettingsUnsetName, "値の名前。なければキー全体",
     "The name of the value; without it, the whole key"},
    {Say::kSettingsListKey, "表示するキー。なければすべて", "The key to print; without it, all"},
    {Say::kSettingsCreate, "ファイルがなければ作る", "Make the file where it is missing"},
    {Say::kSettingsReserve, "予備のコピーがなければ作る（フォルダー Reserve）",
     "Make a reserve copy where there is none (in the folder Reserve)"},
    {Say::kSettingsOutput, "結果を書くファイル、または -。なければ元のファイルを書き換える",
     "Where to write the result, or -; without it, the file itself"},
    {Say::kUsersList, "ユーザーを一覧する", "List the users"},
    {Say::kUsersAdd, "ユーザーを加え、ID を表示する", "Add a user and print the ID"},
    {Say::kUsersRemove, "ユーザーを一覧から外す。フォルダーは残る",
     "Take a user off the list; the folder stays"},
    {Say::kUsersPassword, "パスワードを設定する。端末で聞くか、標準入力の 1 行目を読む",
     "Set a password, asked for on the terminal or read as a line of standard input"},
    {Say::kUsersDir, "LumrUser.ini のあるフォルダー", "The folder with LumrUser.ini"},
    {Say::kUsersName, "表示する名前", "The name to show"},
    {Say::kUsersUserDir, "ユーザーのデータのフォルダー", "The folder of the user's data"},
    {Say::kUsersNewId, "ID（なければ次の番号）", "The ID; the next number unless given"},
    {Say::kUsersId, "ユーザーの ID", "The ID of the user"},
    {Say::kUsersNoPassword, "パスワードをなくす", "Have no password"},
    {Say::kUsersRequired, "ログインのときパスワードを求める", "Ask for the password at login"},
    {Say::kUsersNotRequired, "ログインのときパスワードを求めない",
     "Do not ask for the password at login"},
    {Say::kDigestMd5, "MD5", "MD5"},
    {Say::kDigestHmac, "HMAC-MD5（鍵を使う）", "HMAC-MD5, under a key"},
    {Say::kDigestFile, "ファイル、または - （標準入力、既定）",
     "Files, or - (standard input, the default)"},
    {Say::kCipherEncrypt, "暗号化する", "Encipher"},
    {Say::kCipherDecrypt, "復号する", "Decipher"},
    {Say::kCipherFile, "ファイル、または - （標準入力、既定）",
     "A file, or - (standard input, the default)"},

    // Keys and passwords.
    {Say::kAskKey, "鍵: ", "Key: "},
    {Say::kAskNewKey, "新しい鍵: ", "New key: "},
    {Say::kAskPassword, "新しいパスワード: ", "New password: "},
    {Say::kAskAgain, "もう一度: ", "Again: "},
    {Say::kNoTerminal, "鍵が要りますが、聞く端末がありません。--key-file で指定してください",
     "a key is needed and there is no terminal to ask for it; --key-file names a file with it"},
    {Say::kNothingTyped, "何も入力されませんでした", "nothing was typed"},
    {Say::kTypedDiffers, "2 回の入力が違います", "the two are not the same"},
    {Say::kNotInShiftJis, "シフトJIS にない文字が含まれています",
     "it has characters that Shift_JIS lacks"},
    {Say::kNoSecretInFile, "1 行目が空か、長すぎるか、ゼロのバイトを含んでいます",
     "its first line is empty, too long, or holds a zero byte"},

    // settings
    {Say::kDefectAt, "{0} 行目: {1}", "line {0}: {1}"},
    {Say::kDefectKeyLine, "キーの行が ] で終わっていません: {0}",
     "a key line does not end with ]: {0}"},
    {Say::kDefectEntry, "「名前=値」の形ではありません（キー [{1}]）: {0}",
     "it is not of the form name=value, in [{1}]: {0}"},
    {Say::kDefectZero, "ディスクに書かれなかった部分（ゼロ）があります: {0}",
     "it holds zeros, as blocks do that never reached the disk: {0}"},
    {Say::kDefectNoKey, "キーより前に値があります: {0}", "an entry stands before any key: {0}"},
    {Say::kDefectNoStart, "先頭の [DATA-START] がありません",
     "[DATA-START] is missing at the start"},
    {Say::kDefectNoEnd, "末尾の [DATA-END] がありません。途中で切れています",
     "[DATA-END] is missing at the end: the file is cut off"},
    {Say::kDefectKeyTwice, "キー [{0}] が 2 回あります", "the key [{0}] stands twice"},
    {Say::kDefectNameTwice, "名前 {0} がキー [{1}] に 2 回あります",
     "the name {0} stands twice in [{1}]"},
    {Say::kNoDefects, "問題ありません（キー {1}、値 {2}）", "no defects; keys: {1}, values: {2}"},
    {Say::kDefects, "問題 {0} 件（読めたのはキー {1}、値 {2}）",
     "defects: {0}; readable keys: {1}, values: {2}"},
    {Say::kNotSettings, "設定ファイルではありません。UTF-16 ではないテキストです",
     "this is no setting data file: it is text, but not UTF-16"},
    {Say::kNotDeciphered, "暗号化されているか壊れているため、読んでいません",
     "it is enciphered, or damaged, and was not read"},
    {Say::kNeedsFile, "ファイル名が要ります。標準入力は書き換えられません",
     "the name of a file is needed; standard input cannot be rewritten"},
    {Say::kNotUtf8, "正しい UTF-8 ではありません: {0}", "this is not valid UTF-8: {0}"},
    {Say::kNoSuchKey, "キー [{0}] がありません", "there is no key [{0}]"},
    {Say::kNoSuchEntry, "キー [{0}] に {1} がありません", "there is no {1} in [{0}]"},
    {Say::kRefusedName, "その名前や値は設定ファイルに書けません",
     "a setting data file cannot hold that name or value"},
    {Say::kRecovered, "読めなかったので、予備のコピーから元に戻しました",
     "it could not be loaded, and was restored from its reserve copy"},
    {Say::kSavedInPart, "新しい内容は残りますが、書き込みは完全ではありません: {0}",
     "the new content is kept, but could not be written everywhere: {0}"},
    {Say::kEncipheredAlready, "すでに暗号化されています", "it is enciphered already"},
    {Say::kPlainAlready, "暗号化されていません", "it is not enciphered"},
    {Say::kOneOutput, "--output を指定できるのはファイルが 1 つのときだけです",
     "--output is for one file only"},

    // users
    {Say::kHeadId, "ID", "ID"},
    {Say::kHeadUser, "名前", "Name"},
    {Say::kHeadPassword, "パスワード", "Password"},
    {Say::kHeadFolder, "フォルダー", "Folder"},
    {Say::kPasswordNone, "なし", "none"},
    {Say::kPasswordSet, "あり", "set"},
    {Say::kPasswordRequired, "あり（必須）", "required"},
    {Say::kNoUsers, "ユーザーがいません", "there are no users"},
    {Say::kNoSuchUser, "ID {0} のユーザーはいません", "there is no user with the ID {0}"},
    {Say::kUserIdTaken, "ID {0} はすでに使われています", "the ID {0} is taken"},

    // grep
    {Say::kGrepHelp, "ファイルやメールから語やパターンを探す",
     "Find words or a pattern in files and mail"},
    {Say::kGrepExamples,
     "  lumr grep -wk がいど *.txt          ｶﾞｲﾄﾞ、ガイド、がいど のある行\n"
     "  lumr grep --all 会議 資料 memo.txt  両方の語がある行\n"
     "  lumr grep -rn -E '[0-9]+-[0-9]+' .  フォルダーの中を正規表現で\n"
     "  lumr grep --mail -i lumora ~/Maildir\n"
     "                                      デコードしたヘッダーと本文から\n",
     "  lumr grep -wk がいど *.txt          lines with ｶﾞｲﾄﾞ, ガイド or がいど\n"
     "  lumr grep --all 会議 資料 memo.txt  lines with both words\n"
     "  lumr grep -rn -E '[0-9]+-[0-9]+' .  a pattern, below a folder\n"
     "  lumr grep --mail -i lumora ~/Maildir\n"
     "                                      in decoded headers and bodies\n"},
    {Say::kGrepArguments,
     "探す語、そのあとにファイル、フォルダー、または - （標準入力）。\n"
     "1 番目は語、そのあとも実在する名前までは語とみなす。-e か -E が\n"
     "あればすべてファイル",
     "Words to find, then files, folders or - (standard input). The\n"
     "first is a word, and so are those behind it up to one that exists\n"
     "as a file. With -e or -E all are files"},
    {Say::kGrepIgnoreCase, "大文字と小文字を区別しない", "Ignore case"},
    {Say::kGrepIgnoreWidth, "全角と半角を区別しない", "Ignore character width"},
    {Say::kGrepIgnoreKana, "ひらがなとカタカナを区別しない",
     "Take hiragana and katakana for the same"},
    {Say::kGrepWord, "探す語。繰り返せる", "A word to find; may be repeated"},
    {Say::kGrepPattern, "探す正規表現（書き方は man lumr）",
     "A regular expression to find (man lumr has the syntax)"},
    {Say::kGrepAny, "どれかの語がある行（既定）", "Lines with any of the words (the default)"},
    {Say::kGrepAll, "すべての語がある行", "Lines with all of the words"},
    {Say::kGrepExplain, "正規表現をコンパイルした結果を表示する",
     "Print what a regular expression is compiled to"},
    {Say::kGrepRecursive, "フォルダーの中をすべて探す", "Search all that is below folders"},
    {Say::kGrepMail, "メール、mbox、Maildir のヘッダーと本文から探す",
     "Search headers and bodies of messages, mboxes and maildirs"},
    {Say::kGrepFrom, "ファイルの文字コード。なければ判別する",
     "Charset of the files; detected without it"},
    {Say::kGrepNumber, "行番号を付ける", "Print line numbers"},
    {Say::kGrepByteOffset, "元のファイルでのバイト位置を付ける",
     "Print the offset in bytes of the original file"},
    {Say::kGrepOnly, "見つけた部分だけを表示する", "Print the matches alone"},
    {Say::kGrepCount, "行数だけを表示する", "Print the number of lines alone"},
    {Say::kGrepFiles, "ファイル名だけを表示する", "Print the names of the files alone"},
    {Say::kGrepColor, "色を付けるか", "Whether to colour matches"},
    {Say::kPatternError, "パターン「{0}」の {3} 文字目: {1}（コード {2}）",
     "pattern '{0}', character {3}: {1} (code {2})"},
    {Say::kGrepNoWord, "探す語がありません", "there is no word to look for"},
    {Say::kGrepMailOffset,
     "--byte-offset は --mail と一緒に使えません。デコードした本文に元のバイト位置はありません",
     "--byte-offset cannot go with --mail: decoded text has no offset in the file"},
    {Say::kGrepBinary, "バイナリーファイル {0} に一致する行があります", "binary file {0} matches"},
    {Say::kGrepGivenUp, "{0} 行目: 手間がかかりすぎるので、この行の照合をやめました",
     "line {0}: the match takes too many steps and was given up"},

    // reply, compose, check, header: help
    {Say::kReplyHelp, "メールへの返信を作る", "Write a reply to a message"},
    {Say::kReplyExamples,
     "  lumr reply mail.eml > draft             編集してから送る\n"
     "  lumr reply mail.eml | sendmail -t\n",
     "  lumr reply mail.eml > draft             to be edited and sent\n"
     "  lumr reply mail.eml | sendmail -t\n"},
    {Say::kReplyMail, "返信するメールのファイル、または - （標準入力）",
     "The message that is answered, or - (standard input)"},
    {Say::kReplyCharset,
     "返信の文字コード（lumr charsets の名前か番号）。日本語は ISO-2022-JP で送る。\n"
     "省くと元のメールのもの、それで書けなければ全文を書ける最も狭いもの",
     "Charset of the reply, by name or number (see lumr charsets);\n"
     "Japanese is sent in ISO-2022-JP. Without it that of the\n"
     "message, or the narrowest that carries all of the reply"},
    {Say::kComposeHelp, "本文とヘッダーからメールを作る", "Write a message from a text"},
    {Say::kComposeExamples,
     "  lumr compose --to taro@example.jp --subject 会議の件 < body.txt | sendmail -t\n"
     "  lumr compose --to '山田 太郎 <taro@example.jp>, b@example.jp' --subject x body.txt\n",
     "  lumr compose --to taro@example.jp --subject 会議の件 < body.txt | sendmail -t\n"
     "  lumr compose --to '山田 太郎 <taro@example.jp>, b@example.jp' --subject x body.txt\n"},
    {Say::kComposeBody, "本文のファイル（UTF-8）、または - （標準入力、既定）",
     "The text, a file in UTF-8, or - (standard input, the default)"},
    {Say::kComposeCharset,
     "メールの文字コード（lumr charsets の名前か番号）。日本語は ISO-2022-JP で送る。\n"
     "省くと全文を書ける最も狭いもの",
     "Charset of the message, by name or number (see lumr\n"
     "charsets); Japanese is sent in ISO-2022-JP. Without it the\n"
     "narrowest that carries all"},
    {Say::kOptFrom, "差出人", "The sender"},
    {Say::kOptTo, "宛先（コンマで区切る）", "Whom it goes to, separated by commas"},
    {Say::kOptCc, "写しの宛先", "Who gets a copy"},
    {Say::kOptBcc, "ほかの人に見せない写しの宛先", "Who gets a copy unseen by the others"},
    {Say::kOptSubject, "件名", "The subject"},
    {Say::kCheckHelp, "送る前に下書きを調べる", "Check a draft before it is sent"},
    {Say::kCheckExamples,
     "  lumr check draft                        機種依存文字、長い行、アドレス\n"
     "  lumr check --charset utf-8 draft\n",
     "  lumr check draft                        characters, long lines, addresses\n"
     "  lumr check --charset utf-8 draft\n"},
    {Say::kCheckDraft, "下書き（ヘッダーと本文）、または - （標準入力）",
     "A draft with header and body, or - (standard input)"},
    {Say::kCheckCharset, "送るときの文字コード（既定は下書きにあるもの、なければ ISO-2022-JP）",
     "The charset that it is sent in (that of the draft unless\n"
     "given, or else ISO-2022-JP)"},
    {Say::kHeaderHelp, "ヘッダーの値を復号、符号化する", "Decode and encode header values"},
    {Say::kHeaderExamples,
     "  lumr header decode '=?ISO-2022-JP?B?GyRCOm45LCRORw4bKEI=?='\n"
     "  lumr header encode --charset iso-2022-jp --field Subject 会議の件\n",
     "  lumr header decode '=?ISO-2022-JP?B?GyRCOm45LCRORw4bKEI=?='\n"
     "  lumr header encode --charset iso-2022-jp --field Subject 会議の件\n"},
    {Say::kHeaderDecode, "ヘッダーの値をテキストにする", "Header values to text"},
    {Say::kHeaderEncode, "テキストをヘッダーの値にする", "Text to header values"},
    {Say::kHeaderRaw, "ヘッダーの値。省くか - なら標準入力の各行（字下げした行は前の行の続き）",
     "Header values; without them, or for -, the lines of standard input,\n"
     "where an indented line goes on with the one before"},
    {Say::kHeaderRawCharset, "符号化されていない日本語の文字コード（既定は自動判別）",
     "Charset of raw text (detected unless given)"},
    {Say::kHeaderText, "テキスト（UTF-8）。省くか - なら標準入力の各行",
     "Text in UTF-8; without it, or for -, the lines of standard input"},
    {Say::kHeaderCharset, "エンコード語の文字コード（既定は UTF-8）",
     "Charset of encoded words (UTF-8 unless given)"},
    {Say::kHeaderKind, "b（Base64）または q（quoted-printable）。既定は短い方",
     "b (Base64) or q (quoted-printable); the shorter unless given"},
    {Say::kHeaderField, "フィールド名を先に書き、1 行目の長さに数える",
     "Name of the field, written first and counted in its line"},
    {Say::kHeaderName, "アドレスの名前として符号化する", "Encode as the name of an address"},

    // Messages that are written.
    {Say::kAddressUnclosed, "引用符かかっこが閉じられていません",
     "quotes or parentheses are not closed"},
    {Say::kAddressCharacter, "アドレスの {0} 文字目に使えない文字があります",
     "character {0} cannot be part of an address"},
    {Say::kBadAddressOption, "{0}: 「{1}」: {2}", "{0}: '{1}': {2}"},
    {Say::kBadAddressInMail, "メールのアドレス「{0}」: {1}", "address '{0}' of the message: {1}"},
    {Say::kOptionLineBreak, "{0} の値に改行があります（{1} バイト目）。ヘッダーに改行は書けません",
     "there is a line break in {0} (byte {1}), which no header can hold"},
    {Say::kOptionControl, "{0} の値に制御文字があります（{1} バイト目）",
     "there is a control character in {0} (byte {1})"},
    {Say::kOptionNotUtf8, "{0} の値は {1} バイト目から UTF-8 ではありません",
     "{0} is no UTF-8 from byte {1} on"},
    {Say::kNoRecipient, "宛先がありません。--to, --cc, --bcc のどれかが要ります",
     "there is nobody to send it to: --to, --cc or --bcc is needed"},
    {Say::kBodyNotUtf8, "{0}（行:バイト）から UTF-8 ではありません",
     "it is no UTF-8 from {0} on (line:byte)"},
    {Say::kCharsetLacks, "文字コード {0} にない文字があります: {1}",
     "the charset {0} lacks characters of the message: {1}"},
    {Say::kSeveralMessages, "メールが何通もあります。1 通だけ指定してください",
     "there are several messages; only one can be answered"},
    {Say::kNothingToQuote, "引用するテキストがありません", "there is no text to quote"},
    {Say::kNobodyToAnswer, "返信先のアドレスがありません。To は書きませんでした",
     "the message names nobody to answer to; there is no To"},
    {Say::kUnknownWordKind, "エンコード語の種類「{0}」は知りません。b か q を指定してください",
     "unknown kind of encoded words '{0}'; there are b and q"},
    {Say::kBadFieldName, "「{0}」はヘッダーの名前になりません。名前は ASCII の文字だけです",
     "'{0}' cannot be the name of a header field, which is of printable ASCII without a colon"},
    {Say::kValueNotUtf8, "「{0}」は {1} バイト目から UTF-8 ではありません",
     "'{0}' is no UTF-8 from byte {1} on"},
    {Say::kValueLost, "「{0}」の一部は {1} で書けないため置き換えました",
     "'{0}': characters that {1} lacks were replaced"},

    // check.
    {Say::kFindNotEncodable, "{1} にない文字「{0}」", "characters that {1} lacks: {0}"},
    {Say::kFindMachineDependent, "機種依存文字「{0}」", "machine-dependent characters: {0}"},
    {Say::kFindHalfKatakana, "半角カタカナ「{0}」", "half-width katakana: {0}"},
    {Say::kFindUserDefined, "外字「{0}」", "user-defined characters: {0}"},
    {Say::kFindLongLine, "行が長すぎます（{0} バイト。998 バイトまで）",
     "the line is too long ({0} bytes; 998 can be sent)"},
    {Say::kFindHeader, "ヘッダーの行ではありません", "this is no header line"},
    {Say::kFindNoRecipient, "宛先がありません", "there is nobody to send it to"},
    {Say::kFindDamaged, "読めない文字があります", "characters cannot be read"},
    {Say::kOffer, "（例えば「{0}」）", " (write {0})"},
    {Say::kOfferNothing, "（削ってよい文字）", " (leave them out)"},
    {Say::kInBody, "本文 {0}", "body {0}"},
    {Say::kInLine, "{0} 行目", "line {0}"},
    {Say::kCheckSummary, "{0} 件。全文を書ける最も狭い文字コード: {1}",
     "findings: {0}; the narrowest charset that carries all: {1}"},

    // html
    {Say::kHtmlHelp, "HTML を安全にする、テキストと変換する、文字コードとリンクを調べる",
     "Make HTML safe, convert it to and from text, its charset and links"},
    {Say::kHtmlExamples,
     "  lumr html safe --strict --report mail.html > safe.html\n"
     "  lumr html text --links page.html          テキストにする（リンク先付き）\n"
     "  lumr html from-text --charset utf-8 memo.txt\n"
     "  lumr html charset iso-2022-jp page.html   文字コードを変換し、宣言も書き換える\n"
     "  lumr html links mail.html                 リンク先と、怪しいリンク\n",
     "  lumr html safe --strict --report mail.html > safe.html\n"
     "  lumr html text --links page.html          as text, with link addresses\n"
     "  lumr html from-text --charset utf-8 memo.txt\n"
     "  lumr html charset iso-2022-jp page.html   converts it and its declaration\n"
     "  lumr html links mail.html                 where links lead, and what is odd\n"},
    {Say::kHtmlSafe, "受信した HTML を無害にする（ブラウザーで開くなら --strict）",
     "Make received HTML harmless; for a browser with --strict"},
    {Say::kHtmlText, "HTML をテキストにする", "Turn HTML into text"},
    {Say::kHtmlFromText, "テキストを HTML にする", "Turn text into HTML"},
    {Say::kHtmlCharsetCommand, "宣言された文字コードを示す。NAME があれば文字コードを変換する",
     "Print the declared charset, or convert to charset NAME"},
    {Say::kHtmlLead, "本文の先頭にテキストを挿入する",
     "Insert a text where the visible content begins"},
    {Say::kHtmlLinks, "リンク先を一覧し、怪しいリンクを知らせる",
     "List where links lead, and tell suspicious ones"},
    {Say::kHtmlFile, "HTML ファイル、または - （標準入力、既定）",
     "An HTML file, or - (standard input, the default)"},
    {Say::kHtmlTextFile, "テキストファイル、または - （標準入力、既定）",
     "A text file, or - (standard input, the default)"},
    {Say::kHtmlStrict,
     "許可した要素・属性・スタイルだけを書き直す。スクリプトも通信も起こらない。"
     "省くとスクリプトを動かす属性（onclick など）は残る",
     "Write anew only what lists allow: nothing can run or be fetched. Without it attributes that "
     "run script (onclick) stay"},
    {Say::kHtmlReport, "取り除いたものと怪しいリンクを標準エラーに出す（--strict とともに）",
     "Say on standard error what was removed and which links are odd (with --strict)"},
    {Say::kHtmlKeepLinks, "リンク先と画像の代替テキストを残す",
     "Keep link addresses and alternative texts of images"},
    {Say::kHtmlReading, "引用・箇条書き・ルビ・表の形を保つ",
     "Keep the form of quotes, lists, ruby and tables"},
    {Say::kHtmlCharset, "出力の文字コード。省くと body の中身だけを UTF-8 で出す",
     "Charset of a whole document; without it the content of a body, in UTF-8"},
    {Say::kHtmlCharsetArguments, "[文字コード] [ファイル]。ファイルの既定は標準入力",
     "[NAME] [FILE]: a charset name, a file (default: standard input)"},
    {Say::kHtmlLeadText, "挿入するテキスト", "The text to insert"},
    {Say::kHtmlNoCharset, "文字コードの宣言がありません", "no charset is declared"},
    {Say::kHtmlReplaced, "{1} として読めない {0} 文字を置き換えました",
     "characters that are not in {1} were replaced: {0}"},
    {Say::kHtmlRemoved, "位置 {0}: {1}{2}", "at {0}: {1}{2}"},
    {Say::kRemovedScript, "スクリプトを削除", "removed a script"},
    {Say::kRemovedEvent, "スクリプトを動かす属性を削除", "removed an attribute that runs script"},
    {Say::kRemovedStyleSheet, "スタイルシートを削除", "removed a style sheet"},
    {Say::kRemovedForeign, "SVG・MathML を削除", "removed SVG or MathML"},
    {Say::kRemovedFrame, "フレームを削除", "removed a frame"},
    {Say::kRemovedForm, "フォームの部品を削除", "removed a part of a form"},
    {Say::kRemovedObject, "埋め込みオブジェクトを削除", "removed an embedded object"},
    {Say::kRemovedMetadata, "文書情報の要素を削除", "removed an element about the document"},
    {Say::kRemovedTemplate, "テンプレートを削除", "removed a template"},
    {Say::kRemovedElement, "許可していない要素を削除", "removed an element that is not allowed"},
    {Say::kRemovedMisplaced, "置けない場所の要素を削除", "removed an element out of place"},
    {Say::kRemovedTooDeep, "深すぎる入れ子を平らに", "flattened what was nested too deep"},
    {Say::kRemovedComment, "コメントを削除", "removed a comment"},
    {Say::kRemovedUnfinished, "閉じていないタグを削除", "removed a tag without end"},
    {Say::kRemovedAttribute, "許可していない属性を削除",
     "removed an attribute that is not allowed"},
    {Say::kRemovedAddress, "許可していないリンク先を削除",
     "removed an address that is not allowed"},
    {Say::kRemovedUserInfo, "リンク先のユーザー名を削除", "removed a user name in an address"},
    {Say::kRemovedRemoteImage, "外部の画像を止めた", "blocked a remote image"},
    {Say::kRemovedEmbeddedImage, "許可していない埋め込み画像を削除",
     "removed an embedded image that is not allowed"},
    {Say::kRemovedStyle, "許可していないスタイルを削除", "removed a style that is not allowed"},
    {Say::kLinkOtherHost, "リンク「{0}」の実際の行き先は {1}", "the link \"{0}\" leads to {1}"},
    {Say::kLinkUserInfo, "リンク「{0}」のアドレスはユーザー名で行き先 {1} を隠している",
     "the link \"{0}\" hides its host {1} behind a user name"},
    {Say::kLinkScripts, "リンク「{0}」の行き先 {1} は紛らわしい文字を混ぜている",
     "the link \"{0}\" leads to {1}, which mixes letters that look alike"},

    // address
    {Say::kAddressHelp, "メールアドレスを検査し、分解し、組み立てる",
     "Check, take apart and build mail addresses"},
    {Say::kAddressExamples,
     "  lumr address check a@b.jp 'a;b@c.jp'     正しいか、どの文字が違うか\n  lumr address parse "
     "'\"山田, 太郎\" <t@b.jp>, k@b.jp (K)'\n                                          "
     "アドレスと名前\n  lumr address format t@b.jp '山田, 太郎'  必要なら引用符を付ける\n",
     "  lumr address check a@b.jp 'a;b@c.jp'    valid or not, and which character\n  lumr address "
     "parse '\"Doe, J\" <j@b.jp>, k@b.jp (K)'\n                                          addresses "
     "and names\n  lumr address format j@b.jp 'Doe, J'     with quotes where needed\n"},
    {Say::kAddressCheck, "入力欄のアドレスや名前を検査する",
     "Check what is typed into account and address fields"},
    {Say::kAddressParse, "一覧の各アドレスをアドレスと名前に分ける",
     "Print address and name of each entry of a list"},
    {Say::kAddressFormat, "アドレスと名前から 1 件を組み立てる",
     "Build an entry from an address and a name"},
    {Say::kAddressSplit, "一覧を 1 件ずつに分ける", "Print the entries of a list, one a line"},
    {Say::kAddressValue, "検査する値（なければ、または - なら標準入力の各行）",
     "Values to check (none, or -: the lines of standard input)"},
    {Say::kAddressAs,
     "何として検査するか: address（既定）, pattern, name, organization, server, account",
     "What it is: address (default), pattern, name, organization,\nserver, account"},
    {Say::kAddressList, "アドレスの一覧（なければ、または - なら標準入力の各行）",
     "Lists of addresses (none, or -: the lines of standard input)"},
    {Say::kAddressOne, "アドレス", "The address"},
    {Say::kAddressName, "名前", "The name"},
    {Say::kAddressPlain, "引用符を付けない", "Put no quotes around the name"},
    {Say::kAddressGood, "正しい形です", "valid"},
    {Say::kAtCharacter, "（{0} 文字目から: {1}）", " (from character {0}: {1})"},
    {Say::kUnknownAddressKind,
     "「{0}」は知りません。address, pattern, name, organization, server, account があります",
     "unknown kind '{0}'; there are address, pattern, name, organization, server and account"},

    // date
    {Say::kDateHelp, "Date ヘッダーなどの日時を読む", "Read dates as mail has them"},
    {Say::kDateExamples,
     "  grep ^Date: *.eml -h | lumr date          RFC 5322 の形で\n  lumr date --format ja "
     "'2004/5/6 7:08 JST'\n  lumr date --zone +0900 --format iso8601 'Thu, 6 May 2004 07:08:09 "
     "-0700 (PDT)'\n",
     "  grep -h ^Date: *.eml | lumr date          in the form of RFC 5322\n  lumr date --format ja "
     "'2004/5/6 7:08 JST'\n  lumr date --zone +0900 --format iso8601 'Thu, 6 May 2004 07:08:09 "
     "-0700 (PDT)'\n"},
    {Say::kDateText, "日時（なければ、または - なら標準入力の各行）",
     "Dates (none, or -: the lines of standard input)"},
    {Say::kDateFormat, "出力の形: rfc5322（既定）, iso8601, ja, unix",
     "Form of the output: rfc5322 (default), iso8601, ja, unix"},
    {Say::kDateZone, "この時差の時刻にして出力する", "Print the time in this zone"},
    {Say::kDateMissingZone, "時差のない日時の時差（既定 +0000）",
     "The zone of dates that give none (default +0000)"},
    {Say::kDateNow, "現在の日時", "The present time"},
    {Say::kUnknownDateFormat, "形「{0}」は知りません。rfc5322, iso8601, ja, unix があります",
     "unknown form '{0}'; there are rfc5322, iso8601, ja and unix"},
    {Say::kBadZone, "時差「{0}」が読めません。+0900 や JST のように書いてください",
     "'{0}' is no zone; write +0900 or JST"},
    {Say::kDateAt, "{0}（{1} 文字目から: {2}）", "{0} (from character {1}: {2})"},
    {Say::kDateNoDate, "年月日がそろっていません", "year, month and day are not all there"},
    {Say::kDateUnexpected, "日時として読めません", "this is no part of a date"},
    {Say::kDateTwice, "同じ項目が 2 度あります", "this is there twice"},
    {Say::kDateYear, "年は 1900 から 9999 までです", "the year is not 1900 to 9999"},
    {Say::kDateMonth, "その月はありません", "there is no such month"},
    {Say::kDateDay, "その月にその日はありません", "the month has no such day"},
    {Say::kDateHour, "その時はありません", "there is no such hour"},
    {Say::kDateMinute, "その分はありません", "there is no such minute"},
    {Say::kDateSecond, "その秒はありません", "there is no such second"},
    {Say::kDateZoneBad, "その時差はありません", "there is no such zone"},
    {Say::kDateAmbiguousOrder, "月と日のどちらが先か分かりません",
     "it is unclear whether day or month comes first"},
    {Say::kDateAssumedTime, "時刻がありません。0 時としました",
     "there is no time; 00:00:00 was taken"},
    {Say::kDateAssumedZone, "時差がありません。--missing-zone の時差（既定 +0000）としました",
     "there is no zone; that of --missing-zone (default +0000) was taken"},
    {Say::kDateAssumedUtc, "知らない時差の名前です。+0000 としました",
     "unknown name of a zone; +0000 was taken"},
    {Say::kDateAssumedYear, "年が 4 桁ではありません", "the year has less than four digits"},
    {Say::kDateAssumedWeekday, "曜日が日付と合いません", "the weekday is not that of the date"},
    {Say::kDateAssumedSign, "時差に符号がありません。+ としました",
     "the zone has no sign; + was taken"},
    {Say::kDateAssumedConflict, "時差が 2 つあり、食い違っています",
     "there are two zones that differ"},
    {Say::kDateAssumedIgnored, "日時ではない部分を無視しました",
     "text that is no part of the date was ignored"},
    {Say::kDateAssumedOrder, "年、月、日の順としました",
     "the order was taken to be year, month, day"},
};
static_assert(std::size(kTexts) == static_cast<std::size_t>(Say::kCount));

constexpr bool InOrder() {
  for (std::size_t i = 0; i < std::size(kTexts); ++i) {
    if (kTexts[i].row != static_cast<Say>(i)) return false;
  }
  return true;
}
static_assert(InOrder());

std::string_view Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string_view() : std::string_view(value);
}

}  // namespace

std::string Text(Say row, std::initializer_list<std::string_view> arguments) {
  const TextRow& texts = kTexts[static_cast<std::size_t>(row)];
  const std::string_view pattern =
      GetMessageLanguage() == MessageLanguage::kJapanese ? texts.japanese : texts.english;
  std::string text;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const bool isMark = pattern[i] == '{' && i + 2 < pattern.size() && pattern[i + 2] == '}';
    const auto number = isMark ? static_cast<std::size_t>(pattern[i + 1] - '0') : 0;
    if (!isMark || number >= arguments.size()) {
      text += pattern[i];
      continue;
    }
    text += arguments.begin()[number];
    i += 2;
  }
  return text;
}

bool ChooseLanguage(std::string_view wanted) {
  if (!wanted.empty() && wanted != "ja" && wanted != "en") return false;
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    if (wanted.empty()) wanted = Environment(name);
  }
  SetMessageLanguage(wanted.substr(0, 2) == "ja" ? MessageLanguage::kJapanese
                                                 : MessageLanguage::kEnglish);
  return true;
}

}  // namespace lumr::tool
