#pragma once

#include <string_view>

#include "rq/sql/SqlTree.h"

/// The most bytes of a condition. What a parse takes is some hundred times as much.
inline constexpr std::size_t kMaxSqlBytes = 16 * 1024 * 1024;

/// The parse tree of one condition of SQL.
class SqlCondition {
 public:
  /// Parses the text with PostgreSQL's grammar. Raises SqlError if it is not exactly one expression: blanks and
  /// comments may stand around it, and nothing else. The text is lent.
  explicit SqlCondition(std::string_view text);

  std::string_view GetText() const { return m_text; }
  /// Its places are byte offsets in the text.
  SqlNode GetExpression() const { return m_expression; }

 private:
  std::string_view m_text;
  SqlTree m_tree;
  SqlNode m_expression;
};
