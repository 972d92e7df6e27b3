#pragma once

#include <random>
#include <string>
#include <vector>

#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"

// A small language of conditions for tests; ParseCond and CondText are each other's inverse.
//
//   a=1 & (b<c | !d==2)   "&" over "|", "!" before all; "==" is the equality of nulls too; also <> <= > >=
//   operands              a column of one letter, an integer, null, a parameter as ?1
//   calls                 IsNull(a) NotNull(a) Between(a,1,3) NotBetween(a,1,3) Like(a,1) NotLike(a,1) In(a,1,2)
//                         NotIn(a,1,2) MultiIn(a,b;1,2;3,4) NotMultiIn(..) Pred(a) NotPred(a) IsAncestor(a,b,1)
//                         IsRoot(a) IsSibling(a,b,c) IsLeaf(a) GroupBy(a,b) Wrap(condition) Filter(condition)
//
// A chain "x & y & z" is concatenated from the left, and is the text of any tree of one connective: the text shows the
// order of the leaves and not the balance. A nested tree in parentheses is a leaf of the chain around it.

/// Gives a condition that the caller owns. Ends the process on a mistake in the text.
OwnedRqExprCondPtr ParseCond(const std::string& text);

/// An Or of a=1 again and again, of that many levels: it is not balanced.
OwnedRqExprCondPtr DeepOr(int depth);

/// The text of a condition or of any expression in it; "-" for null.
std::string CondText(const RqExpr* pExpr);

/// The texts of several, joined by "; ".
template <class Exprs>
std::string CondTexts(const Exprs& exprs) {
  std::string texts;
  for (const auto& expr : exprs) texts += (texts.empty() ? "" : "; ") + CondText(&*expr);
  return texts;
}

/// A random condition over columns a to d and integers 0 to 3, its connectives nested that deep. No atom compares a
/// column with itself.
std::string RandomCondText(std::mt19937& random, int depth);

/// Whether a condition has a negation of its own, and it is on.
bool IsNegatedCond(const RqExpr& cond);
