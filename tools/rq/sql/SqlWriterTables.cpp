#include <algorithm>
#include <memory>
#include <utility>

#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAtomicTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "Query/Optimizer/Request/Blocks/SQORRqWrapperList.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"
#include "rq/sql/SqlWriter.h"
#include "rq/sql/SqlWriterScopes.h"

// Tables and joins.

namespace {

/// The conjuncts of a condition, left to right.
void CollectConjuncts(const RqExprCond* pCond, std::vector<const RqExprCond*>& conjuncts) {
  KXThread::LowStackCheck(0);
  if (!pCond) return;
  if (!pCond->IsAndCond()) return conjuncts.push_back(pCond);
  for (int i = 0; i < pCond->GetNumOperands(); ++i) {
    CollectConjuncts(static_cast<const RqExprCond*>(pCond->GetIthOperand(i)), conjuncts);
  }
}

/// The numbers of the tables whose columns occur, also in blocks of subqueries.
void CollectTableNumbers(const RqNode* pNode, std::set<int>& numbers) {
  KXThread::LowStackCheck(0);
  if (!pNode) return;
  switch (pNode->GetObjectType()) {
    case kRqSharedList:
      return;  // Its columns lead to a list that stands elsewhere.
    case kRqTargetColumn:
      numbers.insert(static_cast<const RqTargetColumn*>(pNode)->GetSourceTableNumber());
      break;
    case kRqDerivedColumnReference:
      numbers.insert(static_cast<const RqDerivedColumnReference*>(pNode)->GetSourceTableNumber());
      break;
    case kRqExprPhysicalSubquery:
      CollectTableNumbers(static_cast<const RqExprPhysicalSubquery*>(pNode)->GetSubqueryRqAbstractList(), numbers);
      break;
    case kRqJoinNode:
      for (const RqJoinLink* const pLink : static_cast<const RqJoinNode*>(pNode)->GetIncidentLinks()) {
        CollectTableNumbers(pLink->GetJoinCond(), numbers);
      }
      break;
    default:
      break;
  }
  for (int i = 0; i < pNode->GetNumChildren(); ++i) CollectTableNumbers(pNode->GetIthChild(i), numbers);
}

/// The numbers of the tables of blocks in the tree, those in subqueries included.
void CollectOwnTables(const RqNode* pNode, std::set<int>& numbers) {
  KXThread::LowStackCheck(0);
  if (!pNode) return;
  if (const auto* const pTable = dynamic_cast<const RqIdentifiedTable*>(pNode)) {
    numbers.insert(pTable->GetTableNumber());
  }
  if (pNode->GetObjectType() == kRqExprPhysicalSubquery) {
    CollectOwnTables(static_cast<const RqExprPhysicalSubquery*>(pNode)->GetSubqueryRqAbstractList(), numbers);
  } else if (pNode->GetObjectType() == kRqJoinNode) {
    for (const RqJoinLink* const pLink : static_cast<const RqJoinNode*>(pNode)->GetIncidentLinks()) {
      CollectOwnTables(pLink->GetJoinCond(), numbers);
    }
  }
  for (int i = 0; i < pNode->GetNumChildren(); ++i) CollectOwnTables(pNode->GetIthChild(i), numbers);
}

bool Includes(const std::set<int>& all, const std::set<int>& some) { return std::ranges::includes(all, some); }

/// Whether a link still has to be folded into table references to mean what it says.
bool IsOpenOuterLink(const RqJoinLink& link) {
  return !link.AlreadyAttachedCond() && link.GetJoinType() != SqlTableRef::kInnerJoin;
}

bool HasOpenOuterLinks(const RqJoinSpec& joinSpec) {
  for (int i = 0; i < joinSpec.GetNumTableReferences(); ++i) {
    const RqJoinNode* const pNode = joinSpec.GetIthJoinNode(i);
    if (pNode && std::ranges::any_of(pNode->GetIncidentLinks(),
                                     [](const RqJoinLink* pLink) { return IsOpenOuterLink(*pLink); })) {
      return true;
    }
  }
  return false;
}

}  // namespace

