#pragma once

#include <cstddef>
#include <string_view>

#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggr.h"

/// What makes an aggregate of a kind; takes the expression, the number behind it, null where the kind has none, and the
/// control break, which may be null.
using MakeAggregate = RqExprAggr* (*)(RqExpr* pAggrExpr, RqExpr* pNumber, RqExprColumnList* pControlBreak,
                                      bool bDistinct);

/// An aggregate that is written as a call.
struct AggregateFunction {
  std::string_view m_name;       ///< In lower case.
  std::string_view m_arguments;  ///< As one writes them down, without BY: "x, n".
  std::size_t m_numArguments;
  /// Whether it makes one value of the rows of a group; else each row gets a value of its own.
  bool m_bOfGroup;
  MakeAggregate m_make;
  /// Of one of a group: the same over the rows up to each, and over some rows before it. Null where there is none.
  MakeAggregate m_makeRunning = nullptr;
  MakeAggregate m_makeMoving = nullptr;
};

/// Null for a name that is none of an aggregate.
const AggregateFunction* FindAggregateFunction(std::string_view name);

/// Whether the name is one of a function that is called with a window alone.
bool IsWindowFunction(std::string_view name);
