#include "rq/rewrite/SummaryAnswer.h"

#include <algorithm>
#include <deque>
#include <list>

#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrPlain.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAtomicTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprArithmetic.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "rq/rewrite/AggregateExprs.h"
#include "rq/rewrite/RewriteRefusal.h"

namespace {

bool Contains(const VoidIDVector& ids, const VoidID& id) { return std::ranges::find(ids, id) != ids.end(); }

template <class Aggr>
RqExprAggr* AggregateOf(MemoryGateway& gateway, const VoidID& attributeID) {
  return new Aggr(new RqAttribute(&gateway, attributeID), nullptr, nullptr, false);
}

/// Whether the sum of an expression is the expression of the attribute's sum, as sums are multiples of their parts.
bool IsMultipleOf(const RqExpr& expr, const RqAttribute& attribute) {
  KXThread::LowStackCheck(0);
  switch (expr.GetObjectType()) {
    case kRqAttribute:
      return expr.IsEquivalent(attribute, RqEquivalence());
    case kRqExprUnaryMinus:
      return IsMultipleOf(*expr.GetIthOperand(RqExprUnaryMinus::kOperand), attribute);
    case kRqExprMultiply:
    case kRqExprDivide: {
      const RqExpr& left = *expr.GetIthOperand(RqExprMultiply::kLeftOperand);
      const RqExpr& right = *expr.GetIthOperand(RqExprMultiply::kRightOperand);
      if (right.IsConstant()) return IsMultipleOf(left, attribute);
      return expr.GetObjectType() == kRqExprMultiply && left.IsConstant() && IsMultipleOf(right, attribute);
    }
    default:
      return false;
  }
}

}  // namespace

SummaryAnswer::SummaryAnswer(MemoryGateway& gateway, const VoidID& summaryID)
    : m_gateway(gateway), m_summaryID(summaryID) {
  FindSources(summaryID);
  FindReachableTables();
}

// ---------------------------------------------------------------------------------------------------------------------
// The model

KXString SummaryAnswer::NameOf(const VoidID& id) const {
  const RefARpObject object(&m_gateway, id);
  if (object.IsNull()) return KXString();
  const RefARpObject parent(&m_gateway, object->GetParentID());
  if (!id.IsNullID() && parent && object->GetID().GetInterfaceTypeID() != kTIDALogicalTable &&
      object->GetID().GetInterfaceTypeID() != kTIDATable) {
    return parent->GetName() + L"." + object->GetName();
  }
  return object->GetName();
}

/// The source of the summary, and the one of the same logical table whose grain names most dimensions.
void SummaryAnswer::FindSources(const VoidID& summaryID) {
  VoidIDVector tableIDs;
  m_gateway.GetObjectIDs(kTIDALogicalTable, tableIDs);
  for (const VoidID& tableID : tableIDs) {
    VoidIDVector sourceIDs;
    RefALogicalTable(&m_gateway, tableID)->GetSourceIDs(sourceIDs);
    std::size_t summaryGrain = 0, detailGrain = 0;
    VoidIDVector summaryTables, detailTables;
    for (const VoidID& sourceID : sourceIDs) {
      const RefALogicalTableSource source(&m_gateway, sourceID);
      VoidIDVector tables, levels;
      source->GetTableIDs(tables);
      source->GetContentLevelIDs(levels);
      if (!tables.empty() && tables.front() == summaryID) {
        summaryTables = tables;
        summaryGrain = levels.size();
      } else if (levels.size() > detailGrain) {
        detailTables = tables;
        detailGrain = levels.size();
      }
    }
    if (summaryTables.empty() || detailGrain <= summaryGrain) continue;
    m_logicalTableID = tableID;
    m_summaryTableIDs = summaryTables;
    m_detailTableIDs = detailTables;
    return;
  }
  throw RewriteRefusal(NameOf(summaryID).ToUTF8() + " is no summary: no logical table has a more detailed source");
}

/// Breadth first along foreign keys. A table that two keys lead to is joined by the first.
void SummaryAnswer::FindReachableTables() {
  std::deque<VoidID> queue{m_summaryID};
  m_foreignKeys.emplace(m_summaryID, VoidID::NullID);
  while (!queue.empty()) {
    VoidIDVector keys;
    RefATable(&m_gateway, queue.front())->GetForeignKeyIDs(keys);
    queue.pop_front();
    for (const VoidID& keyID : keys) {
      const VoidID tableID = RefAForeignKey(&m_gateway, keyID)->GetReferencedTableID();
      if (m_foreignKeys.emplace(tableID, keyID).second) queue.push_back(tableID);
    }
  }
}

