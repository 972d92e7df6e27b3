#pragma once

#include <initializer_list>
#include <memory>
#include <string>

#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"

// Expressions for tests. What these give belongs to the caller, or to the node that takes it.

inline RqExpr* Int(int value) { return new RqExprIntegerLiteral(value, false); }
inline RqExpr* Str(const wchar_t* value) { return new RqExprStringLiteral(KXString(value)); }
inline RqExpr* Null() { return new RqExprNullLiteral(); }
inline RqExpr* Col(const wchar_t* name, int tableNum = 1) { return new RqTargetColumn(KXString(name), tableNum); }

template <class... Operands>
RqExprVector Exprs(Operands... operands) {
  return {operands...};
}

/// An expression with any operands, null ones among them.
inline RqExpr* Row(std::initializer_list<RqExpr*> operands) {
  auto* const pRow = new RqExprColumnListOrdered();
  for (RqExpr* const pOperand : operands) pRow->AddChild(pOperand);
  return pRow;
}

/// "[a 1 'x' null -]": rows in brackets, "-" for a null operand.
inline std::string Text(const RqExpr* pExpr) {
  if (!pExpr) return "-";
  if (pExpr->IsTargetColumn()) return static_cast<const RqTargetColumn*>(pExpr)->GetColumnName(nullptr).ToUTF8();
  if (pExpr->IsAlwaysNull() && pExpr->IsLiteral()) return "null";
  if (pExpr->IsLiteral()) return static_cast<const RqExprLiteral*>(pExpr)->ToCanonicalCSVFormat().ToUTF8();
  std::string text = "[";
  for (int i = 0; i < pExpr->GetNumOperands(); ++i) text += (i == 0 ? "" : " ") + Text(pExpr->GetIthOperand(i));
  return text + "]";
}

inline std::string Text(const std::unique_ptr<RqExpr>& pExpr) { return Text(pExpr.get()); }