bool IsCorrelated(const RqAbstractList& block) {
  std::set<int> read;
  std::set<int> own;
  CollectTableNumbers(&block, read);
  CollectOwnTables(&block, own);
  return !Includes(own, read);
}

/// A FROM clause as a chain of joins, from the left, in which what stands on the right is a table or a chain in
/// brackets.
///
/// The side of an outer join that keeps its rows goes into the chain itself: what is joined to it may as well be joined
/// before, and a filter on it may come behind. Conditions of inner joins are collected, since they all filter what the
/// whole chain gives, and placed when the chain is complete.
class SqlWriter::FromClause {
 public:
  explicit FromClause(SqlWriter& writer) : m_writer(writer) {}

  void Add(const RqAbstractTable& table) {
    KXThread::LowStackCheck(0);
    if (!table.IsTableReference()) {
      return AddStep(Step::kInner, m_writer.Table(table), NumbersOf(table), {}).SetTable(table);
    }
    const auto& reference = static_cast<const RqTableReference&>(table);
    if (!reference.GetRightTable()) {
      Add(*reference.GetLeftTable());
      return AddCondition(reference.GetSearchCond());
    }
    switch (reference.GetJoinType()) {
      case SqlTableRef::kInnerJoin:
        Add(*reference.GetLeftTable());
        Add(*reference.GetRightTable());
        return AddCondition(reference.GetSearchCond());
      case SqlTableRef::kLeftOuterJoin:
        return AddLeftJoin(*reference.GetLeftTable(), *reference.GetRightTable(), reference);
      case SqlTableRef::kRightOuterJoin:
        return AddLeftJoin(*reference.GetRightTable(), *reference.GetLeftTable(), reference);
      case SqlTableRef::kFullOuterJoin:
        return AddFullJoin(reference);
      case SqlTableRef::kFullOuterStitchJoin:
        m_writer.Refuse("a join that stitches blocks", &table);
      case SqlTableRef::kNaturalJoin:
        m_writer.Refuse("a natural join, whose columns are not told,", &table);
    }
  }

  void AddCondition(const RqExprCond* pCond) { CollectConjuncts(pCond, m_conds); }

  /// Puts each condition at the join at which all its tables are there, if that is an inner one, or with bLater at the
  /// first inner one from there on. Gives those that find none.
  std::vector<const RqExprCond*> Place(bool bLater = false) {
    std::set<int> all;
    for (const Step& step : m_steps) all.insert(step.m_tables.begin(), step.m_tables.end());
    std::vector<const RqExprCond*> rest;
    for (const RqExprCond* const pCond : m_conds) {
      std::set<int> needed;
      CollectTableNumbers(pCond, needed);
      std::erase_if(needed, [&all](int number) { return !all.contains(number); });
      Step* const pStep = FindStep(needed, bLater);
      if (pStep) {
        pStep->m_conds.push_back(pCond);
      } else {
        rest.push_back(pCond);
      }
    }
    m_conds.clear();
    return rest;
  }

  std::string GetText() {
    std::string text;
    for (std::size_t i = 0; i < m_steps.size(); ++i) {
      const Step& step = m_steps[i];
      if (i == 0) {
        text = step.m_text;
        continue;
      }
      std::vector<std::string> conjuncts;
      const ValueScope indent(m_writer.m_indent, m_writer.m_indent + 2);
      for (const RqExprCond* const pCond : step.m_conds) {
        const PlaceScope place(m_writer, "a join");
        const ValueScope inner(m_writer.m_indent, m_writer.m_indent + 2);
        conjuncts.push_back(Parenthesized(m_writer.Condition(*pCond, true), SqlPrecedence::kNot));
      }
      text += m_writer.NewLine() + JoinWords(step, conjuncts.empty()) + step.m_text;
      if (step.m_join != Step::kInner && conjuncts.empty()) conjuncts.emplace_back("1 = 1");
      for (std::size_t c = 0; c < conjuncts.size(); ++c) text += (c == 0 ? " ON " : " AND ") + conjuncts[c];
    }
    return text;
  }

