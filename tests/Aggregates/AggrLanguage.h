#pragma once

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <string_view>

#include "Aggregates/AggrSamples.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprArithmetic.h"
#include "TestUtil.h"

// Aggregates by their text: "sum(distinct x by ab at *)". The columns of a break have names of one letter, and a digit
// is a constant; a compute break of "*" is that of a distinct aggregate. What reads the text gives a new tree.

/// A column whose text is its name.
inline RqExpr* Named(char name) {
  return Col(KXString(1, static_cast<wchar_t>(name)).c_str(), RqTargetColumn::kUnknownTableNum);
}

inline RqExprColumnList* Break(std::string_view names) {
  RqExprColumnList* const pList = Columns({});
  for (const char name : names) pList->AddChild(std::isdigit(name) ? Int(name - '0') : Named(name));
  return pList;
}

class AggrReader {
 public:
  explicit AggrReader(std::string_view text) : m_text(text) {}

  RqExpr* ReadExpr() {
    const std::string word(Take(m_text.find_first_of("(), ")));
    if (!Skip("(")) return std::isdigit(word[0]) ? Int(word[0] - '0') : word == "null" ? Null() : Named(word[0]);
    const bool bDistinct = Skip("distinct ");
    RqExprVector operands{ReadExpr()};
    while (Skip(", ")) operands.push_back(ReadExpr());
    RqExprColumnList* const pControl = Skip(" by ") ? Break(Take(m_text.find_first_of(" )"))) : nullptr;
    const bool bAtGrain = Skip(" at *");
    RqExprColumnList* const pCompute = Skip(" at ") ? Break(Take(m_text.find(')'))) : nullptr;
    Skip(")");
    if (word == "neg") return new RqExprUnaryMinus(operands[0]);
    if (word == "abs") return new RqExprAbs(operands[0]);
    if (word == "div") return new RqExprDivide(operands[0], operands[1]);
    if (word == "mul") return new RqExprMultiply(operands[0], operands[1]);
    if (word == "row") return Row({operands[0], operands[1]});
    if (word == "none") return new RqExprNoAggregate(operands[0]);
    if (word == "filter") {
      return new RqExprAggrIf(operands[0], new RqExprCondEquality(operands[1], Int(1), false), true);
    }
    for (const AggrKind& kind : AggrKinds()) {
      if (kind.m_name != word) continue;
      RqExprAggr* const pAggr = kind.m_of(operands[0], pControl, pCompute, bDistinct);
      if (bAtGrain) pAggr->InstantiateDistinctComputeBreak();
      return pAggr;
    }
    EXPECT_EQ(word, "Stddev_POP");
    return new RqExprAggrStddev(operands[0], pControl, pCompute, bDistinct, false);
  }

 private:
  bool Skip(std::string_view expected) {
    if (!m_text.starts_with(expected)) return false;
    m_text.remove_prefix(expected.size());
    return true;
  }
  std::string_view Take(std::size_t length) {
    const std::string_view taken = m_text.substr(0, length);
    m_text.remove_prefix(taken.size());
    return taken;
  }

  std::string_view m_text;
};

/// The aggregate, or the wrapper of one.
inline Heap<RqExprAggr> AggrOf(std::string_view text) {
  return Heap<RqExprAggr>(static_cast<RqExprAggr*>(AggrReader(text).ReadExpr()));
}
inline Heap<RqExpr> ExprOf(std::string_view text) { return Heap<RqExpr>(AggrReader(text).ReadExpr()); }

/// The text of an expression with every operation in parentheses, and references to columns without a table.
inline std::string Nested(const RqExpr* pExpr) {
  if (!pExpr) return "null";
  const auto operation = [pExpr](const char* symbol) {
    return "(" + Nested(pExpr->GetIthOperand(0)) + symbol + Nested(pExpr->GetIthOperand(1)) + ")";
  };
  if (pExpr->GetObjectType() == kRqExprDivide) return operation(" / ");
  if (pExpr->GetObjectType() == kRqExprMultiply) return operation(" * ");
  if (pExpr->GetObjectType() == kRqExprSubtract) return operation(" - ");
  if (pExpr->GetObjectType() == kRqExprSqrt) return "sqrt" + Nested(pExpr->GetIthOperand(0));
  std::string text = TextOf(pExpr);
  for (std::size_t at = 0; (at = text.find(".c", at)) != std::string::npos;) text.erase(at, 1);
  return text;
}

/// What an action gives, or "error" and the code of the error that it raises.
template <class Action>
std::string TextOrError(Action action) {
  std::string text;
  const unsigned long code = CodeRaisedBy([&] { text = action(); });
  return code ? "error " + std::to_string(code) : text;
}
