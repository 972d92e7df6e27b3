#pragma once

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "CondLanguage.h"
#include "Query/Optimizer/Request/Conditions/SQORInwardNegationForm.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondHierarchy.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondSpecial.h"
#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprParam.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"

// The meaning of conditions, by trying: a condition is evaluated on every row over its columns, where a column takes
// each value of a small domain and null. The parameters ?1 and ?2 are 1, and others are null. It knows SQL's three
// truth values and nothing of the rewriting under test.

enum class Truth { kFalse, kUnknown, kTrue };

inline Truth Negation(Truth truth) { return static_cast<Truth>(2 - static_cast<int>(truth)); }
inline Truth TruthOf(bool bValue) { return bValue ? Truth::kTrue : Truth::kFalse; }

class TruthTable {
 public:
  using Value = std::optional<int>;
  /// The values of the columns a to z.
  using Row = std::array<Value, 26>;

  /// A null condition is the one without any demand: true.
  static Truth Evaluate(const RqExpr* pCond, const Row& row) {
    if (!pCond) return Truth::kTrue;
    const RqExpr& cond = *pCond;
    const auto inner = [&](int i) { return Evaluate(cond.GetIthOperand(i), row); };
    const auto value = [&](int i) { return ValueOf(*cond.GetIthOperand(i), row); };
    switch (cond.GetObjectType()) {
      case kRqExprCondAnd:
        return std::min(inner(0), inner(1));
      case kRqExprCondOr:
        return std::max(inner(0), inner(1));
      case kRqExprCondNot:
        return Negation(inner(0));
      case kRqExprCondAtomicWrapper:
      case kRqExprCondOuterJoinFilter:
        return inner(0);
      case kRqExprCondEquality:
        if (static_cast<const RqExprCondEquality&>(cond).AreNullsEqual()) return TruthOf(value(0) == value(1));
        return Equal(value(0), value(1));
      case kRqExprCondNotEqual:
        return Negation(Equal(value(0), value(1)));
      case kRqExprCondLess:
        return Less(value(0), value(1));
      case kRqExprCondLessEqual:
        return Negation(Less(value(1), value(0)));
      case kRqExprCondGreater:
        return Less(value(1), value(0));
      case kRqExprCondGreaterEqual:
        return Negation(Less(value(0), value(1)));
      case kRqExprCondIsNull:
        return Signed(cond, TruthOf(!value(0)));
      case kRqExprCondBetween:
        return Signed(cond, std::min(Negation(Less(value(0), value(1))), Negation(Less(value(2), value(0)))));
      case kRqExprCondIn:
        return Signed(cond, IsIn(value(0), *cond.GetIthOperand(1), row));
      case kRqExprCondMultiColumnIn:
        return Signed(cond, IsRowIn(*cond.GetIthOperand(0), *cond.GetIthOperand(1), row));
      default:
        return Opaque(cond, row);
    }
  }

  /// The rows over the columns of the conditions. bNulls: null is a value of each column.
  static std::vector<Row> RowsOver(const std::vector<const RqExpr*>& conds, bool bNulls) {
    std::set<std::size_t> columns;
    for (const RqExpr* const pCond : conds) CollectColumns(pCond, columns);
    const int numValues = columns.size() < 4 ? 5 : 3;
    std::vector<Row> rows(1);
    for (const std::size_t column : columns) {
      std::vector<Row> longerRows;
      for (const Row& row : rows) {
        for (int value = bNulls ? -1 : 0; value < numValues; ++value) {
          longerRows.push_back(row);
          longerRows.back()[column] = value < 0 ? Value() : Value(value);
        }
      }
      rows = std::move(longerRows);
    }
    return rows;
  }

  static std::string Text(const Row& row) {
    std::string text;
    for (std::size_t i = 0; i < row.size(); ++i) {
      text += static_cast<char>('a' + i) + ("=" + (row[i] ? std::to_string(*row[i]) : "null")) + " ";
    }
    return text;
  }

