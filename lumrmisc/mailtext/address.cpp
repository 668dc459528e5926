#include "lumrmisc/mailtext/address.h"

#include <algorithm>
#include <iterator>

#include "lumrmisc/buffer/characterform_internal.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/buffer/texttool.h"
#include "lumrmisc/charset/japanese.h"
#include "lumrmisc/mailtext/address_internal.h"

namespace lumr {
namespace {

using address::EntryParts;
using address::Fault;
using address::FindDelimiter;

constexpr std::size_t kNone = std::string_view::npos;

// ---- Checks ----

// The message of each rule; 0 where the rule does not hold for the field.
struct FieldRules {
  AddressField field;
  unsigned empty;
  unsigned noAt;
  unsigned forbidden;
  unsigned doubleByte;
  unsigned katakana;
  unsigned machineDependent;
};
constexpr FieldRules kFields[] = {
    {AddressField::kAddress, 3103, 3104, 3105, 3106, 3132, 0},
    {AddressField::kWildAddress, 3103, 0, 3105, 3106, 3132, 0},
    {AddressField::kName, 0, 0, 0, 0, 3116, 3129},
    {AddressField::kOrganisation, 0, 0, 0, 0, 3130, 3131},
    {AddressField::kServer, 3107, 0, 3108, 3109, 0, 0},
    {AddressField::kAccount, 3110, 0, 0, 3111, 0, 0},
};

constexpr AsciiSet kForbidden("()<>;\\\"");

int FindLeadByte(std::string_view text) {
  const MbcsPage& page = CurrentMbcsPage();
  const auto found =
      std::find_if(text.begin(), text.end(), [&page](char c) { return page.IsLead(c); });
  return found == text.end() ? -1 : static_cast<int>(found - text.begin());
}

int FindForbidden(std::string_view text) {
  return static_cast<int>(FindCharacterOf(text, kForbidden));  // npos becomes -1
}
int FindKatakana(std::string_view text) {
  return FindHankakuKatakana(text.data(), static_cast<int>(text.size()));
}
int FindMachineDependent(std::string_view text) {
  return FindMachineDependChar(text.data(), static_cast<int>(text.size()));
}

int Check(AddressField field, const char* text, CStringA& message) {
  const AddressProblem problem = FindAddressProblem(field, CountedText(text));
  message.clear();
  if (problem.message != 0) message = MessageText(problem.message);
  return problem.result;
}

// ---- Taking off ends ----

template <class Unit>
void TakeOffEnds(std::basic_string<Unit>& text, Unit first, Unit last) {
  std::basic_string_view<Unit> rest = TrimmedText<Unit>(text);
  if (!rest.empty() && rest.front() == first) rest.remove_prefix(1);
  if (!rest.empty() && rest.back() == last) rest.remove_suffix(1);
  text = std::basic_string<Unit>(rest);
}

// ---- Making an address ----

// Whether a name brings its quotes along. A last quote that belongs to a backslash closes nothing.
template <class Unit>
bool IsEnclosed(std::basic_string_view<Unit> name) {
  if (name.size() < 3 || name.front() != Unit('"') || name.back() != Unit('"')) return false;
  if (name[name.size() - 2] != Unit('\\')) return true;
  if constexpr (sizeof(Unit) == 1) {
    return CurrentMbcsPage().IsTrailInContext(name, name.size() - 2);
  } else {
    return false;
  }
}

template <class Unit>
void AddName(std::basic_string_view<Unit> name, int quoteName, std::basic_string<Unit>& out) {
  static constexpr AsciiSet kQuotedFor("()<>[]:;@,.\"\\");
  if (quoteName != 0 && IsEnclosed(name)) name = name.substr(1, name.size() - 2);
  if (quoteName != 0 && FindCharacterOf(name, kQuotedFor) != kNone) {
    AddQuotedToken(name.data(), static_cast<int>(name.size()), out);
  } else {
    out += name;
  }
}

template <class Unit>
std::basic_string<Unit> Assemble(std::basic_string_view<Unit> address,
                                 std::basic_string_view<Unit> name, int quoteName) {
  std::basic_string<Unit> text;
  text.reserve(address.size() + name.size() + 8);
  AddName(name, quoteName, text);
  if (text.empty()) return text += address;
  text += Unit(' ');
  text += Unit('<');
  text += address;
  return text += Unit('>');
}

// ---- Taking one apart ----

bool IsPlaceholder(std::string_view text) {
  return text.size() >= 4 && text.substr(0, 2) == "%(" && text.back() == ')';
}

bool HasAt(std::string_view text) {
  return FindCharacter(text, '@') != kNone;
}

// A parenthesised part that counts, as GetParenthesisToken finds it.
bool HasParentheses(std::string_view text) {
  if (text.find('(') == kNone) return false;
  return NestingScanner<char>(text, 0).Next('(') == NestingMark::kOpen;
}

void Trim(CStringA& text) {
  const std::string_view rest = TrimmedText<char>(text);
  if (rest.size() != text.size()) text = CStringA(rest);
}

EntryParts Faulty(Fault fault, std::string_view text, std::string_view faulty) {
  EntryParts parts;
  parts.fault = fault;
  parts.faulty = faulty;
  parts.name = text;
  return parts;
}

// The name goes on in its tail, and is trimmed as a whole.
EntryParts Named(std::string_view address, std::string_view name, std::string_view tail = {}) {
  EntryParts parts;
  parts.address = TrimmedText(address);
  const std::string_view begin = TrimmedText(name);
  const std::string_view end = TrimmedText(tail);
  if (begin.empty() || end.empty()) {
    parts.name = begin.empty() ? end : begin;
  } else {
    parts.name = name.substr(static_cast<std::size_t>(begin.data() - name.data()));
    parts.nameTail =
        tail.substr(0, static_cast<std::size_t>(end.data() - tail.data()) + end.size());
  }
  parts.isQuoted = !parts.name.empty() && parts.name.front() == '"';
  return parts;
}

// A text without angle brackets.
EntryParts WithoutBrackets(std::string_view text) {
  if (IsPlaceholder(text)) return Named(text, {});
  if (HasParentheses(text)) {
    EntryParts parts = Named(text, {});
    parts.isComment = true;
    return parts;
  }
  const bool isWholeQuoted = text.front() == '"' && text.back() == '"';
  return !isWholeQuoted && HasAt(text) ? Named(text, {}) : Named({}, text);
}

}  // namespace

namespace address {

EntryParts TakeApart(std::string_view text) {
  text = TrimmedText(text);
  if (text.empty()) return {};
  const std::size_t last = text.rfind('<');
  if (last != kNone && text.back() == '>') {
    return Named(text.substr(last + 1, text.size() - last - 2), text.substr(0, last));
  }

  Fault fault;
  const std::size_t open = FindDelimiter(text, 0, '<', fault);
  if (fault != kNoFault) return Faulty(fault, text, text);
  if (open == kNone) return WithoutBrackets(text);

  const std::size_t close = FindDelimiter(text, open + 1, '>', fault);
  if (fault != kNoFault) return Faulty(fault, text, text.substr(open + 1));
  if (close == kNone) return Named(text.substr(open + 1), text.substr(0, open));
  return Named(text.substr(open + 1, close - open - 1), text.substr(0, open),
               text.substr(close + 1));
}

void TakeTexts(const EntryParts& parts, CStringA& address, CStringA& name) {
  if (parts.isComment) {
    const std::string_view text = parts.address;
    GetParenthesisToken(text.data(), static_cast<int>(text.size()), address, name);
    Trim(address);
    Trim(name);
    return;
  }
  address = parts.address;
  if (!parts.isQuoted) {
    name = parts.name;
    name += parts.nameTail;
    return;
  }
  CStringA joined;
  std::string_view inside = parts.name;
  if (!parts.nameTail.empty()) {
    joined.append(parts.name).append(parts.nameTail);
    inside = joined;
  }
  inside.remove_prefix(1);
  if (!inside.empty() && inside.back() == '"') inside.remove_suffix(1);
  GetQuotedToken(inside.data(), static_cast<int>(inside.size()), name);
}

}  // namespace address

AddressProblem FindAddressProblem(AddressField field, std::string_view text) {
  const FieldRules& rules =
      *std::find_if(std::begin(kFields), std::end(kFields),
                    [field](const FieldRules& row) { return row.field == field; });
  if (text.empty())
    return rules.empty == 0 ? AddressProblem{} : AddressProblem{-1, rules.empty, -1};
  if (rules.noAt != 0 && !HasAt(text)) return {1, rules.noAt, -1};
  const struct {
    unsigned message;
    int result;
    int (*find)(std::string_view);
  } searches[] = {{rules.forbidden, 2, FindForbidden},
                  {rules.doubleByte, 3, FindLeadByte},
                  {rules.katakana, 3, FindKatakana},
                  {rules.machineDependent, 3, FindMachineDependent}};
  for (const auto& search : searches) {
    if (search.message == 0) continue;
    const int position = search.find(text);
    if (position >= 0) return {search.result, search.message, position};
  }
  return {};
}

int CheckEMailAddress(const char* address, CStringA& message) {
  return Check(AddressField::kAddress, address, message);
}
int CheckWildEMailAddress(const char* pattern, CStringA& message) {
  return Check(AddressField::kWildAddress, pattern, message);
}
int CheckEMailName(const char* name, CStringA& message) {
  return Check(AddressField::kName, name, message);
}
int CheckEMailOrgani(const char* organisation, CStringA& message) {
  return Check(AddressField::kOrganisation, organisation, message);
}
int CheckServerName(const char* server, int allowEmpty, CStringA& message) {
  if (allowEmpty != 0 && CountedText(server).empty()) {
    message.clear();
    return 0;
  }
  return Check(AddressField::kServer, server, message);
}
int CheckAccountName(const char* account, CStringA& message) {
  return Check(AddressField::kAccount, account, message);
}

void ExcludeAngleBracket(CStringA& text) {
  TakeOffEnds(text, '<', '>');
}
void ExcludeQuote(CStringA& text) {
  TakeOffEnds(text, '"', '"');
}
void ExcludeQuote(CStringW& text) {
  TakeOffEnds(text, u'"', u'"');
}

void ExtractLastMessageID(CStringA& text) {
  std::string_view id = TrimmedText<char>(text);
  const std::size_t open = id.rfind('<');
  const std::size_t close = open == kNone ? kNone : id.find('>', open);
  if (close != kNone) id = id.substr(open + 1, close - open - 1);
  text = CStringA(id);
}

int SplitMailAddr(const char* text, CStringA& address, CStringA& name, CStringA& message) {
  return SplitMailAddr(CountedText(text), address, name, message);
}

int SplitMailAddr(std::string_view text, CStringA& address, CStringA& name, CStringA& message) {
  const EntryParts parts = address::TakeApart(text);
  address::TakeTexts(parts, address, name);
  address::SetMessage(parts.fault, parts.faulty, message);
  return parts.fault == address::kNoFault;
}

CStringA MakeAddress(const char* address, const char* name, int quoteName) {
  return Assemble(CountedText(address), CountedText(name), quoteName);
}
CStringW MakeAddress(const char16_t* address, const char16_t* name, int quoteName) {
  return Assemble<char16_t>(EvenUnits(address), EvenUnits(name), quoteName);
}

CStringA MakeAddress2(const char* address, const char* name, int quoteName) {
  const std::string_view nameText = CountedText(name);
  if (CountedText(address).empty()) return CStringA(nameText);
  return MakeAddress(address, name, quoteName);
}
CStringW MakeAddress2(const char16_t* address, const char16_t* name, int quoteName) {
  if (CountedUnits(address).empty()) return CStringW(EvenUnits(name));
  return MakeAddress(address, name, quoteName);
}

CStringA CustomizeAddress(const char* text, const char* defaultAddress, const char* defaultName,
                          int quoteName) {
  CStringA address;
  CStringA name;
  address::TakeTexts(address::TakeApart(CountedText(text)), address, name);
  return Assemble(address.empty() ? CountedText(defaultAddress) : std::string_view(address),
                  name.empty() ? CountedText(defaultName) : std::string_view(name), quoteName);
}

void AddMailtoParam(const char* key, const char* value, CStringA& url) {
  url += url.find('?') == kNone ? '?' : '&';
  url.append(CountedText(key)).append("=").append(CountedText(value));
}

}  // namespace lumr
