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

/// The conjuncts of a condition, left to right.
void CollectConjuncts(const RqExprCond& cond, std::vector<const RqExprCond*>& conjuncts) {
  KXThread::LowStackCheck(0);
  if (!cond.IsAndCond()) {
    conjuncts.push_back(&cond);
    return;
  }
  for (int i = 0; i < cond.GetNumOperands(); ++i) {
    CollectConjuncts(static_cast<const RqExprCond&>(*cond.GetIthChild(i)), conjuncts);
  }
}

/// The same, taken out of the condition.
void TakeConjuncts(OwnedRqExprCondPtr cond, OwnedRqExprCondVector& conjuncts) {
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

/// The names that columns on both sides have, as on the left one, each once.
std::vector<std::string> CommonNames(const NamedColumns& left, const NamedColumns& right) {
  std::vector<std::string> common;
  for (const NamedColumn& column : left) {
    const bool bKnown = std::ranges::find(common, column.m_name) != common.end();
    if (!bKnown && !FindNames(NamesOf(right), column.m_name).empty()) common.push_back(column.m_name);
  }
  return common;
}

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
  tree->m_columns = m_scope.GetColumnsOf(source);
  return tree;
}

FromBuilder::JoinTreePtr FromBuilder::BuildJoin(SqlNode node) {
  if (!node.Get("alias").IsNone()) RaiseUnsupported(node, "an alias for a join");
  if (!node.Get("join_using_alias").IsNone()) RaiseUnsupported(node, "an alias for the columns of USING");
  auto join = std::make_unique<JoinTree>();
  join->m_type = JoinTypeOf(node);
  const std::size_t begin = m_scope.GetSources().size();
  join->m_left = BuildItem(node.Get("larg"));
  join->m_right = BuildItem(node.Get("rarg"));
  join->m_tables = join->m_left->m_tables;
  join->m_tables.insert(join->m_right->m_tables.begin(), join->m_right->m_tables.end());
  BuildOn(node, *join, begin);
  return join;
}

void FromBuilder::BuildOn(SqlNode node, JoinTree& join, std::size_t begin) {
  const SqlNode usingClause = node.Get("usingClause");
  if (!usingClause.IsNone()) {
    std::vector<std::string> names;
    for (const std::string_view name : TextsOf(usingClause)) names.emplace_back(name);
    return BuildUsing(node, join, names);
  }
  if (node.Get("isNatural").IsTrue()) {
    return BuildUsing(node, join, CommonNames(join.m_left->m_columns, join.m_right->m_columns));
  }
  join.m_columns = std::move(join.m_left->m_columns);
  std::ranges::move(join.m_right->m_columns, std::back_inserter(join.m_columns));
  const SqlNode condition = node.Get("quals");
  if (condition.IsNone() || IsTrue(condition)) return;
  m_scope.Show(begin, join.m_columns);
  join.m_cond = m_builder.BuildCondition(condition, m_scope, QueryBuilder::kOn);
}

void FromBuilder::BuildUsing(SqlNode node, JoinTree& join, const std::vector<std::string>& names) {
  NamedColumns merged;
  NamedColumns left = std::move(join.m_left->m_columns);
  NamedColumns right = std::move(join.m_right->m_columns);
  const auto take = [node](NamedColumns& columns, const std::string& name) {
    const std::vector<std::size_t> found = FindNames(NamesOf(columns), name);
    if (found.size() != 1) {
      throw SqlError(PlaceOfNode(node.Get("rarg")), "the join column " + ForMessage(name, kMaxQuotedCharacters) +
                                                        (found.empty() ? " is not on both sides" : " is ambiguous"));
    }
    NamedColumn column = std::move(columns[found.front()]);
    columns.erase(columns.begin() + static_cast<std::ptrdiff_t>(found.front()));
    return column;
  };
  for (const std::string& name : names) {
    NamedColumn column = take(left, name);
    NamedColumn other = take(right, name);
    OwnedRqExprPtr leftValue = m_scope.MakeColumn(column);
    OwnedRqExprPtr rightValue = m_scope.MakeColumn(other);
    join.m_cond = RqExprCondAnd::Concatenate(join.m_cond.Release(),
                                             new RqExprCondEquality(leftValue.Release(), rightValue.Release(), false));
    // The side that keeps all its rows gives the value; of two such sides, the one that is not null.
    if (join.m_type == SqlTableRef::kRightOuterJoin) column.m_values = std::move(other.m_values);
    if (join.m_type == SqlTableRef::kFullOuterJoin)
      std::ranges::copy(other.m_values, std::back_inserter(column.m_values));
    merged.push_back(std::move(column));
  }
  join.m_columns = std::move(merged);
  std::ranges::move(left, std::back_inserter(join.m_columns));
  std::ranges::move(right, std::back_inserter(join.m_columns));
}

