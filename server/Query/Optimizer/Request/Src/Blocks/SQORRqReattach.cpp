#include "Query/Optimizer/Request/Blocks/SQORRqReattach.h"

#include <list>
#include <map>
#include <set>

#include "Host/BaseStringUtil.h"
#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinLink.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"

namespace {

/// Aims what the block itself says of the columns of an inner block.
void ReattachClauses(RqList& list, RqJoinSpec& joinSpec, RqAbstractList& inner) {
  RqProjection* const pProjection = list.GetProjection();
  for (int i = 0; pProjection && i < pProjection->GetNumColumns(); ++i) {
    if (RqDerivedColumn* const pColumn = pProjection->GetIthColumn(i))
      ReattachDerivedColumn(pColumn->GetExpr(), &inner);
  }
  if (RqDetailFilter* const pFilter = list.GetDetailFilter()) ReattachDerivedColumn(pFilter->GetCond(), &inner);
  if (RqSummaryFilter* const pFilter = list.GetSummaryFilter()) ReattachDerivedColumn(pFilter->GetCond(), &inner);
  ReattachDerivedColumn(&joinSpec, &inner);
  for (int i = 0; i < joinSpec.GetNumTableReferences(); ++i) {
    RqJoinNode* const pNode = joinSpec.GetIthJoinNode(i);
    if (!pNode) continue;
    for (RqJoinLink* const pLink : pNode->GetIncidentLinks()) ReattachDerivedColumn(pLink->GetJoinCond(), &inner);
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
  for (RqNode* const pTable : derivedTables) {
    ReattachClauses(*pList, *pJoinSpec, *static_cast<RqDerivedTable*>(pTable)->GetInnerList());
  }
}

void ReattachDerivedColumn(RqNode* pNode, RqAbstractList* pList) {
  std::list<RqNode*> references;
  FindNodes(pNode, RqNode::IsObjectType(kRqDerivedColumnReference), references, false);
  if (references.empty()) return;
  const auto& table = static_cast<const RqDerivedTable&>(*pList->GetParent());
  const KXString sourceTableName = RqDerivedTable::kTablePrefix + BaseStringUtil::StringFrom(table.GetTableNumber());
  RqHandleNode releaseContainer;
  for (RqNode* const pFound : references) {
    auto& reference = static_cast<RqDerivedColumnReference&>(*pFound);
    if (!reference.IsRqTreeVectorForm() || reference.GetSourceTableName() != sourceTableName) continue;
    RqProjection* const pProjection = pList->GetProjection();
    RqDerivedColumn* const pColumn =
        pProjection ? pProjection->GetMatchingColumn(reference.GetColumnNumber()) : nullptr;
    if (pColumn) reference.Replace(new RqDerivedColumnReference(pColumn), releaseContainer);
  }
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
  std::map<KXString, RqProjection*> projections;
  for (RqNode* const pNode : derivedTables) {
    auto& table = static_cast<RqDerivedTable&>(*pNode);
    projections.emplace(RqDerivedTable::kTablePrefix + BaseStringUtil::StringFrom(table.GetTableNumber()),
                        table.GetInnerList()->GetProjection());
  }
  std::vector<RqDerivedColumnReference*> references;
  FindAllReferences(root, references);
  RqHandleNode releaseContainer;
  for (RqDerivedColumnReference* const pReference : references) {
    if (!pReference->IsRqTreeVectorForm() || !pReference->GetParent()) continue;
    const auto it = projections.find(pReference->GetSourceTableName());
    if (it == projections.end() || !it->second) continue;
    if (RqDerivedColumn* const pColumn = it->second->GetMatchingColumn(pReference->GetColumnNumber())) {
      pReference->Replace(new RqDerivedColumnReference(pColumn), releaseContainer);
    }
  }
}
