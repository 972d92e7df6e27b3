#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"
#include "rq/sql/BlockAggregates.h"
#include "rq/sql/SqlParser.h"
#include "rq/sql/SqlScope.h"

struct ScalarFunction;

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
///   operators       + - * / % ^ || and the minus of one operand
///   functions       those of ScalarFunctions.h, also in the special forms that the standard and the text form have for
///                   them; COALESCE and NULLIF; USER and CURRENT_USER
///   aggregates      those of AggregateBuilder.h, in a query
///   CASE            with a key: a lookup; without one: conditions
///   casts           CAST(a AS type) and a::type, to the types that have a text
///   rows            (a, b) IN ((1, 2), ...)
///
/// Raises SqlError at the place of anything else, and ErrorMessage when the stack runs low. Text that nests up to
/// kMaxSqlNesting levels needs some MiB of stack.
OwnedRqExprCondPtr ParseCondition(std::string_view text);

/// The numbers of tables, from 1 as they appear: conditions about the same tables are parsed with one of these.
class SqlTables {
 public:
  /// The number of the table that a qualifier names.
  int GetNumber(std::span<const std::string> qualifier);

 private:
  std::unordered_map<std::string, int> m_numbers;  ///< By qualifier, its names each ended by a zero byte.
};

/// What a condition is parsed with.
struct SqlContext {
  SqlTables m_tables;
  /// If not null, a session variable without a value there is an error at its place.
  ARpGateway* m_pSession = nullptr;
  /// What columns and subqueries stand for. Null where no tables are known: then a column is a name, and there are no
  /// subqueries.
  SqlScope* m_pScope = nullptr;
  AggregateRules m_aggregates{};
};

/// The same in a context, which is lent.
OwnedRqExprCondPtr ParseCondition(std::string_view text, SqlContext& context);

/// Makes the trees of the expressions of a parsed text: a method for each kind of node of the parser, found by the
/// kind's name.
class ConditionBuilder {
 public:
  /// Both are lent. The nodes are those of the text.
  ConditionBuilder(std::string_view text, SqlContext& context) : m_text(text), m_context(context) {}

  OwnedRqExprCondPtr BuildCondition(SqlNode node);
  OwnedRqExprPtr BuildValue(SqlNode node);
  /// The parts of a name; also of one that the parser has cut. Raises SqlError for the sign for all columns.
  std::vector<std::string> ReadNames(SqlNode columnRef) const;

 private:
  using Method = OwnedRqExprPtr (ConditionBuilder::*)(SqlNode);

  /// A name that the parser uses, and what becomes of it: a method, or the words that say what is not supported.
  struct Construct {
    std::string_view m_name;
    Method m_build;
    const char* m_unsupported;
  };

  OwnedRqExprPtr BuildExpr(SqlNode node);
  OwnedRqExprPtr BuildValueOrNone(SqlNode node) { return node.IsNone() ? OwnedRqExprPtr() : BuildValue(node); }
  OwnedRqExprPtr BuildBy(const Construct* pConstruct, SqlNode node);

  // The kinds of nodes.
  OwnedRqExprPtr BuildOperatorForm(SqlNode node);
  OwnedRqExprPtr BuildConnective(SqlNode node);
  OwnedRqExprPtr BuildNullTest(SqlNode node);
  OwnedRqExprPtr BuildColumn(SqlNode node);
  OwnedRqExprPtr BuildConstant(SqlNode node);
  OwnedRqExprPtr BuildParameter(SqlNode node);
  OwnedRqExprPtr BuildFunction(SqlNode node);
  OwnedRqExprPtr BuildCase(SqlNode node);
  OwnedRqExprPtr BuildCoalesce(SqlNode node);
  OwnedRqExprPtr BuildTypeCast(SqlNode node);
  OwnedRqExprPtr BuildValueFunction(SqlNode node);
  OwnedRqExprPtr BuildSubquery(SqlNode node);

  // The forms of operators.
  OwnedRqExprPtr BuildOperator(SqlNode node);
  OwnedRqExprPtr BuildIn(SqlNode node);
  OwnedRqExprPtr BuildLike(SqlNode node);
  OwnedRqExprPtr BuildBetween(SqlNode node);

  // The functions.
  OwnedRqExprPtr BuildScalar(const ScalarFunction& function, SqlNode node);
  OwnedRqExprPtr BuildSessionVariable(SqlNode node);
  OwnedRqExprPtr BuildGroupingId(SqlNode node);

  // The types of literals.
  OwnedRqExprPtr BuildTypedLiteral(SqlNode node);
  OwnedRqExprPtr BuildDate(SqlNode node);
  OwnedRqExprPtr BuildTime(SqlNode node);
  OwnedRqExprPtr BuildTimestamp(SqlNode node);
  OwnedRqExprPtr BuildInterval(SqlNode node);

  // The words that stand for a value.
  OwnedRqExprPtr BuildCurrentDate(SqlNode node);
  OwnedRqExprPtr BuildCurrentTime(SqlNode node);
  OwnedRqExprPtr BuildCurrentTimestamp(SqlNode node);

  // The forms of subqueries.
  OwnedRqExprPtr BuildExists(SqlNode node);
  OwnedRqExprPtr BuildScalarSubquery(SqlNode node);
  OwnedRqExprPtr BuildAny(SqlNode node);
  OwnedRqExprPtr BuildAll(SqlNode node);
  OwnedRqExprPtr BuildInSubquery(SqlNode node, bool bNegated);
  template <class Quantified>
  OwnedRqExprPtr BuildQuantified(SqlNode node);

  template <class Junction>
  OwnedRqExprPtr BuildJunction(SqlNode node);
  template <class Binary>
  OwnedRqExprPtr BuildBinary(SqlNode node);
  template <class Node>
  OwnedRqExprPtr BuildNode(SqlNode node);
  template <class Value>
  Value ReadMoment(SqlNode node, const char* whatItIsNot);
  OwnedRqExprPtr BuildRowIn(SqlNode node);
  Heap<RqExprColumnListOrdered> BuildRow(SqlNode row, std::size_t nColumns);
  OwnedRqExprPtr BuildDecimal(std::string_view number, std::size_t offset);

  std::int32_t ReadFoldedInteger(std::size_t offset) const;
  std::vector<std::string> ReadNamesFromText(std::size_t offset, std::size_t nNames) const;
  int TableNumberOf(const std::vector<std::string>& names) const;

  std::string_view m_text;
  SqlContext& m_context;
};
