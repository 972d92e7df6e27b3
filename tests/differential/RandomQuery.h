#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "differential/SmallSample.h"

/// A query over physical tables, and what a test has to know of it.
struct RandomQuery {
  std::string m_text;           ///< As rq reads it.
  std::string m_reference;      ///< The same for SQLite, without what it cannot read or reads in another way.
  bool m_bOrdered = false;      ///< Its ORDER BY tells all rows apart that are not the same.
  std::vector<bool> m_inexact;  ///< By column, whether the last digits depend on the order of the rows.

  bool m_bGroups = false;       ///< It is one block that groups.
  bool m_bMayNotSplit = false;  ///< The block has grouping sets, counts what is distinct or the like.
};

/// Always the same query for a seed and tables.
RandomQuery MakeRandomQuery(std::uint64_t seed, const std::vector<ModelTable>& tables);
