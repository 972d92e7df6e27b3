#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "Host/KXString.h"
#include "Query/Optimizer/Request/Node/SQORAVisitorRqExpr.h"
#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.h"

class ARpGateway;
class ARpVariable;
class Expr;
class ExternalScriptExecutionData;
class RqNode;
class ServerStatistics;
struct VoidID;

/// Renders a request, or any part of one, as text: the only readable form of a tree. It stands in the logs that a user
/// reads, and made for the plan cache it is the base of the cache's key.
///
/// Law: the text depends on the tree, the settings and what the gateways answer, and on nothing else; so one tree has
/// one text, byte for byte. A missing operand prints as nothing; what ends the process is a null among the columns of a
/// list, a derived table without a block and a set operator of fewer than two lists.
///
/// A dumper serves one walk on one thread. It owns the text alone: gateways and statistics are the caller's and must
/// outlive it. Everything is appended to one string, so the cost is linear in the text. An ErrorMessage raised by a
/// gateway, by a lack of stack or by the cancellation of the job goes on to the caller.
///
/// Names. A metadata object prints by name when there is a gateway that has it: "Sales.Amount" for a column, and in
/// external mode with all its containers and in double quotes; an attribute that is computed from other objects is
/// followed by these. Without that it prints by number, as "1.3003:42": the
/// repository and the identifier.
///
/// A condition prints no parentheses of its own around its operands, apart from the disjunction below a conjunction or
/// a negation. Forms that are not plain from the words in them:
///   RqExprDimension          "[Dimension Time]"; "[Dimension Time, Fiscal]" as seen through a hierarchy
///   RqExprLevel              "[Level Quarter]"
///   RqExprMemberReference    "[Level Quarter].'Q1'"; "[Level Quarter].ALL" for all members; then " (key, key)", the
///                            columns of the logical key, if there are any
///   RqExprIsAncestor         "IsAncestor(member, of, distance)"; "IsLeaf(member)" in the leaf form, whose other
///                            operands are always the same
///   RqExprIsRoot             "IsRoot(member)"
///   RqExprIsSibling          "IsSibling(member, of, distance, parent key)", with ", include root" in front of ")"
///   RqExprIsLeaf             "IsLeaf(key, key)"
///   any of these four        " not " in front if negated; ", 3001:7" in front of ")" if it has a logical table source
///   RqExprLogicalSubquery    its statement
///   RqExprPhysicalSubquery   "Subquery(text of its block)", with ", Number of pushable sources: 2" in front of ")" if
///                            there are any
///   RqExprPersistSubquery    "select column from table"
///   RqExprAggrSum            "sum(x by a)"; "sum_SQL99(x)" as a window aggregate
///   RqExprAggrCountStar      "count(* : '*')"
///   RqExprAggrRank           "Rank([x desc, y asc] by a)"
///   RqExprAggrTopN           "topN(x, 10 by a)", and so all kinds with an argument
///   RqExprAggrRunningSum     "rsum(x by a order by [2 asc, 1 desc ])", the numbers those of columns
///   RqExprNoAggregate        its first argument
///   RqExprEvaluatePredicate  "Evaluate_Predicate( 'definition', operand) ", "not " in front if negated
///   a time of day            with a fraction of the second only where there is one; a timestamp in its precision, or
///                            with all nine digits where that would hide some: different moments have different texts
class RqDumpout : public AVisitorRqNode, public AVisitorRqExpr {
 public:
  static const KXString kNestingIndentation;  ///< Four blanks.
  static const KXString kSingleSpace;

  /// The child block is shown only if the server's configuration allows execution debugging, too.
  explicit RqDumpout(bool displayTargetMarks = false, bool newLineMode = false, ARpGateway* pRpPretty = nullptr,
                     bool displayNodeIDs = false, ARpGateway* pRpSessionVars = nullptr, bool displayChildIDs = false,
                     bool externalMode = false, bool forPlanCache = false, bool shortExternalMode = false,
                     bool prettyExternalMode = false, ServerStatistics* pServerStatistics = nullptr,
                     bool executionPlanStats = false);

  const KXString& GetString() const { return m_string; }

  /// The text of a tree; the empty string for null. Left at their defaults the settings give one line, with metadata
  /// objects by number and session variables by name.
  static KXString StringFrom(const RqNode& node, bool displayTargetMarks = false, bool newLineMode = false,
                             ARpGateway* pRpPretty = nullptr, bool displayNodeIDs = false,
                             ARpGateway* pRpSessionVars = nullptr, bool displayChildIDs = false,
                             bool externalMode = false, bool forPlanCache = false, bool shortExternalMode = false,
                             bool prettyExternalMode = false, ServerStatistics* pServerStatistics = nullptr,
                             bool executionPlanStats = false);
  static KXString StringFrom(const RqNode* pNode, bool displayTargetMarks = false, bool newLineMode = false,
                             ARpGateway* pRpPretty = nullptr, bool displayNodeIDs = false,
                             ARpGateway* pRpSessionVars = nullptr, bool displayChildIDs = false,
                             bool externalMode = false, bool forPlanCache = false, bool shortExternalMode = false,
                             bool prettyExternalMode = false, ServerStatistics* pServerStatistics = nullptr,
                             bool executionPlanStats = false);

  /// Writes " ** ", the label, a blank, the text and " ** " as a line on the standard error stream, for a debugger.
  static void DebugPrint(const char* label, const RqNode& node, ARpGateway* pRp);
  /// Writes the label and the number of expressions, then a line for each of them.
  static void DebugPrint(const char* label, const std::vector<const RqExpr*>& exprs, ARpGateway* pRp);

