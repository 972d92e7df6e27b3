#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "Host/PropertyValue.h"
#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprParam.h"

// Expressions for tests. What these give belongs to the caller, or to the node that takes it.

inline RqExpr* Int(int value) { return new RqExprIntegerLiteral(value, false); }
inline RqExpr* Str(const wchar_t* value) { return new RqExprStringLiteral(KXString(value)); }
inline RqExpr* Null() { return new RqExprNullLiteral(); }
inline RqExpr* Param(int number) { return new RqExprParam(number); }
inline KorvelNumber Number(const wchar_t* text) { return PropertyValueString(text).ToNumberValue().GetNumber(); }
inline RqExpr* Col(const wchar_t* name, int tableNum = 1) { return new RqTargetColumn(KXString(name), tableNum); }

/// A tree, which belongs to whoever takes it, and its text without a gateway, with one in external mode, and with one.
/// A null text is as the first.
struct TreeSample {
  RqNode* m_pNode;
  std::string m_plain;
  const char* m_external = nullptr;
  const char* m_named = nullptr;
  bool m_bTravels = true;  ///< whether what is read back from its bytes has the same text
};
constexpr bool kDoesNotTravel = false;

/// The node, changed.
template <class Node, class Change>
Node* Changed(Node* pNode, Change change) {
  change(*pNode);
  return pNode;
}

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
