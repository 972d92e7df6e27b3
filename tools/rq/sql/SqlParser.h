#pragma once

#include <string_view>

#include "rq/sql/SqlTree.h"

/// The most bytes of a text. The parser ends the process if its tree is above 1 GiB as JSON, of which the densest texts
/// have 105 bytes a byte.
inline constexpr std::size_t kMaxSqlBytes = 8 * 1024 * 1024;

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

/// The parse tree of one query of SQL.
class SqlQuery {
 public:
  /// Parses the text with PostgreSQL's grammar. Raises SqlError if it is not exactly one SELECT or a set operation of
  /// such; blanks, comments and a semicolon may stand behind it. The text is lent.
  explicit SqlQuery(std::string_view text);

  std::string_view GetText() const { return m_text; }
  /// A SelectStmt. Its places are byte offsets in the text.
  SqlNode GetSelect() const { return m_select; }

 private:
  std::string_view m_text;
  SqlTree m_tree;
  SqlNode m_select;
};
