#pragma once

#include <string_view>
#include <vector>

#include "Host/KXString.h"

/// A name in a text of SQL.
struct SqlName {
  KXStringVector m_path;
  bool m_bVariable = false;  ///< Stands in VALUEOF(...).
  bool m_bQuoted = false;    ///< A part is in double quotes.
};

/// What a text of SQL names: columns and variables, in the order of the text, repeats kept. Words that follow no point
/// and are SQL's own, names of functions, literals and numbers are left out: a column that is called like a word of SQL
/// is quoted, or has its table in front.
struct SqlNames {
  std::vector<SqlName> m_names;
  KXString m_cause;  ///< Why the text cannot be read; empty if it can.
};

SqlNames FindSqlNames(std::wstring_view text);
