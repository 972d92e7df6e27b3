#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Host/KXDateTime.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqSetOperator.h"
#include "rq/sql/SqlTarget.h"
#include "rq/sql/SqlValueClass.h"

class PropertyValue;
class RqDerivedColumn;
class RqDerivedTable;
class RqExprAggr;
class RqExprCondIn;
class RqExprCondLike;
class RqExprSortDependentAggr;
class RqSharedList;

/// How tightly the outermost operator of a text binds. A condition binds less tightly than any value.
enum class SqlPrecedence { kOr, kAnd, kNot, kComparison, kConcat, kAdd, kMultiply, kUnary, kPrimary };

struct SqlExprText {
  std::string m_text;
  SqlPrecedence m_precedence = SqlPrecedence::kPrimary;
};

/// Writes requests over physical tables as SQL for one database.
///
///   names     a table is T and its number, a derived one D and its number, as in the text form; their columns keep the
///             names of the columns that they are, and others are c and their number
///   features  what the database cannot do is written by other means where these give the same, in three truth values;
///             all else raises SqlWriteError with the feature and the place
///   blocks    common table expressions stand in front of the statement, each once, in an order in which each sees
///             those that it reads; where the database has none they are written out wherever they are read
///   joins     conditions of inner joins stand at the first join at which all their tables are there; those of one
///             table that is not joined go to WHERE. Outer joins keep their sides
///
/// Differs from what a database makes of a text of its own: / is the division of numbers and not of integers, and so
/// integers are cast; dates and timestamps compare as moments.
///
/// An object writes one statement. The request is lent.
class SqlWriter {
 public:
  explicit SqlWriter(const SqlTarget& target) : m_target(target) {}

  /// The statement, without a semicolon. The names are those of the columns of the result, empty for a column that has
  /// none of its own; without any, all columns go by the names that inner blocks would give them.
  std::string Write(const RqAbstractList& list, const std::vector<std::string>& names = {});

 private:
  using Names = std::vector<std::string>;
  using FeatureId = SqlTarget::FeatureId;
  using Method = SqlExprText (SqlWriter::*)(const RqExpr&);
  struct KindMethod;
  class FromClause;
  class PlaceScope;

  // Refusals, with the place.

  [[noreturn]] void Refuse(const std::string& what, const RqNode* pNode) const;
  void Require(FeatureId id, const RqNode* pNode) const;
  void RequireAtMost(FeatureId id, std::size_t count, const RqNode* pNode) const;

  // Blocks (SqlWriterBlocks.cpp).

  /// The text of a list at the present indent. Names of its visible columns.
  std::string List(const RqAbstractList& list, const Names& names);
  std::string ListText(const RqAbstractList& list, const Names& names);
  std::string Block(const RqList& list, const Names& names);
  std::string SelectClause(const RqList& list, const std::vector<int>& columns, const Names& names);
  std::string RowsClauses(const RqList& list);
  std::string GroupByClause(const RqList& list);
  std::string OrderByClause(const RqList& list, const std::vector<int>& columns, const Names& names);
  std::string SortKey(const RqList& list, const RqSortSpec& spec, const std::vector<int>& columns, const Names& names);
  std::string Directed(const std::string& key, const RqSortSpec& spec) const;
  std::string LimitClause(const RqAbstractList& list);
  std::string ExpandedGroupingSets(const RqList& list, const Names& names);
  std::string GroupingSet(const RqList& list, std::int32_t set, const std::vector<int>& columns, const Names& names);
  std::string SetOperator(const RqAbstractList& list, const Names& names);
  template <class Operator>
  std::string Branches(const Operator& list, const Names& names, const std::string& words);
  template <class Operator>
  std::string FirstBranches(const Operator& list, int count, const Names& names, const std::string& words);
  bool IsFlatFirstBranch(const RqAbstractList& branch, const RqAbstractList& list) const;
  std::string NumberedBranches(const RqAbstractList& list, const Names& names, const std::string& words);
  std::string Branch(const RqAbstractList& list, const Names& names);
  /// "(", the text of the list and ")", indented, on lines of its own.
  std::string Enclosed(const RqAbstractList& list, const Names& names);
  std::string EnclosedText(const std::string& text) const;
  std::string NewLine(int more = 0) const;
  std::string FilterLines(const char* word, const std::vector<std::string>& conjuncts) const;
  /// bAlone says that nothing stands beside them, so that a single one needs no brackets.
  std::vector<std::string> Conjuncts(const RqExprCond& cond, bool bAlone);