VoidID SummaryAnswer::SourceColumnIn(const AAttribute& attribute, const VoidIDVector& tableIDs) const {
  VoidIDVector columnIDs;
  attribute.GetSourceColumnIDs(columnIDs);
  for (const VoidID& columnID : columnIDs) {
    if (Contains(tableIDs, RefAColumn(&m_gateway, columnID)->GetTableID())) return columnID;
  }
  return VoidID::NullID;
}

bool SummaryAnswer::IsNeverNull(const AAttribute& attribute) const {
  const VoidID columnID = SourceColumnIn(attribute, m_detailTableIDs);
  return !columnID.IsNullID() && RefAColumn(&m_gateway, columnID)->GetTypeInfo().nullable_ == 0;
}

void SummaryAnswer::AddMapping(RqExprAggr* pAggr, const VoidID& columnID) {
  m_exprs.emplace_back(pAggr);
  m_exprs.push_back(MakeColumn(columnID, m_tables.front().m_number));
}

/// A measure that is summed up by several rules has no mapping: no single aggregate totals it.
void SummaryAnswer::AddMappingsOf(const VoidID& attributeID) {
  const RefAAttribute attribute(&m_gateway, attributeID);
  std::vector<RpAggregationRule> rules;
  attribute->GetAggregationRules(rules);
  const VoidID columnID = SourceColumnIn(*attribute, {m_summaryID});
  if (rules.size() != 1 || columnID.IsNullID()) return;
  const KXString& function = rules.front().m_function;
  if (function == L"SUM") AddMapping(AggregateOf<RqExprAggrSum>(m_gateway, attributeID), columnID);
  if (function == L"MIN") AddMapping(AggregateOf<RqExprAggrMin>(m_gateway, attributeID), columnID);
  if (function == L"MAX") AddMapping(AggregateOf<RqExprAggrMax>(m_gateway, attributeID), columnID);
  if (function == L"COUNT") AddMapping(AggregateOf<RqExprAggrCount>(m_gateway, attributeID), columnID);
}

void SummaryAnswer::MakeContentMap() {
  VoidIDVector attributeIDs;
  RefALogicalTable(&m_gateway, m_logicalTableID)->GetAttributeIDs(attributeIDs);
  m_exprs.clear();
  VoidID rowCountID;
  for (const VoidID& attributeID : attributeIDs) {
    AddMappingsOf(attributeID);
    const RefAAttribute attribute(&m_gateway, attributeID);
    std::vector<RpAggregationRule> rules;
    attribute->GetAggregationRules(rules);
    if (rules.size() == 1 && rules.front().m_function == L"COUNT" && IsNeverNull(*attribute)) {
      rowCountID = SourceColumnIn(*attribute, {m_summaryID});
    }
  }
  if (!rowCountID.IsNullID()) {
    AddMapping(new RqExprAggrCountStar(nullptr, nullptr), rowCountID);
    for (const VoidID& attributeID : attributeIDs) {
      if (!IsNeverNull(*RefAAttribute(&m_gateway, attributeID))) continue;
      AddMapping(AggregateOf<RqExprAggrCount>(m_gateway, attributeID), rowCountID);
    }
  }
  SourceContentMap rows;
  for (std::size_t i = 0; i < m_exprs.size(); i += 2) rows.push_back({m_exprs[i].Get(), m_exprs[i + 1].Get(), nullptr});
  m_contentMap.InstallContentMap(rows);
}

// ---------------------------------------------------------------------------------------------------------------------
// The block

/// Joins between logical tables are those of the model, so the block says none of its own.
void SummaryAnswer::RequireLogicalJoins(const RqList& block) const {
  if (!block.GetJoinSpec()) throw RewriteRefusal("the query reads no table");
  VoidIDVector joinedIDs;
  RefALogicalTable(&m_gateway, m_logicalTableID)->GetJoinedTableIDs(joinedIDs);
  for (std::size_t i = 0; i < joinedIDs.size(); ++i) {
    VoidIDVector more;
    if (const RefALogicalTable table(&m_gateway, joinedIDs[i]); table) table->GetJoinedTableIDs(more);
    for (const VoidID& id : more) {
      if (!Contains(joinedIDs, id)) joinedIDs.push_back(id);
    }
  }
  bool bFactRead = false;
  for (int i = 0; i < block.GetJoinSpec()->GetNumTableReferences(); ++i) {
    const RqTableReference& reference = *block.GetJoinSpec()->GetIthTableReference(i);
    if (reference.GetRightTable() || reference.GetSearchCond()) {
      throw RewriteRefusal("the query joins tables by conditions of its own, and not as the model does");
    }
    const RqAbstractTable& table = *reference.GetLeftTable();
    if (!table.IsEntity()) throw RewriteRefusal("the query reads a table that is no logical one");
    const VoidID& id = static_cast<const RqEntity&>(table).GetID();
    bFactRead |= id == m_logicalTableID;
    if (id != m_logicalTableID && !Contains(joinedIDs, id)) {
      throw RewriteRefusal(NameOf(id).ToUTF8() + " is not joined to " + NameOf(m_logicalTableID).ToUTF8());
    }
  }
  if (!bFactRead) throw RewriteRefusal("the query does not read " + NameOf(m_logicalTableID).ToUTF8());
}

