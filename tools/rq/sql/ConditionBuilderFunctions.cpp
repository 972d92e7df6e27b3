#include "rq/sql/ConditionBuilder.h"

#include <algorithm>

#include "Host/KXString.h"
#include "Host/MetadataUtil.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"
#include "rq/sql/AggregateBuilder.h"
#include "rq/sql/CastType.h"
#include "rq/sql/ScalarFunctions.h"
#include "rq/sql/SqlLexer.h"
#include "rq/sql/SqlNodeUtil.h"
#include "rq/sql/SqlText.h"

// Calls of functions, choices and casts.

namespace {

/// Whether a call has nothing but arguments: no DISTINCT, no ORDER BY, no FILTER, no window.
bool IsPlainCall(SqlNode call) {
  static constexpr std::string_view kOptions[] = {"agg_order", "agg_filter",   "over",         "agg_within_group",
                                                  "agg_star",  "agg_distinct", "func_variadic"};
  return std::ranges::all_of(kOptions, [call](std::string_view option) { return call.Get(option).IsNone(); });
}

bool StandsNowhere(SqlNode node) { return node.GetLocation() == SqlNode::kNoLocation; }

/// The argument itself, as the text has it. A SUBSTRING with FOR alone gets a start from the parser and a cast around
/// the length: neither stands anywhere in the text. There is no node for the start then.
SqlNode AsWritten(SqlNode argument) {
  if (argument.GetKind() == "A_Const" && StandsNowhere(argument)) return {};
  const bool bIsCast = argument.GetKind() == "TypeCast" && StandsNowhere(argument.Get("typeName"));
  return bIsCast ? argument.Get("arg") : argument;
}

SqlWord ReadWord(SqlNode argument) {
  const std::size_t place = PlaceOfNode(argument);
  if (const SqlNode text = argument.Get("sval"); !text.IsNone()) {
    return {std::string(text.Get("sval").GetText()), true, place};
  }
  const std::vector<std::string_view> names = TextsOf(argument.Get("fields"));
  return {names.size() == 1 ? std::string(names[0]) : std::string(), false, place};
}

}  // namespace

OwnedRqExprPtr ConditionBuilder::BuildFunction(SqlNode node) {
  static constexpr Construct kFunctions[] = {
      {"grouping_id", &ConditionBuilder::BuildGroupingId, nullptr},
      {"valueof", &ConditionBuilder::BuildSessionVariable, nullptr},
  };
  const std::string name = WithoutCatalogue(TextsOf(node.Get("funcname")));
  if (const Construct* const pFunction = FindByName(kFunctions, name)) return BuildBy(pFunction, node);
  if (AggregateBuilder::IsAggregate(name)) return AggregateBuilder(m_text, m_context, name, node).Build();
  if (const ScalarFunction* const pFunction = FindScalarFunction(name)) return BuildScalar(*pFunction, node);
  throw SqlError(node.GetLocation(), "the function " + ForMessage(name, kMaxQuotedCharacters) +
                                         " is not supported; rq normalize --help lists those that are");
}

OwnedRqExprPtr ConditionBuilder::BuildScalar(const ScalarFunction& function, SqlNode node) {
  const std::vector<SqlNode> nodes = node.Get("args").GetElements();
  if (!IsPlainCall(node) || nodes.size() < function.m_minArguments || nodes.size() > function.m_maxArguments) {
    // The name as it is written, since the parser has others for some functions.
    const SqlToken token = SqlLexer(m_text, node.GetLocation()).Next();
    throw SqlError(token.m_begin, "the arguments of " +
                                      std::string(m_text.substr(token.m_begin, token.m_end - token.m_begin)) +
                                      " are (" + std::string(function.m_arguments) + ')');
  }
  ScalarArguments arguments;
  if (function.m_bBeginsWithWord) arguments.m_word = ReadWord(nodes.front());
  for (std::size_t i = function.m_bBeginsWithWord ? 1 : 0; i < nodes.size(); ++i) {
    arguments.m_operands.push_back(BuildValueOrNone(AsWritten(nodes[i])).Release());
  }
  return function.m_make(arguments);
}