  // Names (SqlWriterNames.cpp).

  /// No common table expression has the name of a table of the database.
  void TakeTableNames();
  static std::vector<int> VisibleColumns(const RqAbstractList& list);
  Names VisibleNames(const RqAbstractList& list);
  /// Of all columns, also hidden ones.
  const Names& ColumnNames(const RqAbstractList& list);
  Names MakeColumnNames(const RqAbstractList& list);
  std::string ColumnName(const RqDerivedColumn& column);
  std::string NameCommonExpr(const RqAbstractList& list, const std::string& wanted);
  std::string TableAlias(const RqIdentifiedTable& table) const;
  std::string QualifiedName(char letter, int tableNumber, const std::string& name) const;

  // Tables and joins (SqlWriterTables.cpp).

  std::string FromLines(const RqList& list, std::vector<std::string>& conjuncts);
  std::string Table(const RqAbstractTable& table);
  std::string TableWithFilter(const RqIdentifiedTable& table, const std::vector<const RqExprCond*>& conds);
  std::string DerivedTable(const RqDerivedTable& table);
  const RqAbstractList& SharedListOf(const RqSharedList& list);

  // Values (SqlWriterValues.cpp, SqlWriterFunctions.cpp, SqlWriterDates.cpp).

  SqlExprText Value(const RqExpr& expr);
  std::string Argument(const RqExpr& expr) { return Value(expr).m_text; }
  /// In parentheses unless it binds at least so tightly.
  std::string Operand(const RqExpr& expr, SqlPrecedence least);
  static std::string Parenthesized(SqlExprText text, SqlPrecedence least);
  SqlValueClass Class(const RqExpr& expr) const { return ClassOf(expr, m_target.GetGateway()); }
  SqlExprText Column(const RqExpr& expr);
  SqlExprText Reference(const RqExpr& expr);
  SqlExprText Parameter(const RqExpr& expr);
  SqlExprText SessionVariable(const RqExpr& expr);
  SqlExprText PropertyText(const PropertyValue& value, const RqExpr& expr) const;
  SqlExprText Literal(const RqExpr& expr);
  static SqlExprText IntegerText(std::int64_t value);
  static SqlExprText FloatText(double value);
  static std::string Quoted(const KXString& text);
  SqlExprText DateText(const KXDate& date, const RqExpr& expr) const;
  SqlExprText TimeText(const KXTime& time, const RqExpr& expr) const;
  SqlExprText TimestampText(const KXDateTime& moment, const RqExpr& expr) const;
  SqlExprText Arithmetic(const RqExpr& expr);
  SqlExprText Division(const RqExpr& expr);
  SqlExprText Minus(const RqExpr& expr);
  SqlExprText Remainder(const RqExpr& expr);
  SqlExprText Round(const RqExpr& expr);
  SqlExprText Trim(const RqExpr& expr);
  SqlExprText Substring(const RqExpr& expr);
  SqlExprText LookupCase(const RqExpr& expr);
  SqlExprText IfCase(const RqExpr& expr);
  SqlExprText Coalesce(const RqExpr& expr);
  SqlExprText NullIf(const RqExpr& expr);
  SqlExprText Cast(const RqExpr& expr);
  SqlExprText IndexCol(const RqExpr& expr);
  SqlExprText Evaluate(const RqExpr& expr);
  SqlExprText Row(const RqExpr& expr);
  SqlExprText ScalarSubquery(const RqExpr& expr);
  SqlExprText Function(const RqExpr& expr);
  SqlExprText Filled(std::string_view pattern, std::span<const RqExpr* const> operands, SqlPrecedence precedence);
  SqlExprText CalendarExtract(const RqExpr& expr);
  SqlExprText TimestampAdd(const RqExpr& expr);
  SqlExprText TimestampDiff(const RqExpr& expr);
  SqlExprText MomentArithmetic(const RqExpr& expr, const RqExpr& moment, const RqExpr& amount, bool bSubtract);
  SqlExprText Shifted(const RqExpr& moment, const std::string& months, const std::vector<std::string>& modifiers,
                      bool bDate);
  /// The value in a comparison with moments, of which one is a timestamp.
  std::string AsTimestamp(const RqExpr& expr);

