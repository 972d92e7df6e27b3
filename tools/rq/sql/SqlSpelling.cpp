#include "rq/sql/SqlSpelling.h"

#include <algorithm>
#include <initializer_list>
#include <utility>
#include <vector>

#include "rq/sql/SqlLexer.h"
#include "rq/sql/SqlText.h"

namespace {

constexpr std::string_view kQuotedLeadingTokensFunction = "\"#tokens\"";
static_assert(kQuotedLeadingTokensFunction.size() == std::string_view("substring").size());

class Respelling {
 public:
  explicit Respelling(std::string_view text) : m_text(text), m_lexer(text), m_respelled(text) {}

  std::string Run() {
    for (SqlToken token = m_lexer.Next(); token.m_kind != SqlToken::kEnd; token = m_lexer.Next()) {
      if (token.m_kind == SqlToken::kPunctuation) TakeBracket(token);
      // Behind a point any word is a name.
      if (token.m_kind == SqlToken::kWord && !Is(m_previous, ".")) TakeWord(token);
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
    if (Is(token, "user")) {
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
  std::vector<SqlToken> m_open;  ///< For each open bracket the token in front, which names the function of a call.
};

}  // namespace

std::string RespellSql(std::string_view text) { return Respelling(text).Run(); }
