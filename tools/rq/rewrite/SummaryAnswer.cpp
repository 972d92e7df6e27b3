#include "rq/rewrite/SummaryAnswer.h"

#include <algorithm>
#include <iterator>
#include <list>
#include <map>

#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrPlain.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAtomicTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprArithmetic.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "rq/rewrite/AggregateExprs.h"
#include "rq/rewrite/RequestNodes.h"
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

/// The logical tables that a block reads. Joins between them are those of the model, so the block says none of its own.
VoidIDVector LogicalTablesOf(const RqList& block) {
  if (!block.GetJoinSpec()) throw RewriteRefusal("the query reads no table");
  VoidIDVector ids;
  for (int i = 0; i < block.GetJoinSpec()->GetNumTableReferences(); ++i) {
    const RqTableReference& reference = *block.GetJoinSpec()->GetIthTableReference(i);
    if (reference.GetRightTable() || reference.GetSearchCond()) {
      throw RewriteRefusal("the query joins tables by conditions of its own, and not as the model does");
    }
    const RqAbstractTable& table = *reference.GetLeftTable();
    if (!table.IsEntity()) throw RewriteRefusal("the query reads a table that is no logical one");
    ids.push_back(static_cast<const RqEntity&>(table).GetID());
  }
  return ids;
}

/// A summary has other rows than the details, so they must be put together in one way or another.
void RequireGroups(RqList& block, MemoryGateway& gateway) {
  std::vector<RqNode*> clauses = ClausesBehindGrouping(block);
  const auto hasAggregate = [](RqNode* pClause) { return !AggregatesOverRows(*pClause).empty(); };
  const bool bGroups = block.GetGroupBy() || std::ranges::any_of(clauses, hasAggregate);
  if (!bGroups && !block.IsDistinct()) throw RewriteRefusal("the query does not group, and a summary has other rows");
  if (!bGroups) return;
  if (block.GetGroupBy() && block.GetGroupBy()->IsGroupingSet()) {
    throw RewriteRefusal("a query with grouping sets groups more than once");
  }
  RequireGroupedAttributes(block, &gateway);
}

}  // namespace

