#include "rq/sql/SqlSpelling.h"

#include <algorithm>
#include <initializer_list>
#include <utility>
#include <vector>

#include "rq/sql/AggregateFunctions.h"
#include "rq/sql/SqlLexer.h"
#include "rq/sql/SqlText.h"

namespace {

constexpr std::string_view kQuotedLeadingTokensFunction = "\"#tokens\"";
static_assert(kQuotedLeadingTokensFunction.size() == std::string_view("substring").size());

std::string InLowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return lower;
}

/// Words behind which an operand begins, or that BY belongs to.
constexpr std::string_view kWordsBeforeOperands[] = {
    "group", "order", "partition", "distinct", "all",     "case",   "when",   "then", "else", "and",
    "or",    "not",   "in",        "like",     "between", "escape", "select", "from", "is",   "collate"};

/// Whether a BY behind the token, in the brackets of an aggregate, says a break. A sign * is COUNT's if a bracket
/// stands in front of it.
bool EndsOperand(std::string_view text, const SqlToken& token, const SqlToken& before) {
  const std::string_view written = text.substr(token.m_begin, token.m_end - token.m_begin);
  switch (token.m_kind) {
    case SqlToken::kEnd:
      return false;
    case SqlToken::kNumber:
    case SqlToken::kQuoted:
    case SqlToken::kParameter:
      return true;
    case SqlToken::kWord:
      return std::ranges::find(kWordsBeforeOperands, InLowerCase(written)) == std::end(kWordsBeforeOperands);
    case SqlToken::kPunctuation:
      if (written == "*") return text.substr(before.m_begin, before.m_end - before.m_begin) == "(";
      return written == ")" || written == "]";
  }
  return false;
}

class Respelling {
 public:
  explicit Respelling(std::string_view text) : m_text(text), m_lexer(text), m_respelled(text) {}

  std::string Run() {
    for (SqlToken token = m_lexer.Next(); token.m_kind != SqlToken::kEnd; token = m_lexer.Next()) {
      if (token.m_kind == SqlToken::kPunctuation) TakeBracket(token);
      // Behind a point any word is a name.
      if (token.m_kind == SqlToken::kWord && !Is(m_previous, ".")) TakeWord(token);
      m_beforePrevious = m_previous;
      m_previous = token;
    }
    return std::move(m_respelled);
  }

 private:
  bool Is(const SqlToken& token, std::string_view lowerCase) const {
    const auto inLowerCase = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(m_text.substr(token.m_begin, token.m_end - token.m_begin), lowerCase, {}, inLowerCase);
  }

  /// Whether these tokens come next; they are then passed, and end is where the last one ends.
  bool Pass(std::initializer_list<std::string_view> words, std::size_t& end) {
    SqlLexer lexer = m_lexer;
    SqlToken token = m_previous;
    for (const std::string_view word : words) {
      token = lexer.Next();
      if (!Is(token, word)) return false;
    }
    m_lexer = lexer;
    end = token.m_end;
    return true;
  }

  bool IsNext(std::string_view word) const {
    SqlLexer lexer = m_lexer;
    return Is(lexer.Next(), word);
  }

  void Write(std::size_t begin, std::size_t end, std::string_view spelling) {
    std::fill(m_respelled.begin() + static_cast<std::ptrdiff_t>(begin),
              m_respelled.begin() + static_cast<std::ptrdiff_t>(end), ' ');
    m_respelled.replace(begin, spelling.size(), spelling);
  }

  void TakeBracket(const SqlToken& token) {
    if (Is(token, "(") || Is(token, "[")) m_open.push_back(m_previous);
    if ((Is(token, ")") || Is(token, "]")) && !m_open.empty()) m_open.pop_back();
  }

  void TakeWord(const SqlToken& token) {
    std::size_t end = 0;
    if (Is(token, "by")) {
      TakeBy(token);
    } else if (Is(token, "user")) {
      if (Pass({"(", ")"}, end)) Write(token.m_end, end, "");
    } else if (Is(token, "char")) {
      const bool bIsType = Is(m_previous, "as") || Is(m_previous, ":") || Is(m_previous, "national");
      if (!bIsType && IsNext("(")) Write(token.m_begin, token.m_end, "chr");
    } else if (!m_open.empty() && Is(m_open.back(), "fiscal_extract")) {
      const bool bIsFrom = Is(token, "from") && !Is(m_previous, "distinct");
      if (bIsFrom || Is(token, "fiscal_year_start")) Write(token.m_begin, token.m_end, ",");
    } else if (!m_open.empty() && Is(m_open.back(), "substring")) {
      TakeWordOfSubstring(token, m_open.back());
    }
  }

  void TakeBy(const SqlToken& token) {
    if (m_open.empty() || !EndsOperand(m_text, m_previous, m_beforePrevious)) return;
    const SqlToken& name = m_open.back();
    const std::string_view written = m_text.substr(name.m_begin, name.m_end - name.m_begin);
    if (!FindAggregateFunction(InLowerCase(written))) return;
    Write(token.m_begin, token.m_end, ",");
    if (Is(m_previous, "*")) Write(m_previous.m_begin, m_previous.m_end, "1");
  }

  void TakeWordOfSubstring(const SqlToken& token, const SqlToken& name) {
    std::size_t end = 0;
    if (Is(token, "similar")) throw SqlError(token.m_begin, "SUBSTRING by a pattern is not supported");
    if (Is(token, "extract") && Pass({"first"}, end)) {
      Write(name.m_begin, name.m_end, kQuotedLeadingTokensFunction);
      Write(token.m_begin, end, ",");
    } else if (Is(token, "token") && Pass({"(", "s", ")", "delimited", "by"}, end)) {
      Write(token.m_begin, end, ",");
    }
  }

  std::string_view m_text;
  SqlLexer m_lexer;
  std::string m_respelled;
  SqlToken m_previous{SqlToken::kEnd, 0, 0};
  SqlToken m_beforePrevious{SqlToken::kEnd, 0, 0};
  std::vector<SqlToken> m_open;  ///< For each open bracket the token in front, which names the function of a call.
};

}  // namespace

std::optional<std::size_t> FindBreakWord(std::string_view text, std::size_t call) {
  SqlLexer lexer(text, call);
  SqlToken before{SqlToken::kEnd, call, call};
  SqlToken previous = before;
  int depth = 0;
  for (SqlToken token = lexer.Next(); token.m_kind != SqlToken::kEnd; token = lexer.Next()) {
    const std::string_view written = text.substr(token.m_begin, token.m_end - token.m_begin);
    if (token.m_kind == SqlToken::kPunctuation) {
      if (written == "(" || written == "[") ++depth;
      if ((written == ")" || written == "]") && --depth == 0) return {};
    }
    const bool bIsName = text.substr(previous.m_begin, previous.m_end - previous.m_begin) == ".";
    if (depth == 1 && token.m_kind == SqlToken::kWord && !bIsName && InLowerCase(written) == "by" &&
        EndsOperand(text, previous, before)) {
      return token.m_begin;
    }
    before = std::exchange(previous, token);
  }
  return {};
}

std::string RespellSql(std::string_view text) { return Respelling(text).Run(); }
