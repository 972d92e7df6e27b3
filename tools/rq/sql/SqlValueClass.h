#pragma once

#include "Host/ARpGateway.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"

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

/// By the types of columns in the repository, literals and functions; kUnknown for what those do not tell. Cost: a walk
/// over the expression.
SqlValueClass ClassOf(const RqExpr& expr, ARpGateway& gateway);