OwnedRqExprPtr SummaryAnswer::RewriteExpr(OwnedRqExprPtr expr) {
  KXThread::LowStackCheck(0);
  if (expr->GetObjectType() == kRqAttribute) return RewriteAttribute(static_cast<const RqAttribute&>(*expr));
  if (expr->GetObjectType() == kRqExprPhysicalSubquery) throw RewriteRefusal("the query has a subquery");
  if (expr->IsAggr() && !HoldsAggregate(*expr)) return RewriteAggregate(static_cast<const RqExprAggr&>(*expr));
  if (expr->IsAggrWrapper()) return RewriteAggregate(static_cast<const RqExprAggr&>(*expr));
  for (int i = 0; i < expr->GetNumOperands(); ++i) {
    if (!expr->GetIthOperand(i)) continue;
    OwnedRqExprPtr operand(static_cast<RqExpr*>(expr->ReleaseIthChild(i)));
    expr->SetIthOperand(i, RewriteExpr(std::move(operand)).Release());
  }
  return expr;
}

OwnedRqExprPtr SummaryAnswer::RewriteAggregate(const RqExprAggr& aggr) const {
  const SourceContentMap& map = m_contentMap.GetContentMap();
  OwnedRqExprPtr rendered;
  const bool bOwnBreak = aggr.GetControlBreak() && aggr.GetControlBreak()->GetNumColumns() > 0;
  if (!aggr.IsAggrWrapper() && !bOwnBreak) {
    Int32Vector rows;
    rendered = aggr.RenderOntoMoreDetailedSources(&m_gateway, true, map, rows);
    if (!rendered) rendered = RenderInsideExpr(aggr);
  }
  if (!rendered) {
    throw RewriteRefusal(RqDumpout::StringFrom(aggr, false, false, &m_gateway).ToUTF8() + ": no mapping was found in " +
                         NameOf(m_summaryID).ToUTF8());
  }
  return rendered;
}

/// The sum of a multiple of a measure that the map sums up; null for all else.
RqExpr* SummaryAnswer::RenderInsideExpr(const RqExprAggr& aggr) const {
  if (aggr.GetObjectType() != kRqExprAggrSum || aggr.IsDistinctAggregation()) return nullptr;
  std::list<RqNode*> attributes;
  FindNodes(const_cast<RqExpr*>(aggr.GetAggrExpr()), RqNode::IsObjectType(kRqAttribute), attributes, false);
  if (attributes.size() != 1) return nullptr;
  const auto& attribute = static_cast<const RqAttribute&>(*attributes.front());
  if (!IsMultipleOf(*aggr.GetAggrExpr(), attribute)) return nullptr;
  const SourceContentMap& map = m_contentMap.GetContentMap();
  const RqExprAggrSum sum(attribute.DeepExprCopy(true), nullptr, nullptr, false);
  int row = 0;
  return map.FindMapping(&sum, row) ? aggr.RenderOntoEquivalentSource(&m_gateway, true, map[row], &attribute) : nullptr;
}

OwnedRqExprPtr SummaryAnswer::RewriteAttribute(const RqAttribute& expr) {
  const RefAAttribute attribute = expr.GetAttribute(&m_gateway);
  const std::string name = NameOf(expr.GetID()).ToUTF8();
  std::vector<RpAggregationRule> rules;
  attribute->GetAggregationRules(rules);
  if (!rules.empty()) throw RewriteRefusal(name + " is a measure and stands outside of an aggregate");
  VoidIDVector columnIDs;
  attribute->GetSourceColumnIDs(columnIDs);
  if (columnIDs.empty()) throw RewriteRefusal(name + " is computed, and no source has its values");
  for (const VoidID& columnID : columnIDs) {
    const VoidID tableID = RefAColumn(&m_gateway, columnID)->GetTableID();
    if (IsReachable(tableID)) return MakeColumn(columnID, NumberOfTable(tableID));
  }
  throw RewriteRefusal(name + " is no column of " + NameOf(m_summaryID).ToUTF8() + " or of a table that it refers to");
}