  std::size_t GetNumTables() const {
    std::size_t count = 0;
    for (const Step& step : m_steps) count += step.m_tables.size();
    return count;
  }

 private:
  struct Step {
    enum Join { kInner, kLeft, kFull } m_join;
    std::string m_text;
    std::set<int> m_tables;
    std::vector<const RqExprCond*> m_conds;
    const RqIdentifiedTable* m_pTable = nullptr;  ///< Null for a chain in brackets.

    void SetTable(const RqAbstractTable& table) { m_pTable = dynamic_cast<const RqIdentifiedTable*>(&table); }
  };

  static std::set<int> NumbersOf(const RqAbstractTable& table) {
    const auto* const pTable = dynamic_cast<const RqIdentifiedTable*>(&table);
    return pTable ? std::set<int>{pTable->GetTableNumber()} : std::set<int>();
  }

  Step& AddStep(Step::Join join, std::string text, std::set<int> tables, std::vector<const RqExprCond*> conds) {
    m_steps.push_back({join, std::move(text), std::move(tables), std::move(conds)});
    return m_steps.back();
  }

  Step* FindStep(const std::set<int>& needed, bool bLater) {
    std::set<int> there;
    for (std::size_t i = 0; i < m_steps.size(); ++i) {
      there.insert(m_steps[i].m_tables.begin(), m_steps[i].m_tables.end());
      if (!Includes(there, needed)) continue;
      if (i > 0 && i >= m_firstOpen && m_steps[i].m_join == Step::kInner) return &m_steps[i];
      if (!bLater) return nullptr;
    }
    return nullptr;
  }

  std::string JoinWords(const Step& step, bool bNoCondition) const {
    if (step.m_join == Step::kLeft) return "LEFT JOIN ";
    if (step.m_join == Step::kFull) return "FULL JOIN ";
    // To SQLite CROSS JOIN says the order in which the tables are read.
    return bNoCondition && !m_writer.m_target.IsSqlite() ? "CROSS JOIN " : "JOIN ";
  }

  void AddLeftJoin(const RqAbstractTable& kept, const RqAbstractTable& other, const RqTableReference& reference) {
    m_writer.Require(SUFeaturesTable::kFeature_LeftOuterJoin, &reference);
    Add(kept);
    // What filters the other side alone filters as well what of it is joined.
    std::vector<const RqExprCond*> conds;
    CollectConjuncts(reference.GetSearchCond(), conds);
    AddOperand(Step::kLeft, other, std::move(conds));
  }

  /// A table or a chain in brackets on the right.
  void AddOperand(Step::Join join, const RqAbstractTable& table, std::vector<const RqExprCond*> conds) {
    FromClause operand(m_writer);
    std::vector<const RqExprCond*> rest;
    std::string text;
    {
      const ValueScope indent(m_writer.m_indent, m_writer.m_indent + 2);
      operand.Add(table);
      rest = operand.Place(join == Step::kFull);
      if (join == Step::kFull) operand.FilterSide(std::exchange(rest, {}));
      text = operand.GetText();
    }
    std::ranges::copy(rest, std::back_inserter(conds));
    if (operand.m_steps.size() > 1) {
      if (operand.HasOuterJoin()) m_writer.Require(SUFeaturesTable::kFeature_NestedOuterJoin, &table);
      text = '(' + text + ')';
    }
    AddStep(join, std::move(text), operand.GetTables(), std::move(conds));
  }