  /// What the node is marked for, as " [for database 3023:7:Sales DB,2]".
  void ShowTargetMarks(RqNode& node);
  /// The objects of a metadata expression, as " [ Rate : 0.19, Amount ] ": each by name, a variable with its value.
  /// Nothing if there are none.
  void ExtractExpr(Expr& expr, ARpGateway* pRp);
  /// The rows passed over and the most rows that a list yields, where it has such bounds.
  void ShowRownumOffsetLimit(const RqAbstractList& list);
  /// "c12"
  KXString GetDerivedColumnName(const RqDerivedColumn& column) const;
  /// The addresses of the node and its children, and its identity.
  void ShowChildIDs(RqNode& node);
  /// "(distinct x by a, b SB Amount at_distinct a, b, c)": what stands behind the name of an aggregate. SB is the share
  /// base, at_distinct the compute break; what an aggregate lacks is left out.
  void VisitAggr(RqExprAggr& expr);
  void Indent();
  void NewLine();

#define RQ_VISIT(Class, body, state) bool Visit(Class& node) override;
#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.def"
#define RQ_VISIT(Class, body, state) bool Visit(Class& expr) override;
#include "Query/Optimizer/Request/Node/SQORAVisitorRqExpr.def"

 protected:
  void Append(std::wstring_view text) { m_string.append(text); }
  /// A literal, whose length is known without counting.
  template <std::size_t kSize>
  void Append(const wchar_t (&literal)[kSize]) {
    m_string.append(std::wstring_view(literal, kSize - 1));
  }
  /// Decimal digits, made in place.
  template <std::integral Number>
  requires(!std::same_as<Number, wchar_t> && !std::same_as<Number, bool>) void Append(Number number) {
    AppendInteger(static_cast<std::int64_t>(number));
  }
  void Append(const VoidID& id);
  /// The text between two quotes; one inside is doubled.
  void AppendQuoted(std::wstring_view text, wchar_t quote);
  /// A text of the request between single quotes. Wanted: only external mode doubles a quote inside; the other forms
  /// show the text as it stands and are not meant to be read back.
  void AppendStringText(std::wstring_view text);

  /// A name, which external mode puts in double quotes.
  void AppendName(std::wstring_view name);
  /// The name of a metadata object as the settings want it, or else its number.
  void AppendObject(std::uint32_t repositoryUniqueID, const VoidID& id);
  void AppendVariableValue(const ARpVariable& variable, ARpGateway* pRp);

  /// The operand of a slot; nothing for a slot that is null or not there.
  void PrintOperand(RqExpr& expr, int slot);
  /// The operands from a slot on, with ", " between them; a null one prints as nothing.
  void PrintOperands(RqExpr& expr, int firstSlot = 0);
  /// As PrintOperand, with a disjunction in parentheses.
  void PrintConnectiveOperand(RqExpr& expr, int slot);
  /// The operands of slots 0 and 1 with the operator between them.
  bool PrintBinary(RqExpr& expr, std::wstring_view operatorText);
  /// The opening, the operands with the separator between them, the closing. Operands that are not there take their
  /// separator with them at the end of the list and nowhere else.
  bool PrintFunction(RqExpr& expr, std::wstring_view opening, std::wstring_view separator = L", ",
                     std::wstring_view closing = L")");
  /// As PrintBinary, and a closing bracket: a value and the subquery that it is compared to.
  bool PrintQuantified(RqExpr& expr, std::wstring_view opening);

  /// "D3"
  void AppendTableNumber(const KXString& prefix, const RqIdentifiedTable& table);
  /// The text of a tree one level deeper; nothing for null.
  void PrintDeeper(RqNode* pNode);

  KXString m_string;
  int m_nestingLevel = 0;
  bool m_bDisplayTargetMarks;
  bool m_bNewLineMode;
  ARpGateway* m_pRp_ForPrettyColumnNames;
  bool m_bDisplayNodeIDs;
  bool m_bDisplayChildIDs;
  bool m_bExternalMode;
  bool m_bShortExternalMode;
  bool m_bForPlanCache;
  bool m_bPrettyExternalMode;
  bool m_bExecutionPlanStats;
  ServerStatistics* m_serverStatistics;
  ARpGateway* m_pRp_ForSessionVars;

 private:
  void AppendInteger(std::int64_t number);
  void AppendChildIDs(std::wstring_view opening, RqNode& node);
  void AppendDescriptorMark(const RqExprLiteral& literal);
  void PrintRows(RqExprCondMultiColumnIn& cond);
  void PrintTableSource(const RqExprIsAncestor& cond);
  void PrintWhenThen(RqExpr& expr, int firstSlot, int defaultSlot);
  void PrintCastType(RqExprCast& expr);

  void AppendNodeID(const RqNode& node);
  template <class Numbers>
  void AppendNumbers(const Numbers& numbers);
  void ShowOperatorStatistics(const RqNode& node);
  void PrintGroupingSets(RqGroupBy& groupBy);
  void PrintJoinWord(RqTableReference& reference);
  template <class SetOperator>
  bool PrintSetOperator(SetOperator& list, std::wstring_view word, bool bAll);
  void PrintWrapperHeader(RqAbstractList& list, std::wstring_view word);
  template <class Entries>
  void PrintMolapJoins(const Entries& entries, std::wstring_view word);
  void PrintBreak(RqExprAggr& expr, int slot, std::wstring_view word);
  void PrintBreaks(RqExprAggr& expr);
  bool PrintAggr(RqExprAggr& expr, std::wstring_view name);
  bool PrintAggrWithArgument(RqExprAggr& expr, std::wstring_view name);
  bool PrintRunningAggr(RqExprSortDependentAggr& expr, std::wstring_view name);
  bool PrintFirstArg(RqExprAggr& expr, std::wstring_view opening, std::wstring_view closing);
  void PrintExternalScript(const ExternalScriptExecutionData& script);
};
