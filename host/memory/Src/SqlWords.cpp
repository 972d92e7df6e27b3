#include "SqlWords.h"

#include <algorithm>
#include <optional>

#include "Host/BaseStringUtil.h"
#include "Host/KXDataType.h"
#include "HostMemory/RepositoryNames.h"

namespace {

constexpr std::wstring_view kWords[] = {
    L"ALL",       L"AND",     L"ANY",      L"AS",       L"ASC",          L"BETWEEN",
    L"BOTH",      L"BY",      L"CASE",     L"CAST",     L"CURRENT_DATE", L"CURRENT_TIMESTAMP",
    L"DATE",      L"DAY",     L"DESC",     L"DISTINCT", L"DOUBLE",       L"ELSE",
    L"END",       L"ESCAPE",  L"EXISTS",   L"FALSE",    L"FOR",          L"FROM",
    L"HOUR",      L"IN",      L"INTERVAL", L"IS",       L"LEADING",      L"LIKE",
    L"MINUTE",    L"MONTH",   L"NOT",      L"NULL",     L"OR",           L"ORDER",
    L"PRECISION", L"QUARTER", L"SECOND",   L"THEN",     L"TIME",         L"TRAILING",
    L"TRUE",      L"WEEK",    L"WHEN",     L"YEAR",     L"CURRENT_TIME"};

bool IsSqlWord(std::wstring_view word) {
  if (SUKXDataTypeUtility::GetKXDataTypeFromSingleWordName(KXString(word)) != KXUnknown) return true;
  return std::ranges::any_of(
      kWords, [word](std::wstring_view known) { return BaseStringUtil::IsCaseInsensitiveMatch(known, word); });
}

bool IsDigit(wchar_t c) { return L'0' <= c && c <= L'9'; }
bool IsWordStart(wchar_t c) {
  return (L'a' <= c && c <= L'z') || (L'A' <= c && c <= L'Z') || c == L'_' || c >= 0x80 || c < 0;
}
bool IsWordPart(wchar_t c) { return IsWordStart(c) || IsDigit(c) || c == L'$'; }

/// Reads names off the front of a text.
class Scanner {
 public:
  explicit Scanner(std::wstring_view text) : m_text(text) {}

  bool IsAtEnd() const { return m_place == m_text.size(); }
  wchar_t Peek() const { return IsAtEnd() ? L'\0' : m_text[m_place]; }
  void Skip() { ++m_place; }
  std::size_t GetPlace() const { return m_place; }

  template <class Predicate>
  std::wstring_view TakeWhile(Predicate predicate) {
    const std::size_t start = m_place;
    while (!IsAtEnd() && predicate(Peek())) ++m_place;
    return m_text.substr(start, m_place - start);
  }

  void SkipBlanks() {
    TakeWhile([](wchar_t c) { return c == L' ' || c == L'\t' || c == L'\n' || c == L'\r'; });
  }

  /// What stands between the quote here and the one that ends it, doubled ones halved; nothing if none ends it.
  std::optional<KXString> TakeQuoted() {
    const wchar_t quote = Peek();
    KXString content;
    for (Skip(); !IsAtEnd(); Skip()) {
      if (Peek() == quote) {
        Skip();
        if (Peek() != quote || IsAtEnd()) return content;
      }
      content.append(Peek());
    }
    return std::nullopt;
  }

  bool IsAtName() const { return !IsAtEnd() && (IsWordStart(Peek()) || Peek() == L'"'); }

  /// The parts of a name that begins here; nothing if a quote does not end.
  std::optional<SqlName> TakeName() {
    SqlName name;
    do {
      if (!name.m_path.empty()) Skip();  // the point
      if (Peek() == L'"') {
        const std::optional<KXString> part = TakeQuoted();
        if (!part) return std::nullopt;
        name.m_path.push_back(*part);
        name.m_bQuoted = true;
      } else {
        name.m_path.push_back(KXString(TakeWhile(IsWordPart)));
      }
    } while (Peek() == L'.' && m_place + 1 < m_text.size() &&
             (IsWordStart(m_text[m_place + 1]) || m_text[m_place + 1] == L'"'));
    return name;
  }

 private:
  std::wstring_view m_text;
  std::size_t m_place = 0;
};

bool IsPlainWord(const KXString& part) {
  return !part.empty() && IsWordStart(part[0]) && std::ranges::all_of(part.view(), IsWordPart);
}

/// Reads the name in VALUEOF(name), behind its parenthesis.
std::optional<SqlName> TakeVariable(Scanner& scanner) {
  scanner.SkipBlanks();
  if (!scanner.IsAtName()) return std::nullopt;
  std::optional<SqlName> name = scanner.TakeName();
  scanner.SkipBlanks();
  if (!name || scanner.Peek() != L')') return std::nullopt;
  scanner.Skip();
  name->m_bVariable = true;
  return name;
}

/// Reads a name and takes it up if it names an object. False if it cannot be read.
bool TakeNameOrWord(Scanner& scanner, std::vector<SqlName>& names) {
  std::optional<SqlName> name = scanner.TakeName();
  if (!name) return false;
  const bool bWord = name->m_path.size() == 1 && !name->m_bQuoted;
  scanner.SkipBlanks();
  if (scanner.Peek() == L'(') {
    if (!bWord || !BaseStringUtil::IsCaseInsensitiveMatch(name->m_path[0], L"VALUEOF")) return true;  // a function
    scanner.Skip();
    name = TakeVariable(scanner);
    if (!name) return false;
  } else if (bWord && IsSqlWord(name->m_path[0])) {
    return true;
  }
  names.push_back(std::move(*name));
  return true;
}

}  // namespace

SqlNames FindSqlNames(std::wstring_view text) {
  SqlNames found;
  Scanner scanner(text);
  while (!scanner.IsAtEnd()) {
    const std::size_t start = scanner.GetPlace();
    bool bReadable = true;
    if (scanner.Peek() == L'\'') {
      bReadable = scanner.TakeQuoted().has_value();
    } else if (IsDigit(scanner.Peek())) {
      scanner.TakeWhile([](wchar_t c) { return IsWordPart(c) || c == L'.'; });
    } else if (scanner.IsAtName()) {
      bReadable = TakeNameOrWord(scanner, found.m_names);
    } else {
      scanner.Skip();
    }
    if (!bReadable) {
      found.m_cause = L"what begins at character " + BaseStringUtil::StringFrom(start + 1) + L" does not end";
      break;
    }
  }
  return found;
}

KXStringVector SplitQualifiedName(std::wstring_view text) {
  Scanner scanner(text);
  if (!scanner.IsAtName()) return {};
  const std::optional<SqlName> name = scanner.TakeName();
  return name && scanner.IsAtEnd() ? name->m_path : KXStringVector();
}

KXString JoinQualifiedName(const KXStringVector& path) {
  KXString text;
  for (const KXString& part : path) {
    if (!text.empty()) text.append(L'.');
    if (IsPlainWord(part)) {
      text.append(part);
    } else {
      text.append(L'"').append(BaseStringUtil::EscapeCharacter(part, L'"', L'"')).append(L'"');
    }
  }
  return text;
}