  /// A full join stands in front of what it is joined to, or in brackets.
  void AddFullJoin(const RqTableReference& reference) {
    m_writer.Require(SUFeaturesTable::kFeature_FullOuterJoin, &reference);
    FromClause nest(m_writer);
    nest.Add(*reference.GetLeftTable());
    nest.FilterSide(nest.Place(true));
    std::vector<const RqExprCond*> conds;
    CollectConjuncts(reference.GetSearchCond(), conds);
    nest.AddOperand(Step::kFull, *reference.GetRightTable(), std::move(conds));
    if (m_steps.empty()) {
      m_steps = std::move(nest.m_steps);
      m_firstOpen = m_steps.size();
      return;
    }
    m_writer.Require(SUFeaturesTable::kFeature_NestedOuterJoin, &reference);
    const ValueScope indent(m_writer.m_indent, m_writer.m_indent + 2);
    AddStep(Step::kInner, '(' + nest.GetText() + ')', nest.GetTables(), {});
  }

  /// Makes the clause one side of a full join, which those conditions filter. What is joined is joined to a single row
  /// more, by them.
  void FilterSide(const std::vector<const RqExprCond*>& conds) {
    if (conds.empty()) return;
    if (m_steps.size() == 1 && m_steps.front().m_pTable) {
      m_steps.front().m_text = m_writer.TableWithFilter(*m_steps.front().m_pTable, conds);
      return;
    }
    m_writer.Require(SUFeaturesTable::kFeature_DerivedTables, conds.front());
    AddStep(Step::kInner, "(SELECT 1) AS F" + std::to_string(++m_writer.m_numFilters), {}, conds);
  }

  bool HasOuterJoin() const {
    return std::ranges::any_of(m_steps, [](const Step& step) { return step.m_join != Step::kInner; });
  }

  std::set<int> GetTables() const {
    std::set<int> tables;
    for (const Step& step : m_steps) tables.insert(step.m_tables.begin(), step.m_tables.end());
    return tables;
  }

  SqlWriter& m_writer;
  std::vector<Step> m_steps;
  std::vector<const RqExprCond*> m_conds;
  std::size_t m_firstOpen = 0;  ///< The steps in front are a full join, on which no condition goes afterwards.
};

/// The clause with the line break in front, and the conjuncts that belong to WHERE; nothing without tables.
std::string SqlWriter::FromLines(const RqList& list, std::vector<std::string>& conjuncts) {
  const RqJoinSpec* pJoinSpec = list.GetJoinSpec();
  if (!pJoinSpec) return {};
  const PlaceScope place(*this, "FROM");
  const ValueScope nulls(m_nulls, {});
  const ValueScope kept(m_kept, {});
  // Outer joins that are links are folded in a copy.
  std::unique_ptr<RqJoinSpec> folded;
  OwnedRqExprCondPtr residual;
  if (HasOpenOuterLinks(*pJoinSpec)) {
    RqJoinSpec copy(*pJoinSpec, false, true);
    std::vector<RqJoinNode*> nodes;
    for (int i = 0; i < copy.GetNumTableReferences(); ++i) {
      nodes.push_back(static_cast<RqJoinNode*>(copy.ReleaseIthChild(i)));
    }
    folded.reset(RqJoinSpec::CompileLinkGraph(nodes, residual, &m_target.GetGateway(), true));
    pJoinSpec = folded.get();
  }
  FromClause from(*this);
  std::set<const RqJoinLink*> links;
  for (int i = 0; i < pJoinSpec->GetNumTableReferences(); ++i) {
    const RqJoinNode* const pNode = pJoinSpec->GetIthJoinNode(i);
    if (!pNode || !pNode->GetTableReference()) Refuse("a join node without a table", pJoinSpec);
    from.Add(*pNode->GetTableReference());
    for (const RqJoinLink* const pLink : pNode->GetIncidentLinks()) {
      if (links.insert(pLink).second && !pLink->AlreadyAttachedCond()) from.AddCondition(pLink->GetJoinCond());
    }
  }
  from.AddCondition(residual.Get());
  const std::vector<const RqExprCond*> rest = from.Place();
  RequireAtMost(SUFeaturesTable::kFeature_MaxTablesInSelect, from.GetNumTables(), pJoinSpec);
  std::string text = NewLine() + "FROM " + from.GetText();
  const PlaceScope where(*this, "WHERE");
  const ValueScope indent(m_indent, m_indent + 2);
  for (const RqExprCond* const pCond : rest) {
    conjuncts.push_back(Parenthesized(Condition(*pCond, true), SqlPrecedence::kNot));
  }
  return text;
}

