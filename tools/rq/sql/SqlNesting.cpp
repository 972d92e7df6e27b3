#include "rq/sql/SqlNesting.h"

#include <algorithm>
#include <vector>

#include "rq/sql/SqlLexer.h"
#include "rq/sql/SqlText.h"

namespace {

enum class Effect { kStep, kOpen, kClose, kSeparate, kBetween, kAnd };

bool IsWord(std::string_view word, std::string_view upperCase) {
  const auto inUpperCase = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; };
  return std::ranges::equal(word, upperCase, {}, inUpperCase);
}

Effect EffectOf(const SqlToken& token, std::string_view text) {
  const std::string_view content = text.substr(token.m_begin, token.m_end - token.m_begin);
  if (token.m_kind == SqlToken::kPunctuation) {
    switch (content[0]) {
      case '(':
      case '[':
        return Effect::kOpen;
      case ')':
      case ']':
        return Effect::kClose;
      case ',':
        return Effect::kSeparate;
      default:
        return Effect::kStep;
    }
  }
  if (token.m_kind != SqlToken::kWord) return Effect::kStep;
  if (IsWord(content, "AND")) return Effect::kAnd;
  if (IsWord(content, "OR")) return Effect::kSeparate;
  if (IsWord(content, "BETWEEN")) return Effect::kBetween;
  if (IsWord(content, "CASE")) return Effect::kOpen;
  if (IsWord(content, "END")) return Effect::kClose;
  return Effect::kStep;
}

/// What is open between two brackets.
struct Level {
  std::size_t m_operand = 0;    ///< Steps of the operand under way, with the deepest of what its brackets held.
  std::size_t m_deepest = 0;    ///< Of the operands before it.
  std::size_t m_nBetweens = 0;  ///< Their next ANDs are part of them.

  std::size_t Deepest() const { return std::max(m_deepest, m_operand); }
  void StartNextOperand() {
    m_deepest = Deepest();
    m_operand = 0;
  }
};

/// The levels that are open, and the steps that lead to the innermost one.
class NestingCount {
 public:
  NestingCount() : m_levels(1) {}

  void Take(Effect effect) {
    Level& level = m_levels.back();
    switch (effect) {
      case Effect::kStep:
        return Step(1);
      case Effect::kOpen:
        Step(1);
        m_levels.emplace_back();
        return;
      case Effect::kClose:
        return Close();
      case Effect::kSeparate:
        return StartNextOperand();
      case Effect::kBetween:
        ++level.m_nBetweens;
        return Step(1);
      case Effect::kAnd:
        if (level.m_nBetweens == 0) return StartNextOperand();
        --level.m_nBetweens;
        return Step(1);
    }
  }

  /// Of the deepest operand that ends with the token taken last.
  std::size_t GetDepth() const { return m_depth; }

 private:
  void Step(std::size_t nSteps) {
    m_levels.back().m_operand += nSteps;
    m_depth += nSteps;
  }

  void StartNextOperand() {
    m_depth -= m_levels.back().m_operand;
    m_levels.back().StartNextOperand();
  }

  void Close() {
    if (m_levels.size() == 1) return Step(1);  // the parser will say what is wrong with it
    const Level closed = m_levels.back();
    m_levels.pop_back();
    m_depth -= closed.m_operand;
    Step(closed.Deepest());
  }

  std::vector<Level> m_levels;
  std::size_t m_depth = 0;  ///< The sum of m_operand over all levels.
};

}  // namespace

void CheckSqlNesting(std::string_view text) {
  SqlLexer lexer(text);
  SqlToken token = lexer.Next();
  bool bIsName = false;  // behind a point any word is one
  for (NestingCount count; token.m_kind != SqlToken::kEnd; token = lexer.Next()) {
    count.Take(bIsName && token.m_kind == SqlToken::kWord ? Effect::kStep : EffectOf(token, text));
    bIsName = text.substr(token.m_begin, token.m_end - token.m_begin) == ".";
    if (count.GetDepth() > kMaxSqlNesting) throw SqlError(token.m_begin, kNestedTooDeeply);
  }
}
