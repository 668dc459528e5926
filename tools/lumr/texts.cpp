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
     "この lumr にはメールのコマンド（show）が入っていません。GMime なしで作られています。",
     "The mail commands (show) are missing in this build: it was made without GMime."},
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
    {Say::kUnknownTarget, "文字コード「{0}」には変換できません",
     "cannot convert to the charset '{0}'"},
    {Say::kUnknownLanguage, "言語「{0}」は知りません。ja か en を指定してください",
     "unknown language '{0}'; there are ja and en"},
    {Say::kUsageError, "使い方が違います: {0}", "wrong usage: {0}"},
    {Say::kTryHelp, "{0} --help で説明を表示します", "{0} --help tells more"},
    {Say::kStdinInPlace, "--in-place にはファイル名が要ります。標準入力は書き換えられません",
     "--in-place needs the names of files; standard input cannot be rewritten"},
    {Say::kNoMailCommands,
     "この lumr にはメールのコマンドが入っていません。GMime なしで作られています",
     "the mail commands are missing in this build: it was made without GMime"},
    {Say::kBinHexDecodeOnly, "BinHex への符号化はできません。復号だけです",
     "BinHex can only be decoded"},
    {Say::kUnknownEncoding,
     "符号化「{0}」は知りません。base64, qp, uu, binhex, hex, url, imap があります",
     "unknown encoding '{0}'; there are base64, qp, uu, binhex, hex, url and imap"},
    {Say::kMalformedInput, "{0} として正しくないところがあります。読めた部分だけを出力しました",
     "the input is not well-formed {0}; what could be read was written"},
    {Say::kBadTextInput, "正しい UTF-8 ではありません。読めない部分は置き換えました",
     "the input is not valid UTF-8; what could not be read was replaced"},

    // convert
    {Say::kLostCharacters, "{0} 文字が {1} に変換できず、置き換えました（位置 {2}）",
     "characters that {1} lacks were replaced: {0} (at byte {2})"},
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
    {Say::kHtmlSource, "HTML だけのメールなので、そのソースを表示します",
     "there is only HTML; its source is shown"},
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
    {Say::kNoSecretInFile, "1 行目に使える文字列がありません", "its first line cannot be used"},

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
