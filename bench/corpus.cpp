#include "corpus.h"

#include <iconv.h>

#include <stdexcept>

namespace lumr::bench {
namespace {

// Only characters whose code in Shift_JIS, EUC-JP and ISO-2022-JP all converters agree on: no
// wave dash, no full-width minus, nothing of NEC's or IBM's.
constexpr std::string_view kSubjects[] = {
    "先日の会議",       "添付の資料",         "来週の予定",         "お見積りの件",
    "契約書の内容",     "新しいサーバー",     "社内システム",       "メールソフトの設定",
    "文字コードの変換", "請求書の発送",       "図書館の蔵書目録",   "研究発表会の日程",
    "ご注文の商品",     "データベースの移行", "ホームページの更新", "プリンターの不具合",
    "議事録の下書き",   "テストの結果",       "マニュアルの第３章", "ネットワークの障害"};
constexpr std::string_view kObjects[] = {
    "詳しい説明",   "変更点の一覧",       "担当者の連絡先", "確認の手順",       "今後の日程",
    "修正版",       "バックアップの方法", "お客様のご意見", "アンケートの集計", "開発環境",
    "必要なソフト", "参加者の名簿",       "費用の概算",     "アドレス帳",       "受信フォルダー"};
constexpr std::string_view kVerbs[] = {
    "お送りいたします。",     "ご確認ください。",         "まだ届いておりません。",
    "検討しているところです", "変更になりました。",       "見直す必要がありそうです。",
    "担当の者に伝えました。", "お知らせいただけますか？", "作成してみたのですが、",
    "うまく動かないようです", "完了いたしました。",       "どうかよろしくお願いします。",
    "印刷しておきました。",   "修正していただけませんか", "明日までに返信します。"};
constexpr std::string_view kOpeners[] = {"いつもお世話になっております。",
                                         "お疲れさまです。",
                                         "さて、",
                                         "なお、",
                                         "また、",
                                         "ところで、",
                                         "ご連絡ありがとうございました。",
                                         "早速のお返事、感謝します。",
                                         "恐れ入りますが、",
                                         "念のため、",
                                         "以前お話ししたとおり、",
                                         "「お願い」ですが、"};
constexpr std::string_view kParticles[] = {"について、", "に関して", "につきましては、",
                                           "の",         "と",       "（暫定）を含めた",
                                           "から",       "では、",   "に加えて"};
constexpr std::string_view kLatin[] = {
    "Windows",    "PDF",  "http://www.example.co.jp/doc/index.html",
    "10:30",      "2024", "ISO-2022-JP",
    "v2.1.5",     "CPU",  "info@example.jp",
    "readme.txt", "OK",   "120,000"};
// Frequent kanji; pairs of them stand in for the vocabulary that the lists above have not, so
// that a converter sees many cells and not the same hundred.
constexpr std::u16string_view kKanji =
    u"一右雨円王音下火花貝学気九休玉金空月犬見五口校左三山子四糸字耳七車手十出女小上森人水正生青夕"
    u"石赤千川先早草足村大男竹中虫町天田土二日入年白八百文木本名目立力林六引羽雲園遠何科夏家歌画回"
    u"会"
    u"海絵外角楽活間丸岩顔汽記帰弓牛魚京強教近兄形計元言原戸古午後語工公広交光考行高黄合谷国黒今才"
    u"細作算止市矢姉思紙寺自時室社弱首秋週春書少場色食心新親図数西声星晴切雪船線前組走多太体台地池"
    u"知茶昼長鳥朝直通弟店点電刀冬当東答頭同道読内南肉馬売買麦半番父風分聞米歩母方北毎妹万明鳴毛門"
    u"夜野友用曜来里理話悪安暗医委意育員院飲運泳駅央横屋温化荷界開階寒感漢館岸起期客究急級宮球去橋"
    u"業曲局銀区苦具君係軽血決研県庫湖向幸港号根祭皿仕死使始指歯詩次事持式実写者主守取酒受州拾終習"
    u"集住重宿所暑助昭消商章勝乗植申身神真深進世整昔全相送想息速族他打対待代第題炭短談着注柱丁帳調"
    u"追定庭笛鉄転都度投豆島湯登等動童農波配倍箱畑発反坂板皮悲美鼻筆氷表秒病品負部服福物平返勉放味"
    u"命面問役薬由油有遊予羊洋葉陽様落流旅両緑礼列練路和";
constexpr std::string_view kHiragana[] = {
    "あ", "い", "か", "が", "く", "け", "し", "す", "た", "っ", "て", "と", "な", "に", "の",
    "は", "ま", "も", "ら", "り", "る", "れ", "を", "ん", "よ", "う", "え", "お", "こ", "さ"};
constexpr std::string_view kEnglish[] = {
    "the",  "meeting",  "of",      "please", "report", "we",      "server",     "and",    "to",
    "is",   "attached", "in",      "for",    "you",    "message", "would",      "have",   "a",
    "been", "archive",  "release", "when",   "it",     "version", "on",         "thanks", "library",
    "that", "regards",  "with",    "next",   "week",   "mail",    "conversion", "be",     "not"};
constexpr std::string_view kWesternWords[] = {
    "für",   "général", "Straße", "déjà",   "être",  "über",   "naïve", "Größe", "où",
    "le",    "die",     "und",    "avec",   "nous",  "Anlage", "cœur",  "das",   "réunion",
    "“Ja”",  "20 €",    "–",      "l’été",  "nicht", "demain", "wir",   "pour",  "Übersicht",
    "merci", "von",     "les",    "können", "votre", "Schöne", "est",   "mit",   "Grüße"};

template <typename T, std::size_t N>
const T& Pick(const T (&words)[N], Random& random) {
  return words[random.Below(N)];
}

void AppendKanji(Random& random, std::string& out) {
  const char16_t unit = kKanji[random.Below(kKanji.size())];
  out += static_cast<char>(0xE0 | (unit >> 12));
  out += static_cast<char>(0x80 | (unit >> 6 & 0x3F));
  out += static_cast<char>(0x80 | (unit & 0x3F));
}

void AppendNoun(Random& random, std::string& out) {
  if (random.OneIn(2)) {
    out += random.OneIn(2) ? Pick(kSubjects, random) : Pick(kObjects, random);
    return;
  }
  AppendKanji(random, out);
  AppendKanji(random, out);
  if (random.OneIn(3)) out += Pick(kHiragana, random);
}

std::string JapaneseSentence(Random& random) {
  std::string out;
  if (random.OneIn(3)) out += Pick(kOpeners, random);
  AppendNoun(random, out);
  out += Pick(kParticles, random);
  if (random.OneIn(4)) out += Pick(kLatin, random);
  AppendNoun(random, out);
  out += random.OneIn(2) ? "を" : "は";
  return out += Pick(kVerbs, random);
}

// Wrapped by hand at about 36 full-width characters, as mail is.
std::string JapaneseLine(Random& random) {
  if (random.OneIn(12)) return {};
  std::string line = random.OneIn(8) ? "> " : "";
  while (line.size() < 80) line += JapaneseSentence(random);
  return line;
}

template <std::size_t N>
std::string WordLine(const std::string_view (&words)[N], Random& random) {
  if (random.OneIn(12)) return {};
  std::string line = random.OneIn(8) ? "> " : "";
  while (line.size() < 64) {
    line += Pick(words, random);
    line += random.OneIn(9) ? ", " : " ";
    if (random.OneIn(20)) line += std::to_string(random.Below(3000)) + " ";
  }
  line.back() = '.';
  return line;
}

std::string RandomBytes(std::size_t size) {
  Random random(3);
  std::string out(size, '\0');
  for (char& byte : out) byte = static_cast<char>(random.Next() >> 56);
  return out;
}

bool StartsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

// The longest start of a UTF-8 line that takes at most size bytes in the charset, filled up.
std::string MakeRecord(const std::string& line, const std::string& charset, std::size_t size) {
  std::string_view head(line);
  std::string record = EncodeText(head, charset);
  while (record.size() > size) {
    do head.remove_suffix(1);
    while (!StartsCharacter(line[head.size()]));
    record = EncodeText(head, charset);
  }
  const std::string filler = EncodeText("x", charset);
  while (record.size() + filler.size() <= size) record += filler;
  return record;
}

}  // namespace

// "敏腕": lead bytes 95 and 98, both of many frequent kanji.
const std::string_view kAbsentWord = "\x95\x71\x98\x72";

std::uint64_t Random::Next() {  // splitmix64
  std::uint64_t z = state_ += 0x9E3779B97F4A7C15;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
  return z ^ (z >> 31);
}

const char* CorpusName(Corpus corpus) {
  constexpr const char* kNames[] = {"Japanese", "ASCII", "Western", "random"};
  return kNames[static_cast<int>(corpus)];
}

std::string MakeLine(Corpus corpus, Random& random) {
  switch (corpus) {
    case Corpus::kJapanese:
      return JapaneseLine(random);
    case Corpus::kWestern:
      return WordLine(kWesternWords, random);
    default:
      return WordLine(kEnglish, random);
  }
}

std::string EncodeText(std::string_view utf8, const std::string& charset) {
  const iconv_t handle = iconv_open(charset.c_str(), "UTF-8");
  if (handle == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("no charset " + charset);
  std::string out(utf8.size() * 4 + 16, '\0');
  char* in = const_cast<char*>(utf8.data());
  std::size_t inLeft = utf8.size();
  char* to = out.data();
  std::size_t outLeft = out.size();
  const bool done = iconv(handle, &in, &inLeft, &to, &outLeft) != static_cast<std::size_t>(-1) &&
                    iconv(handle, nullptr, nullptr, &to, &outLeft) != static_cast<std::size_t>(-1);
  iconv_close(handle);
  if (!done) throw std::runtime_error("text is not in charset " + charset);
  out.resize(out.size() - outLeft);
  return out;
}

std::string MakeText(Corpus corpus, const std::string& charset, std::size_t size) {
  if (corpus == Corpus::kRandom) return RandomBytes(size);
  Random random(1);
  std::string out;
  out.reserve(size + 4096);
  while (out.size() < size) {
    // A few hundred lines a call of iconv; towards the end one by one, to come near to size.
    std::string lines;
    do lines += MakeLine(corpus, random) + "\r\n";
    while (lines.size() < 1 << 16 && out.size() + 5 * lines.size() < size);
    const std::string encoded = EncodeText(lines, charset);
    if (out.size() + encoded.size() > size) break;
    out += encoded;
  }
  return out + MakeRecord(MakeLine(corpus, random), charset, size - out.size());
}

std::string MakeRecords(Corpus corpus, const std::string& charset, std::size_t count,
                        std::size_t size) {
  Random random(2);
  std::string out;
  for (std::size_t i = 0; i < count; ++i) {
    std::string line;
    while (line.size() < 3 * size) line += MakeLine(corpus, random);
    out += MakeRecord(line, charset, size);
  }
  return out;
}

}  // namespace lumr::bench