 private:
  static Value ValueOf(const RqExpr& expr, const Row& row) {
    if (expr.GetObjectType() == kRqExprIntegerLiteral) return static_cast<const RqExprIntegerLiteral&>(expr).GetValue();
    if (expr.IsParam()) return static_cast<const RqExprParam&>(expr).GetParamNumber() < 3 ? Value(1) : Value();
    return expr.IsTargetColumn() ? row[ColumnIndex(expr)] : Value();
  }
  static std::size_t ColumnIndex(const RqExpr& column) {
    return static_cast<std::size_t>(static_cast<const RqTargetColumn&>(column).GetColumnName(nullptr).c_str()[0] -
                                    L'a');
  }
  static Truth Equal(Value left, Value right) { return left && right ? TruthOf(*left == *right) : Truth::kUnknown; }
  static Truth Less(Value left, Value right) { return left && right ? TruthOf(*left < *right) : Truth::kUnknown; }
  /// The truth of a condition with a negation of its own, given that of its plain form.
  static Truth Signed(const RqExpr& cond, Truth truth) {
    return dynamic_cast<const RqExprCondNegatable&>(cond).IsNegated() ? Negation(truth) : truth;
  }
  static Truth IsIn(Value search, const RqExpr& values, const Row& row) {
    Truth truth = Truth::kFalse;
    for (int i = 0; i < values.GetNumOperands(); ++i) {
      truth = std::max(truth, Equal(search, ValueOf(*values.GetIthOperand(i), row)));
    }
    return truth;
  }
  static Truth IsRowIn(const RqExpr& columns, const RqExpr& rows, const Row& row) {
    Truth truth = Truth::kFalse;
    for (int i = 0; i < rows.GetNumOperands(); ++i) {
      Truth rowTruth = Truth::kTrue;
      for (int j = 0; j < columns.GetNumOperands(); ++j) {
        rowTruth = std::min(rowTruth, Equal(ValueOf(*columns.GetIthOperand(j), row),
                                            ValueOf(*rows.GetIthOperand(i)->GetIthOperand(j), row)));
      }
      truth = std::max(truth, rowTruth);
    }
    return truth;
  }
  /// Any other condition is some function of its operands: unknown with a null among them, else true where their sum
  /// and its kind say so.
  static Truth Opaque(const RqExpr& cond, const Row& row) {
    int sum = cond.GetObjectType();
    for (int i = 0; i < cond.GetNumOperands(); ++i) {
      const RqExpr* const pOperand = cond.GetIthOperand(i);
      if (!pOperand) continue;
      const Value value = ValueOf(*pOperand, row);
      if (!value) return Truth::kUnknown;
      sum += *value;
    }
    return TruthOf((sum % 2 == 0) != IsNegatedCond(cond));
  }
  static void CollectColumns(const RqExpr* pExpr, std::set<std::size_t>& columns) {
    if (!pExpr) return;
    if (pExpr->IsTargetColumn()) columns.insert(ColumnIndex(*pExpr));
    for (int i = 0; i < pExpr->GetNumOperands(); ++i) CollectColumns(pExpr->GetIthOperand(i), columns);
  }
};

/// The first row on which the condition and the conditions' And (or Or) differ, as text; empty if there is none.
/// bNulls: rows with nulls count.
template <class Exprs>
std::string FirstDifference(const RqExpr& cond, const Exprs& terms, bool bAnd, bool bNulls) {
  std::vector<const RqExpr*> all{&cond};
  for (const auto& term : terms) all.push_back(&*term);
  for (const TruthTable::Row& row : TruthTable::RowsOver(all, bNulls)) {
    Truth truth = bAnd ? Truth::kTrue : Truth::kFalse;
    for (const auto& term : terms) {
      const Truth termTruth = TruthTable::Evaluate(&*term, row);
      truth = bAnd ? std::min(truth, termTruth) : std::max(truth, termTruth);
    }
    if (truth != TruthTable::Evaluate(&cond, row)) return TruthTable::Text(row);
  }
  return {};
}

/// The same for one condition, null for the one without any demand.
inline std::string FirstDifference(const RqExpr& cond, const RqExpr* pOther, bool bNulls) {
  std::vector<const RqExpr*> terms;
  if (pOther) terms.push_back(pOther);
  return FirstDifference(cond, terms, true, bNulls);
}

/// Whether a part is known to be true or false whatever the row is. Where that is so for x or not x, nulls are left out
/// of account.
inline bool HasFoldedPart(const RqExprCond& cond) {
  InwardNegationForm inward;
  const_cast<RqExprCond&>(cond).TourExpr(inward);
  return FoundNodes(inward.GetInwardNegationExpr(), [](const RqNode& node) {
    const auto* const pCond = dynamic_cast<const RqExprCond*>(&node);
    return pCond && (pCond->IsAlwaysTrue() || pCond->IsAlwaysFalse());
  });
}
