#include "Query/Optimizer/Request/Conditions/SQORRqExprCondQuantified.h"
#include "rq/sql/ConditionBuilder.h"
#include "rq/sql/SqlNodeUtil.h"
#include "rq/sql/SqlText.h"

// Subqueries.

OwnedRqExprPtr ConditionBuilder::BuildSubquery(SqlNode node) {
  static constexpr Construct kForms[] = {
      {"EXISTS_SUBLINK", &ConditionBuilder::BuildExists, nullptr},
      {"EXPR_SUBLINK", &ConditionBuilder::BuildScalarSubquery, nullptr},
      {"ANY_SUBLINK", &ConditionBuilder::BuildAny, nullptr},
      {"ALL_SUBLINK", &ConditionBuilder::BuildAll, nullptr},
      {"ARRAY_SUBLINK", nullptr, "an array"},
  };
  if (!m_context.m_pScope) RaiseUnsupported(node, "a subquery");
  return BuildBy(FindByName(kForms, node.Get("subLinkType").GetText()), node);
}

OwnedRqExprPtr ConditionBuilder::BuildExists(SqlNode node) {
  return OwnedRqExprPtr(new RqExprCondExists(m_context.m_pScope->MakeSubquery(node.Get("subselect"), 0).Release()));
}

OwnedRqExprPtr ConditionBuilder::BuildScalarSubquery(SqlNode node) {
  return m_context.m_pScope->MakeSubquery(node.Get("subselect"), 1);
}

OwnedRqExprPtr ConditionBuilder::BuildInSubquery(SqlNode node, bool bNegated) {
  if (!m_context.m_pScope) RaiseUnsupported(node, "a subquery");
  const SqlNode search = node.Get("testexpr");
  if (search.GetKind() != "RowExpr") {
    OwnedRqExprPtr value = BuildValue(search);
    Heap<RqExprSubquery> subquery = m_context.m_pScope->MakeSubquery(node.Get("subselect"), 1);
    return OwnedRqExprPtr(new RqExprCondIn(value.Release(), subquery.Release(), bNegated));
  }
  const std::size_t nColumns = search.Get("args").GetElements().size();
  Heap<RqExprColumnListOrdered> columns = BuildRow(search, nColumns);
  Heap<RqExprSubquery> subquery = m_context.m_pScope->MakeSubquery(node.Get("subselect"), nColumns);
  return OwnedRqExprPtr(new RqExprCondMultiColumnIn(columns.Release(), subquery.Release(), bNegated));
}

template <class Quantified>
OwnedRqExprPtr ConditionBuilder::BuildQuantified(SqlNode node) {
  OwnedRqExprPtr value = BuildValue(node.Get("testexpr"));
  Heap<RqExprSubquery> subquery = m_context.m_pScope->MakeSubquery(node.Get("subselect"), 1);
  return OwnedRqExprPtr(new Quantified(value.Release(), subquery.Release()));
}

OwnedRqExprPtr ConditionBuilder::BuildAny(SqlNode node) {
  static constexpr Construct kOperators[] = {
      {"<", &ConditionBuilder::BuildQuantified<RqExprCondAnyLessThan>, nullptr},
      {"<=", &ConditionBuilder::BuildQuantified<RqExprCondAnyLessEqual>, nullptr},
      {">", &ConditionBuilder::BuildQuantified<RqExprCondAnyGreaterThan>, nullptr},
      {">=", &ConditionBuilder::BuildQuantified<RqExprCondAnyGreaterEqual>, nullptr},
      {"<>", &ConditionBuilder::BuildQuantified<RqExprCondAnyNotEqual>, nullptr},
  };
  const std::string name = JoinedByPoints(TextsOf(node.Get("operName")));
  if (name.empty() || name == "=") return BuildInSubquery(node, false);
  if (const Construct* const pOperator = FindByName(kOperators, name)) return BuildBy(pOperator, node);
  RaiseUnsupported(node, "the operator " + ForMessage(name, kMaxQuotedCharacters) + " with ANY");
}

OwnedRqExprPtr ConditionBuilder::BuildAll(SqlNode node) {
  static constexpr Construct kOperators[] = {
      {"=", &ConditionBuilder::BuildQuantified<RqExprCondAllEqual>, nullptr},
      {"<", &ConditionBuilder::BuildQuantified<RqExprCondAllLessThan>, nullptr},
      {"<=", &ConditionBuilder::BuildQuantified<RqExprCondAllLessEqual>, nullptr},
      {">", &ConditionBuilder::BuildQuantified<RqExprCondAllGreaterThan>, nullptr},
      {">=", &ConditionBuilder::BuildQuantified<RqExprCondAllGreaterEqual>, nullptr},
  };
  const std::string name = JoinedByPoints(TextsOf(node.Get("operName")));
  if (name == "<>") return BuildInSubquery(node, true);
  if (const Construct* const pOperator = FindByName(kOperators, name)) return BuildBy(pOperator, node);
  RaiseUnsupported(node, "the operator " + ForMessage(name, kMaxQuotedCharacters) + " with ALL");
}
