#include "rq/sql/FromBuilder.h"

#include <algorithm>
#include <list>

#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "rq/sql/SqlNodeUtil.h"
#include "rq/sql/SqlText.h"

namespace {

/// What numbers and logical tables have in common: logical tables count below 0, by their place in the scope.
int LogicalTableKey(std::size_t source) { return -1 - static_cast<int>(source); }

/// The tables that an expression names; of logical tables the place in the scope tells the key.
std::set<int> GetTables(const RqExpr& expr, std::vector<TableSource>& sources) {
  std::list<RqNode*> columns;
  const RqNode::IsObjectType isColumn({kRqTargetColumn, kRqDerivedColumnReference, kRqAttribute});
  FindNodes(const_cast<RqExpr*>(&expr), isColumn, columns, false);
  std::set<int> tables;
  for (const RqNode* const pNode : columns) {
    if (pNode->GetObjectType() == kRqTargetColumn) {
      tables.insert(static_cast<const RqTargetColumn*>(pNode)->GetSourceTableNumber());
    } else if (pNode->GetObjectType() == kRqDerivedColumnReference) {
      tables.insert(static_cast<const RqDerivedColumnReference*>(pNode)->GetSourceTableNumber());
    } else {
      const VoidID& tableID = static_cast<const RqAttribute*>(pNode)->GetTableID();
      const auto it = std::ranges::find(sources, tableID, &TableSource::GetTableID);
      if (it != sources.end()) tables.insert(LogicalTableKey(static_cast<std::size_t>(it - sources.begin())));
    }
  }
  return tables;
}

/// Takes the conjuncts of a condition, left to right.
void TakeConjuncts(OwnedRqExprCondPtr cond, std::vector<OwnedRqExprCondPtr>& conjuncts) {
  KXThread::LowStackCheck(0);
  if (!cond->IsAndCond()) {
    conjuncts.push_back(std::move(cond));
    return;
  }
  for (int i = 0; i < cond->GetNumOperands(); ++i) {
    TakeConjuncts(OwnedRqExprCondPtr(static_cast<RqExprCond*>(cond->ReleaseIthChild(i))), conjuncts);
  }
}

bool IsTrue(SqlNode node) { return node.GetKind() == "A_Const" && node.Get("boolval", "boolval").IsTrue(); }

SqlTableRef::JoinType JoinTypeOf(SqlNode join) {
  const std::string_view type = join.Get("jointype").GetText();
  if (type == "JOIN_LEFT") return SqlTableRef::kLeftOuterJoin;
  if (type == "JOIN_RIGHT") return SqlTableRef::kRightOuterJoin;
  if (type == "JOIN_FULL") return SqlTableRef::kFullOuterJoin;
  return SqlTableRef::kInnerJoin;
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// The clause as the text has it

FromBuilder::JoinTreePtr FromBuilder::BuildItem(SqlNode node) {
  KXThread::LowStackCheck(0);
  if (node.GetKind() == "JoinExpr") return BuildJoin(node);
  auto tree = std::make_unique<JoinTree>();
  const std::size_t source = m_scope.GetSources().size();
  tree->m_table = m_builder.BuildTable(node, m_scope, m_pOuter);
  const int number = m_scope.GetSources()[source].GetNumber();
  tree->m_tables.insert(number != 0 ? number : LogicalTableKey(source));
  return tree;
}

FromBuilder::JoinTreePtr FromBuilder::BuildJoin(SqlNode node) {
  if (!node.Get("alias").IsNone()) RaiseUnsupported(node, "an alias for a join");
  if (!node.Get("join_using_alias").IsNone()) RaiseUnsupported(node, "an alias for the columns of USING");
  auto join = std::make_unique<JoinTree>();
  join->m_type = JoinTypeOf(node);
  const std::size_t begin = m_scope.GetSources().size();
  join->m_left = BuildItem(node.Get("larg"));
  const std::size_t middle = m_scope.GetSources().size();
  join->m_right = BuildItem(node.Get("rarg"));
  join->m_tables = join->m_left->m_tables;
  join->m_tables.insert(join->m_right->m_tables.begin(), join->m_right->m_tables.end());
  join->m_cond = BuildOn(node, begin, middle);
  return join;
}

OwnedRqExprCondPtr FromBuilder::BuildOn(SqlNode node, std::size_t begin, std::size_t middle) {
  const SqlNode usingClause = node.Get("usingClause");
  if (!usingClause.IsNone()) {
    std::vector<std::string> names;
    for (const std::string_view name : TextsOf(usingClause)) names.emplace_back(name);
    return BuildUsing(node, names, begin, middle);
  }
  if (node.Get("isNatural").IsTrue()) return BuildUsing(node, FindCommonNames(begin, middle), begin, middle);
  const SqlNode condition = node.Get("quals");
  if (condition.IsNone() || IsTrue(condition)) return {};
  m_scope.ShowSourcesFrom(begin);
  OwnedRqExprCondPtr cond = m_builder.BuildCondition(condition, m_scope);
  m_scope.ShowSourcesFrom(0);
  return cond;
}

std::vector<std::string> FromBuilder::FindCommonNames(std::size_t begin, std::size_t middle) const {
  const std::vector<TableSource>& sources = m_scope.GetSources();
  std::vector<std::string> common;
  for (std::size_t source = begin; source < middle; ++source) {
    for (std::size_t i = 0; i < sources[source].GetNumColumns(); ++i) {
      const std::string& name = sources[source].GetColumnName(i);
      if (name.empty() || std::ranges::find(common, name) != common.end()) continue;
      if (!m_scope.FindColumns(name, middle, sources.size()).empty()) common.push_back(name);
    }
  }
  return common;
}

OwnedRqExprCondPtr FromBuilder::BuildUsing(SqlNode node, const std::vector<std::string>& names, std::size_t begin,
                                           std::size_t middle) {
  OwnedRqExprCondPtr cond;
  for (const std::string& name : names) {
    const std::vector<SourceColumn> left = m_scope.FindColumns(name, begin, middle);
    const std::vector<SourceColumn> right = m_scope.FindColumns(name, middle, m_scope.GetSources().size());
    if (left.size() != 1 || right.size() != 1) {
      const bool bNone = left.empty() || right.empty();
      throw SqlError(PlaceOfNode(node), "the join column " + ForMessage(name, kMaxQuotedCharacters) +
                                            (bNone ? " is not on both sides" : " is ambiguous"));
    }
    const auto make = [this](const SourceColumn& column) {
      return m_scope.GetSources()[column.m_source].MakeColumn(column.m_column);
    };
    OwnedRqExprPtr rightColumn = make(right.front());
    cond = RqExprCondAnd::Concatenate(
        cond.Release(), new RqExprCondEquality(make(left.front()).Release(), rightColumn.Release(), false));

    const SqlTableRef::JoinType type = JoinTypeOf(node);
    QueryScope::MergedColumn merged{.m_name = name, .m_parts = {left.front(), right.front()}};
    // The side that keeps all its rows gives the value.
    if (type == SqlTableRef::kRightOuterJoin) std::ranges::reverse(merged.m_parts);
    merged.m_bCoalesced = type == SqlTableRef::kFullOuterJoin;
    m_scope.AddMergedColumn(std::move(merged));
  }
  return cond;
}

// ---------------------------------------------------------------------------------------------------------------------
// The clause as a graph

Heap<RqJoinSpec> FromBuilder::Build(SqlNode select) {
  const SqlNode from = select.Get("fromClause");
  if (from.IsNone()) return {};
  std::vector<JoinTreePtr> items;
  for (const SqlNode node : from.GetElements()) items.push_back(BuildItem(node));
  for (const JoinTreePtr& item : items) Flatten(*item, item == items.front());
  std::vector<RqJoinNode*> nodes;
  nodes.swap(m_nodes);
  return Heap<RqJoinSpec>(new RqJoinSpec(nodes));
}

/// Whether an outer join stands as a link: it joins one node of the side that keeps its rows to one table or nest. The
/// sides of a full join must be tables, and nothing may be joined to them before.
bool FromBuilder::IsLink(const JoinTree& join, bool bFirst) const {
  if (!join.m_cond) return false;
  const bool bFull = join.m_type == SqlTableRef::kFullOuterJoin;
  if (bFull && (!bFirst || !join.m_left->IsTable() || !join.m_right->IsTable())) return false;
  const bool bRight = join.m_type == SqlTableRef::kRightOuterJoin;
  const JoinTree& kept = bRight ? *join.m_right : *join.m_left;
  const Unit& other = bRight ? join.m_left->m_tables : join.m_right->m_tables;
  const std::set<int> tables = GetTables(*join.m_cond, m_scope.GetSources());
  const auto touches = [&tables](const Unit& unit) {
    return std::ranges::any_of(unit, [&tables](int table) { return tables.contains(table); });
  };
  const std::vector<Unit> units = GetUnits(kept, bFirst && !bRight);
  return touches(other) && std::ranges::count_if(units, touches) == 1;
}

/// The nodes that Flatten makes of an item.
std::vector<FromBuilder::Unit> FromBuilder::GetUnits(const JoinTree& tree, bool bFirst) const {
  if (tree.IsTable()) return {tree.m_tables};
  const bool bInner = tree.m_type == SqlTableRef::kInnerJoin;
  if (!bInner && !IsLink(tree, bFirst)) return {tree.m_tables};
  std::vector<Unit> units;
  const auto append = [&](const JoinTree& side, bool bWhole, bool bFirstSide) {
    if (bWhole) {
      units.push_back(side.m_tables);
      return;
    }
    for (Unit& unit : GetUnits(side, bFirstSide)) units.push_back(std::move(unit));
  };
  append(*tree.m_left, tree.m_type == SqlTableRef::kRightOuterJoin, bFirst);
  append(*tree.m_right, tree.m_type == SqlTableRef::kLeftOuterJoin || tree.m_type == SqlTableRef::kFullOuterJoin,
         false);
  return units;
}

void FromBuilder::Flatten(JoinTree& tree, bool bFirst) {
  KXThread::LowStackCheck(0);
  const bool bInner = tree.m_type == SqlTableRef::kInnerJoin;
  if (tree.IsTable() || (!bInner && !IsLink(tree, bFirst))) {
    AddNode(MakeReference(tree), tree.m_tables);
    return;
  }
  const auto addSide = [this](JoinTree& side, bool bWhole, bool bFirstSide) {
    if (bWhole) {
      AddNode(MakeReference(side), side.m_tables);
    } else {
      Flatten(side, bFirstSide);
    }
  };
  addSide(*tree.m_left, tree.m_type == SqlTableRef::kRightOuterJoin, bFirst);
  addSide(*tree.m_right, tree.m_type == SqlTableRef::kLeftOuterJoin || tree.m_type == SqlTableRef::kFullOuterJoin,
          false);
  if (bInner) {
    if (tree.m_cond) AddInnerLinks(std::move(tree.m_cond));
  } else {
    AddLink(std::move(tree.m_cond), tree.m_type);
  }
}

void FromBuilder::AddNode(Heap<RqTableReference> reference, const Unit& tables) {
  Heap<RqJoinNode> node(new RqJoinNode(reference.Release(), false));
  for (const int table : tables) m_nodeOfTable[table] = node.Get();
  m_nodes.push_back(node.Get());
  static_cast<void>(node.Release());
}

std::set<RqJoinNode*> FromBuilder::GetNodes(const RqExpr& expr) const {
  std::set<RqJoinNode*> nodes;
  for (const int table : GetTables(expr, m_scope.GetSources())) {
    const auto it = m_nodeOfTable.find(table);
    if (it != m_nodeOfTable.end()) nodes.insert(it->second);
  }
  return nodes;
}

/// The conjuncts that join two nodes become links, the others stay behind. So do, where the join reaches several nodes,
/// those about a node that an outer join may fill with nulls: another way round might reach it before that join is
/// folded.
void FromBuilder::AddInnerLinks(OwnedRqExprCondPtr cond) {
  std::vector<OwnedRqExprCondPtr> conjuncts;
  TakeConjuncts(std::move(cond), conjuncts);
  std::set<RqJoinNode*> joined;
  for (const OwnedRqExprCondPtr& conjunct : conjuncts) joined.merge(GetNodes(*conjunct));
  const bool bReachesSeveral = joined.size() > 2;
  for (OwnedRqExprCondPtr& conjunct : conjuncts) {
    const std::set<RqJoinNode*> nodes = GetNodes(*conjunct);
    const auto isNullable = [this](RqJoinNode* pNode) { return m_nullable.contains(pNode); };
    if (nodes.size() == 2 && !(bReachesSeveral && std::ranges::any_of(nodes, isNullable))) {
      AddLink(std::move(conjunct), SqlTableRef::kInnerJoin);
    } else {
      m_residual = RqExprCondAnd::Concatenate(m_residual.Release(), conjunct.Release());
    }
  }
}

void FromBuilder::AddLink(OwnedRqExprCondPtr cond, SqlTableRef::JoinType type) {
  // In the order of the text.
  const std::set<RqJoinNode*> nodes = GetNodes(*cond);
  std::vector<RqJoinNode*> ends;
  std::ranges::copy_if(m_nodes, std::back_inserter(ends),
                       [&nodes](RqJoinNode* pNode) { return nodes.contains(pNode); });
  if (type == SqlTableRef::kRightOuterJoin || type == SqlTableRef::kFullOuterJoin) m_nullable.insert(ends.at(0));
  if (type == SqlTableRef::kLeftOuterJoin || type == SqlTableRef::kFullOuterJoin) m_nullable.insert(ends.at(1));
  ends.at(0)->AddLink(ends.at(1), cond.Release(), type, kUnknownCardinality, nullptr, false);
}

/// The item as a reference; a table alone as one without a join.
Heap<RqTableReference> FromBuilder::MakeReference(JoinTree& tree) const {
  if (tree.IsTable()) {
    return Heap<RqTableReference>(
        new RqTableReference(SqlTableRef::kInnerJoin, tree.m_table.Release(), nullptr, nullptr, kDriving_UnknownTable));
  }
  Heap<RqAbstractTable> left = MakeOperand(*tree.m_left);
  Heap<RqAbstractTable> right = MakeOperand(*tree.m_right);
  return Heap<RqTableReference>(
      new RqTableReference(tree.m_type, left.Release(), tree.m_cond.Release(), right.Release(), kDriving_UnknownTable));
}

Heap<RqAbstractTable> FromBuilder::MakeOperand(JoinTree& tree) const {
  KXThread::LowStackCheck(0);
  if (tree.IsTable()) return Heap<RqAbstractTable>(tree.m_table.Release());
  return MakeReference(tree);
}
