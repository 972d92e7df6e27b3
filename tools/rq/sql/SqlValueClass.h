#pragma once

#include "Host/ARpGateway.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"

class RqAbstractList;

/// What the values of an expression are, as far as spellings depend on it.
enum class SqlValueClass {
  kUnknown,
  kInteger,
  kDecimal,
  kReal,
  kText,
  kDate,
  kTime,
  kTimestamp,
  kInterval,
  kOther,
};

inline bool IsMoment(SqlValueClass valueClass) {
  return valueClass == SqlValueClass::kDate || valueClass == SqlValueClass::kTimestamp;
}

/// Whether one is a date and the other a timestamp.
inline bool AreMixedMoments(SqlValueClass left, SqlValueClass right) {
  return IsMoment(left) && IsMoment(right) && left != right;
}

/// By the types of columns in the repository, literals and functions; kUnknown for what those do not tell. Cost: a walk
/// over the expression.
SqlValueClass ClassOf(const RqExpr& expr, ARpGateway& gateway);

/// Of the column of that index, in all branches of a set operator.
SqlValueClass ClassOfColumn(const RqAbstractList& list, int index, ARpGateway& gateway);

/// Whether every value is a floating one, or null, in a database in which each value has a type of its own. An
/// expression of the class kReal may have integers too: of a choice between both, or of a column that is not declared
/// so.
bool IsAlwaysReal(const RqExpr& expr, ARpGateway& gateway);
