#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"
#include "rq/sql/SqlParser.h"

/// The condition that a text of SQL says, with what it says kept as far as the tree can: nothing is rewritten.
///
///   comparisons     the six classes; "!=" is "<>"
///   BETWEEN, LIKE (with ESCAPE), IN, IS NULL and their NOT spellings: the class with its negated flag
///   NOT, AND, OR    a list of ANDs or ORs is folded from the left
///   columns         a bare name has no table; the tables of qualified names, told apart by all in front of the last
///                   point, are numbered from 1 as they appear. Names without quotes are lower case, as in PostgreSQL.
///   numbers         32-bit integers; longer ones as exact numbers; those with a point or an exponent as floats
///   strings         in every spelling, and NULL
///   moments         DATE, TIME and TIMESTAMP '...', checked by the calendar; a timestamp has the precision that it is
///                   written with. CURRENT_DATE, CURRENT_TIME, LOCALTIME, CURRENT_TIMESTAMP and LOCALTIMESTAMP are the
///                   tokens, the last two with a precision.
///   intervals       INTERVAL '...' [unit]: the literal as text
///   parameters      $n
///   session         VALUEOF("block"."name"): a session variable
///   rows            (a, b) IN ((1, 2), ...)
///
/// Raises SqlError at the place of anything else, and ErrorMessage when the stack runs low. Text that nests up to
/// kMaxSqlNesting levels needs some MiB of stack.
OwnedRqExprCondPtr ParseCondition(std::string_view text);

/// Makes the tree of one parsed condition: a method for each kind of node of the parser, found by the kind's name.
class ConditionBuilder {
 public:
  /// The condition is lent.
  explicit ConditionBuilder(const SqlCondition& condition) : m_condition(condition) {}

  OwnedRqExprCondPtr Build() { return BuildCondition(m_condition.GetExpression()); }

 private:
  using Method = OwnedRqExprPtr (ConditionBuilder::*)(SqlNode);

  /// A name that the parser uses, and what becomes of it: a method, or the words that say what is not supported.
  struct Construct {
    std::string_view m_name;
    Method m_build;
    const char* m_unsupported;
  };

  OwnedRqExprPtr BuildExpr(SqlNode node);
  OwnedRqExprCondPtr BuildCondition(SqlNode node);
  OwnedRqExprPtr BuildValue(SqlNode node);
  OwnedRqExprPtr BuildBy(const Construct* pConstruct, SqlNode node);

  // The kinds of nodes.
  OwnedRqExprPtr BuildOperatorForm(SqlNode node);
  OwnedRqExprPtr BuildConnective(SqlNode node);
  OwnedRqExprPtr BuildNullTest(SqlNode node);
  OwnedRqExprPtr BuildColumn(SqlNode node);
  OwnedRqExprPtr BuildConstant(SqlNode node);
  OwnedRqExprPtr BuildParameter(SqlNode node);
  OwnedRqExprPtr BuildFunction(SqlNode node);
  OwnedRqExprPtr BuildTypedLiteral(SqlNode node);
  OwnedRqExprPtr BuildMomentToken(SqlNode node);

  // The forms of operators.
  OwnedRqExprPtr BuildOperator(SqlNode node);
  OwnedRqExprPtr BuildIn(SqlNode node);
  OwnedRqExprPtr BuildLike(SqlNode node);
  OwnedRqExprPtr BuildBetween(SqlNode node);

  // The functions.
  OwnedRqExprPtr BuildSessionVariable(SqlNode node);

  // The types of literals.
  OwnedRqExprPtr BuildDate(SqlNode node);
  OwnedRqExprPtr BuildTime(SqlNode node);
  OwnedRqExprPtr BuildTimestamp(SqlNode node);
  OwnedRqExprPtr BuildInterval(SqlNode node);

  // The tokens of moments.
  OwnedRqExprPtr BuildCurrentDate(SqlNode node);
  OwnedRqExprPtr BuildCurrentTime(SqlNode node);
  OwnedRqExprPtr BuildCurrentTimestamp(SqlNode node);

  template <class Junction>
  OwnedRqExprPtr BuildJunction(SqlNode node);
  template <class Comparison>
  OwnedRqExprPtr BuildComparison(SqlNode node);
  template <class Value>
  Value ReadMoment(SqlNode node, const char* whatItIsNot);
  OwnedRqExprPtr BuildRowIn(SqlNode node);
  Heap<RqExprColumnListOrdered> BuildRow(SqlNode row, std::size_t nColumns);
  OwnedRqExprPtr BuildDecimal(std::string_view number, std::size_t offset);

  std::int32_t ReadFoldedInteger(std::size_t offset) const;
  std::vector<std::string> ReadNames(SqlNode columnRef) const;
  std::vector<std::string> ReadNamesFromText(std::size_t offset, std::size_t nNames) const;
  int TableNumberOf(const std::vector<std::string>& names);

  const SqlCondition& m_condition;
  std::unordered_map<std::string, int> m_tableNumbers;  ///< By qualifier, its names each ended by a zero byte.
};