/// The tables on the way stand before it.
int SummaryAnswer::NumberOfTable(const VoidID& tableID) {
  for (const Table& table : m_tables) {
    if (table.m_id == tableID) return table.m_number;
  }
  const VoidID& keyID = m_foreignKeys.at(tableID);
  NumberOfTable(RefAForeignKey(&m_gateway, keyID)->GetTableID());
  m_tables.push_back({tableID, keyID, m_nextTableNumber++});
  return m_tables.back().m_number;
}

OwnedRqExprPtr SummaryAnswer::MakeColumn(const VoidID& columnID, int tableNumber) const {
  return OwnedRqExprPtr(new RqTargetColumn(&m_gateway, columnID, tableNumber));
}

/// The summary and the tables used, joined along the foreign keys.
Heap<RqJoinSpec> SummaryAnswer::MakeFromClause(OwnedRqExprCondPtr& residual) const {
  std::vector<RqJoinNode*> nodes;
  for (const Table& table : m_tables) {
    auto* const pTable = new RqAtomicTable(&m_gateway, table.m_number, table.m_id);
    auto* const pReference =
        new RqTableReference(SqlTableRef::kInnerJoin, pTable, nullptr, nullptr, kDriving_UnknownTable);
    nodes.push_back(new RqJoinNode(pReference, false));
  }
  for (std::size_t i = 1; i < m_tables.size(); ++i) {
    const RefAForeignKey key(&m_gateway, m_tables[i].m_foreignKeyID);
    const auto from =
        static_cast<std::size_t>(std::ranges::find(m_tables, key->GetTableID(), &Table::m_id) - m_tables.begin());
    VoidIDVector columnIDs, referencedIDs;
    key->GetColumnIDs(columnIDs);
    key->GetReferencedColumnIDs(referencedIDs);
    OwnedRqExprCondPtr cond;
    for (std::size_t j = 0; j < columnIDs.size(); ++j) {
      RqExpr* const pLeft = MakeColumn(columnIDs[j], m_tables[from].m_number).Release();
      RqExpr* const pRight = MakeColumn(referencedIDs[j], m_tables[i].m_number).Release();
      cond = RqExprCondAnd::Concatenate(cond.Release(), new RqExprCondEquality(pLeft, pRight, false));
    }
    nodes[from]->AddLink(nodes[i], cond.Release(), SqlTableRef::kInnerJoin, kUnknownCardinality, nullptr, false);
  }
  return Heap<RqJoinSpec>(RqJoinSpec::CompileLinkGraph(nodes, residual, &m_gateway, true));
}

void SummaryAnswer::Answer(RqList& block, int firstTableNumber) {
  RequireLogicalJoins(block);
  if (block.GetGroupBy() && block.GetGroupBy()->IsGroupingSet()) {
    throw RewriteRefusal("a query with grouping sets groups more than once");
  }
  m_nextTableNumber = firstTableNumber;
  m_tables.assign(1, {m_summaryID, VoidID::NullID, m_nextTableNumber++});
  MakeContentMap();

  for (int i = 0; i < block.GetProjection()->GetNumColumns(); ++i) {
    RqDerivedColumn& column = *block.GetProjection()->GetIthColumn(i);
    OwnedRqExprPtr expr(static_cast<RqExpr*>(column.ReleaseIthChild(RqDerivedColumn::kExpr)));
    column.SetExpr(RewriteExpr(std::move(expr)).Release());
  }
  const auto rewriteCond = [this](auto& clause) {
    OwnedRqExprPtr cond(clause.ReleaseCond());
    clause.SetCond(static_cast<RqExprCond*>(RewriteExpr(std::move(cond)).Release()));
  };
  if (RqDetailFilter* const pFilter = block.GetDetailFilter()) rewriteCond(*pFilter);
  if (RqHaving* const pHaving = block.GetHaving()) rewriteCond(*pHaving);
  if (const RqGroupBy* const pGroupBy = block.GetGroupBy()) {
    RqExprVector columns;
    for (int i = 0; i < pGroupBy->GetNumColumns(); ++i) {
      columns.push_back(RewriteExpr(OwnedRqExprPtr(pGroupBy->GetIthColumn(i)->DeepExprCopy(true))).Release());
    }
    block.SetGroupBy(new RqGroupBy(columns, false));
  }
  OwnedRqExprCondPtr residual;
  block.SetJoinSpec(MakeFromClause(residual).Release());
  if (residual) block.ConcatenateToDetailFilter(residual.Release());
}