// ---------------------------------------------------------------------------------------------------------------------
// The clause as a graph

Heap<RqJoinSpec> FromBuilder::Build(SqlNode select) {
  const SqlNode from = select.Get("fromClause");
  if (from.IsNone()) return {};
  std::vector<JoinTreePtr> items;
  NamedColumns columns;
  for (const SqlNode node : from.GetElements()) {
    items.push_back(BuildItem(node));
    std::ranges::copy(items.back()->m_columns, std::back_inserter(columns));
  }
  m_scope.Show(0, std::move(columns));
  for (const JoinTreePtr& item : items) {
    Plan(*item);
    Flatten(*item);
  }
  std::vector<RqJoinNode*> nodes;
  nodes.swap(m_nodes);
  return Heap<RqJoinSpec>(new RqJoinSpec(nodes));
}

/// The places of the units that a condition names.
std::vector<std::size_t> FromBuilder::FindTouched(const Units& units, const RqExpr& cond) const {
  const std::set<int> tables = GetTables(cond, m_scope.GetSources());
  std::vector<std::size_t> touched;
  for (std::size_t i = 0; i < units.size(); ++i) {
    if (std::ranges::any_of(units[i].m_tables, [&](int table) { return tables.contains(table); })) touched.push_back(i);
  }
  return touched;
}

/// Whether the meaning stands an inner link between two units.
bool FromBuilder::MayLink(const Units& units, std::size_t first, std::size_t second) {
  if (units[first].m_bClosed || units[second].m_bClosed) return false;
  const std::size_t part = units[first].m_part;
  const std::size_t otherPart = units[second].m_part;
  // Folding begins in the part that comes first, and goes on in the other one from the linked unit.
  if (part != otherPart) return !units[part < otherPart ? second : first].m_bBehind;
  return !units[first].m_bBehind && !units[second].m_bBehind;
}

/// Makes the parts of two units one.
void FromBuilder::Link(Units& units, std::size_t first, std::size_t second) {
  if (units[first].m_part > units[second].m_part) std::swap(first, second);
  const std::size_t part = units[first].m_part;
  const std::size_t otherPart = units[second].m_part;
  if (part == otherPart) return;
  for (Unit& unit : units) {
    if (unit.m_part != otherPart) continue;
    unit.m_part = part;
    unit.m_bBehind |= units[first].m_bBehind;
  }
}

void FromBuilder::Plan(JoinTree& tree) const {
  KXThread::LowStackCheck(0);
  if (!tree.IsTable()) {
    Plan(*tree.m_left);
    Plan(*tree.m_right);
    if (tree.IsInner()) return PlanInner(tree);
    PlanOuter(tree);
  }
  if (tree.m_units.empty()) tree.m_units = {Unit{.m_tables = tree.m_tables}};
}