OwnedRqExprPtr ConditionBuilder::BuildSessionVariable(SqlNode node) {
  const std::vector<SqlNode> arguments = node.Get("args").GetElements();
  if (IsPlainCall(node) && arguments.size() == 1 && arguments[0].GetKind() == "ColumnRef") {
    const std::vector<std::string> names = ReadNames(arguments[0]);
    if (names.size() == 2) {
      const KXStringPair variable(ToText(names[0]), ToText(names[1]));
      if (m_context.m_pSession && !MetadataUtil::IsSessionVariablePopulated(m_context.m_pSession, variable)) {
        throw SqlError(node.GetLocation(), "the session variable " + names[0] + '.' + names[1] + " has no value");
      }
      return OwnedRqExprPtr(new RqExprSessionVar(variable));
    }
  }
  throw SqlError(node.GetLocation(), "VALUEOF takes the block and the name of a variable: VALUEOF(\"block\".\"name\")");
}

OwnedRqExprPtr ConditionBuilder::BuildGroupingId(SqlNode node) {
  const AggregateRules& rules = m_context.m_aggregates;
  if (!rules.m_pBlock) throw SqlError(node.GetLocation(), "GROUPING stands in a query with groups");
  if (!rules.m_bOfGroup) throw SqlError(node.GetLocation(), "GROUPING cannot stand in " + std::string(rules.m_place));
  OwnedRqExprVector columns;
  for (const SqlNode column : node.Get("args").GetElements()) columns.push_back(BuildValue(column).Release());
  RqExprVector taken;
  taken.swap(columns);
  Heap<RqExprGroupingId> groupingId(new RqExprGroupingId(new RqExprColumnListOrdered(taken)));
  rules.m_pBlock->NoteGroupingId(groupingId.Get(), node);
  return groupingId;
}

// ---------------------------------------------------------------------------------------------------------------------
// Choices and casts

OwnedRqExprPtr ConditionBuilder::BuildCase(SqlNode node) {
  const OwnedRqExprPtr key = BuildValueOrNone(node.Get("arg"));
  OwnedRqExprVector arms;  // when and then by turns
  for (const SqlNode arm : node.Get("args").GetElements()) {
    const SqlNode when = arm.Get("expr");
    arms.push_back(key ? BuildValue(when).Release() : BuildCondition(when).Release());
    arms.push_back(BuildValue(arm.Get("result")).Release());
  }
  const OwnedRqExprPtr otherwise = BuildValueOrNone(node.Get("defresult"));
  RqExprPairVector pairs;
  pairs.reserve(arms.size() / 2);
  for (std::size_t i = 0; i < arms.size(); i += 2) pairs.emplace_back(arms[i], arms[i + 1]);
  arms.clear();  // the pairs have them
  if (key) return OwnedRqExprPtr(new RqExprLookupCase(key.Release(), otherwise.Release(), pairs));
  return OwnedRqExprPtr(new RqExprIfCase(otherwise.Release(), pairs));
}

OwnedRqExprPtr ConditionBuilder::BuildCoalesce(SqlNode node) {
  OwnedRqExprVector values;
  for (const SqlNode value : node.Get("args").GetElements()) values.push_back(BuildValue(value).Release());
  return OwnedRqExprPtr(new RqExprCoalesce(values));
}

OwnedRqExprPtr ConditionBuilder::BuildTypeCast(SqlNode node) {
  // CAST and :: have a place of their own, a literal has not.
  if (StandsNowhere(node)) return BuildTypedLiteral(node);
  const OwnedRqExprPtr operand = BuildValue(node.Get("arg"));
  const auto [type, precision, scale] = ReadCastType(node.Get("typeName"), m_text);
  return OwnedRqExprPtr(new RqExprCast(operand.Release(), type, precision, scale));
}