std::string SqlWriter::Table(const RqAbstractTable& table) {
  switch (table.GetObjectType()) {
    case kRqAtomicTable: {
      const auto& atomic = static_cast<const RqAtomicTable&>(table);
      VoidID tableID;
      atomic.GetTableID(tableID);
      if (tableID.IsNullID()) Refuse("a table of the result cache", &table);
      return m_target.GetTableName(tableID) + " AS " + TableAlias(atomic);
    }
    case kRqDerivedTable:
      return DerivedTable(static_cast<const RqDerivedTable&>(table));
    case kRqEntity:
      Refuse("a logical table, for which no physical ones are chosen,", &table);
    default:
      Refuse("a table of this kind", &table);
  }
}

/// A table under its alias with fewer rows.
std::string SqlWriter::TableWithFilter(const RqIdentifiedTable& table, const std::vector<const RqExprCond*>& conds) {
  Require(SUFeaturesTable::kFeature_DerivedTables, &table);
  std::string text;
  {
    const ValueScope indent(m_indent, m_indent + 4);
    std::vector<std::string> conjuncts;
    text = "SELECT *" + NewLine() + "FROM " + Table(table);
    for (const RqExprCond* const pCond : conds) {
      conjuncts.push_back(Parenthesized(Condition(*pCond, true), SqlPrecedence::kNot));
    }
    text += FilterLines("WHERE", conjuncts);
  }
  return EnclosedText(text) + " AS " + TableAlias(table);
}

std::string SqlWriter::DerivedTable(const RqDerivedTable& table) {
  const RqAbstractList& list = *table.GetInnerList();
  const RqAbstractList* pCommon = nullptr;
  if (list.IsRqSharedList()) {
    pCommon = &SharedListOf(static_cast<const RqSharedList&>(list));
  } else if (list.IsShared() || !table.GetCommonExprName().empty()) {
    pCommon = &list;
  }
  const std::string alias = " AS " + TableAlias(table);
  if (pCommon && m_target.Can(SUFeaturesTable::kFeature_WithClause)) {
    const auto* const pFirst = dynamic_cast<const RqDerivedTable*>(pCommon->GetParent());
    const std::string wanted = pFirst ? pFirst->GetCommonExprName().ToUTF8() : std::string();
    return m_target.Quote(NameCommonExpr(*pCommon, wanted)) + alias;
  }
  Require(SUFeaturesTable::kFeature_DerivedTables, &table);
  const RqAbstractList& inner = pCommon ? *pCommon : list;
  return Enclosed(inner, VisibleNames(inner)) + alias;
}

/// The list that a shared list reads, which its columns lead to: the pointer in it is that of the request that it was
/// copied from.
const RqAbstractList& SqlWriter::SharedListOf(const RqSharedList& list) {
  const RqProjection* const pProjection = list.GetProjection();
  const RqAbstractList* pShared = nullptr;
  for (int i = 0; pProjection && i < pProjection->GetNumColumns(); ++i) {
    const RqExpr& expr = *pProjection->GetIthColumn(i)->GetExpr();
    if (expr.GetObjectType() != kRqDerivedColumnReference) Refuse("a computed column of a shared list", &list);
    const auto& reference = static_cast<const RqDerivedColumnReference&>(expr);
    if (!reference.IsValidDerivedColumnReference()) Refuse("a column of a list that is gone", &list);
    const RqAbstractList* const pList = reference.GetDerivedColumn()->GetRqAbstractListContainer();
    const RqDerivedTable* const pTable = pList ? pList->GetRqDerivedTableContainer() : nullptr;
    if (pTable) pShared = pTable->GetInnerList();
  }
  if (!pShared) Refuse("a list that is shared with none", &list);
  return *pShared;
}