SummaryAnswer::SummaryAnswer(MemoryGateway& gateway, const VoidID& summaryID)
    : m_gateway(gateway), m_summaryID(summaryID) {
  VoidIDVector logicalTableIDs;
  m_gateway.GetObjectIDs(kTIDALogicalTable, logicalTableIDs);
  for (const VoidID& id : logicalTableIDs) FindSources(id);
  if (m_sources.empty()) {
    throw RewriteRefusal(NameOfSummary() + " is no summary: no logical table has a more detailed source");
  }
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

/// The source that the summary is of the logical table, with those of a finer grain; of these, the ones that none of
/// them is finer than have the details.
void SummaryAnswer::FindSources(const VoidID& logicalTableID) {
  const VoidIDVector sourceIDs = SourcesOf(m_gateway, logicalTableID);
  const auto isSummary = [this](const VoidID& id) { return TablesOf(m_gateway, id).front() == m_summaryID; };
  const auto summary = std::ranges::find_if(sourceIDs, isSummary);
  if (summary == sourceIDs.end()) return;
  const auto finerThan = [this](const VoidID& other) {
    return [this, grain = SourceGrain(m_gateway, other)](const VoidID& id) {
      return SourceGrain(m_gateway, id).IsFinerThan(grain);
    };
  };
  VoidIDVector finer;
  std::ranges::copy_if(sourceIDs, std::back_inserter(finer), finerThan(*summary));
  std::vector<SourceTables> details;
  for (const VoidID& id : finer) {
    if (std::ranges::any_of(finer, finerThan(id))) continue;
    details.emplace_back(m_gateway, logicalTableID, id, SourceTables::Joins::kOfModel);
  }
  if (details.empty()) return;
  m_sources.push_back({{m_gateway, logicalTableID, *summary, SourceTables::Joins::kSummedUp}, std::move(details)});
}

/// The one of the logical table that joins all others that the block reads.
void SummaryAnswer::ChooseSource(const VoidIDVector& readIDs) {
  std::string reason;
  for (const Source& source : m_sources) {
    const VoidID& id = source.m_summary.GetLogicalTableID();
    const VoidIDVector joinedIDs = AllJoinedTables(m_gateway, id);
    const auto isOther = [&](const VoidID& readID) { return readID != id && !Contains(joinedIDs, readID); };
    const auto other = std::ranges::find_if(readIDs, isOther);
    if (other != readIDs.end()) {
      reason = NameOf(*other).ToUTF8() + " is not joined to " + NameOf(id).ToUTF8();
    } else if (!Contains(readIDs, id)) {
      reason = "the query does not read " + NameOf(id).ToUTF8();
    } else {
      m_pSource = &source;
      return;
    }
  }
  throw RewriteRefusal(reason);
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
  return std::ranges::all_of(m_pSource->m_details, [&](const SourceTables& detail) {
    const VoidID columnID = SourceColumnIn(attribute, TablesOf(m_gateway, detail.GetSourceID()));
    return !columnID.IsNullID() && RefAColumn(&m_gateway, columnID)->GetTypeInfo().nullable_ == 0;
  });
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
  RefALogicalTable(&m_gateway, m_pSource->m_summary.GetLogicalTableID())->GetAttributeIDs(attributeIDs);
  m_exprs.clear();
  VoidID rowCountID;
  for (const VoidID& attributeID : attributeIDs) {
    AddMappingsOf(attributeID);
    const RefAAttribute attribute(&m_gateway, attributeID);
    std::vector<RpAggregationRule> rules;
    attribute->GetAggregationRules(rules);
    const bool bCounts = rules.size() == 1 && rules.front().m_function == L"COUNT";
    if (rowCountID.IsNullID() && bCounts && IsNeverNull(*attribute)) {
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
    throw RewriteRefusal(TextOf(aggr, &m_gateway) + ": no mapping was found in " + NameOfSummary());
  }
  return m_bGrandTotal ? CountedOfNoRows(aggr, std::move(rendered)) : rendered;
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
  const SourceTables& summary = m_pSource->m_summary;
  const std::optional<std::size_t> place = FindPlace(attribute->GetEntityID(), attribute.Get());
  const SourceGrain::Standing standing = summary.GetGrain().StandingOf(expr.GetID());
  if (place && HasOneValueAt(summary.GetPlaces()[*place], standing)) {
    if (summary.GetPlaces()[*place].m_bAmbiguous) {
      throw RewriteRefusal(name + ": the model does not tell which foreign key of " + NameOfSummary() + " leads to " +
                           NameOf(attribute->GetEntityID()).ToUTF8());
    }
    return MakeColumn(SourceColumnIn(*attribute, {summary.GetPlaces()[*place].m_tableID}), NumberOfPlace(*place));
  }
  if (place || standing == SourceGrain::Standing::kBelow || standing == SourceGrain::Standing::kSummedUp) {
    throw RewriteRefusal(name + ": the rows of " + NameOfSummary() + " are summed up over it");
  }
  throw RewriteRefusal(name + " is no column of " + NameOfSummary() + " or of a table that it refers to");
}

/// The place of a logical table that has a column of the attribute, if one is given. One that is sure goes before one
/// that is not, and then the nearer one.
std::optional<std::size_t> SummaryAnswer::FindPlace(const VoidID& logicalTableID, const AAttribute* pAttribute) const {
  const std::vector<SourceTables::Place>& places = m_pSource->m_summary.GetPlaces();
  const auto doubts = [](const SourceTables::Place& place) {
    return (place.m_bAmbiguous ? 2 : 0) + (place.m_bOneRow ? 0 : 1);
  };
  std::optional<std::size_t> best;
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (places[i].m_logicalTableID != logicalTableID) continue;
    if (pAttribute && SourceColumnIn(*pAttribute, {places[i].m_tableID}).IsNullID()) continue;
    if (!best || doubts(places[i]) < doubts(places[*best])) best = i;
  }
  return best;
}

/// What is reached through a table whose members are told apart needs no dimension of its own.
bool SummaryAnswer::HasOneValueAt(const SourceTables::Place& place, SourceGrain::Standing standing) const {
  switch (standing) {
    case SourceGrain::Standing::kToldApart:
      return true;
    case SourceGrain::Standing::kBelow:
      return false;
    case SourceGrain::Standing::kSummedUp:
      return place.m_bOneRow && place.m_logicalTableID != m_pSource->m_summary.GetLogicalTableID();
    case SourceGrain::Standing::kInNoLevel:
      return place.m_bOneRow;
  }
  return false;
}

/// The tables on the way stand before it.
int SummaryAnswer::NumberOfPlace(std::size_t place) {
  const auto found = std::ranges::find(m_tables, place, &Table::m_place);
  if (found != m_tables.end()) return found->m_number;
  const SourceTables::Place& added = m_pSource->m_summary.GetPlaces()[place];
  const int from = NumberOfPlace(added.m_from);
  m_tables.push_back({place, added.m_foreignKeyID.IsNullID() ? from : m_nextTableNumber++});
  return m_tables.back().m_number;
}

/// A row of the details that has no row of a table that is read is not counted. The summary must tell which these are,
/// or there must be none.
void SummaryAnswer::JoinReadTables(const VoidIDVector& readIDs) {
  const SourceTables& summary = m_pSource->m_summary;
  for (const VoidID& id : readIDs) {
    if (id == summary.GetLogicalTableID()) continue;
    const std::optional<std::size_t> place = FindPlace(id, nullptr);
    if (place && summary.HasKeys(*place) && !summary.GetPlaces()[*place].m_bAmbiguous) {
      if (summary.MayBeMissing(*place)) NumberOfPlace(*place);
    } else if (!IsInEveryDetail(id)) {
      throw RewriteRefusal("a row of " + NameOf(summary.GetLogicalTableID()).ToUTF8() + " may have no row of " +
                           NameOf(id).ToUTF8() + ", and " + NameOfSummary() + " does not tell which have one");
    }
  }
}

bool SummaryAnswer::IsInEveryDetail(const VoidID& logicalTableID) const {
  return std::ranges::all_of(m_pSource->m_details, [&](const SourceTables& detail) {
    bool bFound = false;
    for (std::size_t i = 0; i < detail.GetPlaces().size(); ++i) {
      if (detail.GetPlaces()[i].m_logicalTableID != logicalTableID) continue;
      if (detail.GetPlaces()[i].m_bAmbiguous || detail.MayBeMissing(i)) return false;
      bFound = true;
    }
    return bFound;
  });
}

OwnedRqExprPtr SummaryAnswer::MakeColumn(const VoidID& columnID, int tableNumber) const {
  return OwnedRqExprPtr(new RqTargetColumn(&m_gateway, columnID, tableNumber));
}

/// The summary and the tables used, joined along the foreign keys.
Heap<RqJoinSpec> SummaryAnswer::MakeFromClause(OwnedRqExprCondPtr& residual) const {
  const std::vector<SourceTables::Place>& places = m_pSource->m_summary.GetPlaces();
  std::map<int, RqJoinNode*> nodes;  // by number
  for (const auto& [place, number] : m_tables) {
    if (nodes.contains(number)) continue;
    auto* const pTable = new RqAtomicTable(&m_gateway, number, places[place].m_tableID);
    auto* const pReference =
        new RqTableReference(SqlTableRef::kInnerJoin, pTable, nullptr, nullptr, kDriving_UnknownTable);
    nodes.emplace(number, new RqJoinNode(pReference, false));
  }
  for (const auto& [place, number] : m_tables) {
    if (places[place].m_foreignKeyID.IsNullID()) continue;
    const RefAForeignKey key(&m_gateway, places[place].m_foreignKeyID);
    const int from = std::ranges::find(m_tables, places[place].m_from, &Table::m_place)->m_number;
    VoidIDVector columnIDs, referencedIDs;
    key->GetColumnIDs(columnIDs);
    key->GetReferencedColumnIDs(referencedIDs);
    OwnedRqExprCondPtr cond;
    for (std::size_t i = 0; i < columnIDs.size(); ++i) {
      RqExpr* const pLeft = MakeColumn(columnIDs[i], from).Release();
      RqExpr* const pRight = MakeColumn(referencedIDs[i], number).Release();
      cond = RqExprCondAnd::Concatenate(cond.Release(), new RqExprCondEquality(pLeft, pRight, false));
    }
    nodes.at(from)->AddLink(nodes.at(number), cond.Release(), SqlTableRef::kInnerJoin, kUnknownCardinality, nullptr,
                            false);
  }
  std::vector<RqJoinNode*> linked;
  for (const auto& [number, pNode] : nodes) linked.push_back(pNode);
  return Heap<RqJoinSpec>(RqJoinSpec::CompileLinkGraph(linked, residual, &m_gateway, true));
}

void SummaryAnswer::Answer(RqList& block, int firstTableNumber) {
  const VoidIDVector readIDs = LogicalTablesOf(block);
  ChooseSource(readIDs);
  RequireGroups(block, m_gateway);
  m_bGrandTotal = !block.GetGroupBy();
  m_nextTableNumber = firstTableNumber;
  m_tables.assign(1, {0, m_nextTableNumber++});
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
  JoinReadTables(readIDs);
  OwnedRqExprCondPtr residual;
  block.SetJoinSpec(MakeFromClause(residual).Release());
  if (residual) block.ConcatenateToDetailFilter(residual.Release());
  RenewCopiedIdentities(block);
}
