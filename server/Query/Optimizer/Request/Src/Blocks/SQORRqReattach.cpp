#include "Query/Optimizer/Request/Blocks/SQORRqReattach.h"

#include <list>
#include <map>
#include <set>
#include <utility>

#include "Host/BaseStringUtil.h"
#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinLink.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"

namespace {

/// The columns of derived tables by the names that references have of them: that of the table, and the number. Of
/// several columns of one name the first one counts.
using NamedColumns = std::map<std::pair<KXString, int>, RqDerivedColumn*>;

/// Adds the columns of a derived table's block.
void AddColumns(RqAbstractList& list, const RqDerivedTable& table, NamedColumns& columns) {
  RqProjection* const pProjection = list.GetProjection();
  if (!pProjection) return;
  const KXString tableName = RqDerivedTable::kTablePrefix + BaseStringUtil::StringFrom(table.GetTableNumber());
  for (int i = 0; i < pProjection->GetNumColumns(); ++i) {
    RqDerivedColumn* const pColumn = pProjection->GetIthColumn(i);
    if (pColumn) columns.try_emplace({tableName, pColumn->GetColumnNum()}, pColumn);
  }
}

/// Replaces the references that have not been aimed and have the name of a column. One that is the root of a tree has
/// no place where its replacement could stand, and stays.
template <class References>
void AimReferences(const References& references, const NamedColumns& columns) {
  RqHandleNode releaseContainer;
  for (RqNode* const pFound : references) {
    auto& reference = static_cast<RqDerivedColumnReference&>(*pFound);
    if (!reference.IsRqTreeVectorForm() || !reference.GetParent()) continue;
    const auto column = columns.find({reference.GetSourceTableName(), reference.GetColumnNumber()});
    if (column == columns.end()) continue;
    reference.Replace(new RqDerivedColumnReference(column->second), releaseContainer);
  }
}

/// The same for the references of a tree, which may be null.
void AimReferencesBelow(RqNode* pRoot, const NamedColumns& columns) {
  std::list<RqNode*> references;
  FindNodes(pRoot, RqNode::IsObjectType(kRqDerivedColumnReference), references, false);
  AimReferences(references, columns);
}

/// Aims what the block itself says of columns. All its derived tables are looked up in one walk.
void AimClauses(RqList& list, RqJoinSpec& joinSpec, const NamedColumns& columns) {
  RqProjection* const pProjection = list.GetProjection();
  for (int i = 0; pProjection && i < pProjection->GetNumColumns(); ++i) {
    AimReferencesBelow(pProjection->GetIthColumn(i), columns);
  }
  if (RqDetailFilter* const pFilter = list.GetDetailFilter()) AimReferencesBelow(pFilter->GetCond(), columns);
  if (RqSummaryFilter* const pFilter = list.GetSummaryFilter()) AimReferencesBelow(pFilter->GetCond(), columns);
  AimReferencesBelow(&joinSpec, columns);
  for (int i = 0; i < joinSpec.GetNumTableReferences(); ++i) {
    RqJoinNode* const pNode = joinSpec.GetIthJoinNode(i);
    if (!pNode) continue;
    for (RqJoinLink* const pLink : pNode->GetIncidentLinks()) AimReferencesBelow(pLink->GetJoinCond(), columns);
  }
}

}  // namespace

void ReattachRqList(RqList* pList) {
  KXThread::LowStackCheck(0);
  RqJoinSpec* const pJoinSpec = pList->GetJoinSpec();
  const RqNode::IsObjectType isDerivedTable(kRqDerivedTable);
  if (!pJoinSpec || !FoundNodes(pList, isDerivedTable)) {
    if (pJoinSpec) pJoinSpec->ReattachLinksAfterMarshal();
    return;
  }
  // The topmost blocks below see to those below them. All of them need not be asked again: a second repair finds
  // nothing to do.
  std::list<RqNode*> innerLists;
  for (int i = 0; i < pList->GetNumChildren(); ++i) {
    FindTopmostNodes(nullptr, pList->GetIthChild(i), RqNode::IsObjectType(kRqList), innerLists, false);
  }
  for (RqNode* const pInner : innerLists) ReattachRqList(static_cast<RqList*>(pInner));

  std::list<RqNode*> derivedTables;
  FindTopmostNodes(nullptr, pJoinSpec, isDerivedTable, derivedTables, false);
  pJoinSpec->ReattachLinksAfterMarshal();
  NamedColumns columns;
  for (RqNode* const pFound : derivedTables) {
    auto& table = static_cast<RqDerivedTable&>(*pFound);
    AddColumns(*table.GetInnerList(), table, columns);
  }
  AimClauses(*pList, *pJoinSpec, columns);
}

void ReattachDerivedColumn(RqNode* pNode, RqAbstractList* pList) {
  NamedColumns columns;
  AddColumns(*pList, static_cast<const RqDerivedTable&>(*pList->GetParent()), columns);
  AimReferencesBelow(pNode, columns);
}

void FindAllReferences(RqNode& root, std::vector<RqDerivedColumnReference*>& references) {
  const RqNode::IsObjectType isReference(kRqDerivedColumnReference);
  std::list<RqNode*> found;
  FindNodes(&root, isReference, found, false);
  std::list<RqNode*> groupBys;
  FindNodes(&root, RqNode::IsObjectType(kRqGroupBy), groupBys, false);
  for (RqNode* const pNode : groupBys) {
    FindNodes(static_cast<RqGroupBy*>(pNode)->GetGranularity(), isReference, found, false);
  }
  std::list<RqNode*> joinNodes;
  FindNodes(&root, RqNode::IsObjectType(kRqJoinNode), joinNodes, false);
  std::set<RqJoinLink*> links;
  for (RqNode* const pNode : joinNodes) {
    for (RqJoinLink* const pLink : static_cast<RqJoinNode*>(pNode)->GetIncidentLinks()) {
      if (links.insert(pLink).second) FindNodes(pLink->GetJoinCond(), isReference, found, false);
    }
  }
  references.clear();
  for (RqNode* const pNode : found) references.push_back(static_cast<RqDerivedColumnReference*>(pNode));
}

void ReattachRequest(RqNode& root) {
  std::list<RqNode*> joinSpecs;
  FindNodes(&root, RqNode::IsObjectType(kRqJoinSpec), joinSpecs, false);
  for (RqNode* const pNode : joinSpecs) static_cast<RqJoinSpec*>(pNode)->ReattachLinksAfterMarshal();

  std::list<RqNode*> derivedTables;
  FindNodes(&root, RqNode::IsObjectType(kRqDerivedTable), derivedTables, false);
  NamedColumns columns;
  for (RqNode* const pNode : derivedTables) {
    auto& table = static_cast<RqDerivedTable&>(*pNode);
    AddColumns(*table.GetInnerList(), table, columns);
  }
  std::vector<RqDerivedColumnReference*> references;
  FindAllReferences(root, references);
  AimReferences(references, columns);
}