  // Aggregates (SqlWriterAggregates.cpp). The filter is null where there is none.

  SqlExprText Aggregate(const RqExprAggr& expr);
  bool HasGroupingSetsToExpand() const;
  void RequireWindow(const RqExprAggr& aggr) const;
  SqlExprText AggregateOfGroup(const RqExprAggr& aggr, const RqExprCond* pFilter);
  SqlExprText Deviation(const RqExprAggr& aggr, const RqExprCond* pFilter);
  SqlExprText AggregateWithBreak(const RqExprAggr& aggr, const RqExprCond* pFilter);
  SqlExprText AggregateOfTables(const RqExprAggr& aggr, const RqExprCond* pFilter);
  std::string WindowFunction(const RqExprAggr& aggr, const RqExprCond* pFilter);
  std::string FrameText(const RqExprSortDependentAggr& aggr);
  std::string FilterText(const RqExprCond& filter);
  std::string PartitionText(const RqExprColumnList* pBreak);
  SqlExprText GroupingId(const RqExpr& expr);

  // Conditions (SqlWriterConditions.cpp). bFilter says that null counts as false where the condition stands.

  SqlExprText Condition(const RqExprCond& cond, bool bFilter);
  template <class Junction>
  SqlExprText JunctionOf(const RqExprCond& cond, const char* word, SqlPrecedence precedence, bool bFilter);
  SqlExprText Comparison(const RqExprCond& cond, const char* sign, FeatureId feature);
  SqlExprText Equality(const RqExprCond& cond);
  SqlExprText Between(const RqExprCond& cond);
  SqlExprText Like(const RqExprCondLike& cond);
  SqlExprText In(const RqExprCondIn& cond);
  SqlExprText InList(const RqExprCondIn& cond);
  SqlExprText Quantified(const RqExprCond& cond, const char* sign, bool bAll, bool bFilter);
  SqlExprText QuantifiedByExists(const RqExprCond& cond, const char* sign, bool bAll, bool bFilter);
  SqlExprText Exists(const RqExprCond& cond);
  /// Operands of a comparison: as timestamps if they are moments of two kinds.
  std::vector<std::string> Comparable(const std::vector<const RqExpr*>& exprs);
  std::vector<std::string> ComparableRows(const std::vector<const RqExpr*>& rows);
  /// The operand of a comparison with a value of the class.
  std::string ComparableWith(const RqExpr& expr, SqlValueClass otherClass);
  SqlExprText InSubquery(const RqExprCondIn& cond);
  /// The block of a subquery, which the feature is needed for.
  const RqAbstractList& SubqueryBlock(const RqExpr& expr, FeatureId feature);
  std::string SubqueryText(const RqExpr& expr, FeatureId feature);

  const SqlTarget& m_target;
  std::string m_place = "the statement";
  int m_indent = 0;
  int m_caseDepth = 0;
  std::uint32_t m_depth = 0;  ///< Of blocks in each other.
  int m_numQuantified = 0;
  int m_numFilters = 0;
  std::map<const RqAbstractList*, Names> m_columnNames;

  struct CommonExpr {
    std::string m_name;
    std::string m_text;
  };
  std::vector<CommonExpr> m_commonExprs;  ///< In the order in which they stand.
  std::map<const RqAbstractList*, std::string> m_commonNames;
  std::set<std::string> m_takenNames;
  // Of the columns that are grouped by, those that the grouping set being written does not have, and has.
  std::vector<const RqExpr*> m_nulls;
  std::vector<const RqExpr*> m_kept;
  // The same of the blocks around the innermost one, in which they hold in all clauses.
  std::vector<const RqExpr*> m_outerNulls;
  std::vector<const RqExpr*> m_outerKept;
  const RqList* m_pBlock = nullptr;  ///< The innermost block being written.
  std::set<int> m_tablesAgain;       ///< Tables that stand in the statement twice and are being written again.
};

/// Whether a tree, other than in the blocks of its subqueries, has an aggregate.
bool HasAggregates(const RqNode* pNode);
/// Whether a block reads columns of tables that are not its own.
bool IsCorrelated(const RqAbstractList& block);