void FromBuilder::PlanInner(JoinTree& join) const {
  Units& units = join.m_units;
  units = std::move(join.m_left->m_units);
  const std::size_t numLeft = units.size();
  for (Unit& unit : join.m_right->m_units) {
    unit.m_part += numLeft;
    units.push_back(std::move(unit));
  }
  std::vector<const RqExprCond*> conjuncts;
  if (join.m_cond) CollectConjuncts(*join.m_cond, conjuncts);
  for (const RqExprCond* const pConjunct : conjuncts) {
    const std::vector<std::size_t> touched = FindTouched(units, *pConjunct);
    const bool bLink = touched.size() == 2 && MayLink(units, touched[0], touched[1]);
    if (bLink) Link(units, touched[0], touched[1]);
    join.m_linked.push_back(bLink);
  }
}

/// An outer join becomes a link if it joins one unit of the side that keeps its rows to the other side, which is then
/// one unit. The sides of a full join must be tables.
void FromBuilder::PlanOuter(JoinTree& join) const {
  if (!join.m_cond || (join.IsFull() && !(join.m_left->IsTable() && join.m_right->IsTable()))) return;
  JoinTree& kept = join.IsRight() ? *join.m_right : *join.m_left;
  Unit other{.m_tables = (join.IsRight() ? *join.m_left : *join.m_right).m_tables, .m_bBehind = true};
  const std::vector<std::size_t> touched = FindTouched(kept.m_units, *join.m_cond);
  if (touched.size() != 1 || FindTouched({other}, *join.m_cond).empty()) return;
  const Unit& end = kept.m_units[touched.front()];
  if (end.m_bClosed || (join.IsRight() && end.m_bBehind)) return;

  join.m_linked = {true};
  join.m_units = std::move(kept.m_units);
  const std::size_t part = join.m_units[touched.front()].m_part;
  if (join.IsRight()) {
    for (Unit& unit : join.m_units) unit.m_part = unit.m_part == part ? 0 : unit.m_part + 1;
    other.m_bClosed = true;
    join.m_units.insert(join.m_units.begin(), std::move(other));
  } else {
    if (join.IsFull()) join.m_units.front().m_bClosed = true;
    other.m_part = part;
    join.m_units.push_back(std::move(other));
  }
}

void FromBuilder::Flatten(JoinTree& tree) {
  KXThread::LowStackCheck(0);
  if (!tree.IsFlat()) return AddNode(tree);
  if (tree.IsRight()) {
    AddNode(*tree.m_left);
  } else {
    Flatten(*tree.m_left);
  }
  if (tree.IsInner() || tree.IsRight()) {
    Flatten(*tree.m_right);
  } else {
    AddNode(*tree.m_right);
  }
  if (tree.IsInner()) return AddInnerLinks(tree);
  AddLink(std::move(tree.m_cond), tree.m_type);
}

void FromBuilder::AddNode(JoinTree& tree) {
  Heap<RqJoinNode> node(new RqJoinNode(MakeReference(tree).Release(), false));
  for (const int table : tree.m_tables) m_nodeOfTable[table] = node.Get();
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

/// The conjuncts that are no links stay behind.
void FromBuilder::AddInnerLinks(JoinTree& join) {
  OwnedRqExprCondVector conjuncts;
  if (join.m_cond) TakeConjuncts(std::move(join.m_cond), conjuncts);
  for (std::size_t i = 0; i < conjuncts.size(); ++i) {
    if (join.m_linked[i]) {
      AddLink(std::move(conjuncts[i]), SqlTableRef::kInnerJoin);
    } else {
      m_residual = RqExprCondAnd::Concatenate(m_residual.Release(), conjuncts[i].Release());
    }
  }
}

void FromBuilder::AddLink(OwnedRqExprCondPtr cond, SqlTableRef::JoinType type) {
  // In the order of the text.
  const std::set<RqJoinNode*> nodes = GetNodes(*cond);
  std::vector<RqJoinNode*> ends;
  std::ranges::copy_if(m_nodes, std::back_inserter(ends),
                       [&nodes](RqJoinNode* pNode) { return nodes.contains(pNode); });
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
