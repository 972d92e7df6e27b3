#include "Query/Optimizer/Request/Text/SQORPlanChecker.h"

#include <cstdio>

#include "Host/KXAssert.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "SQORRqNodeClasses.h"

PlanChecker::PlanChecker(ARpGateway* pRp, bool bDisplayNodeIDs)
    : m_pRp_ForPrettyColumnNames(pRp), m_bDisplayNodeIDs(bDisplayNodeIDs) {}

int PlanChecker::CheckPlan(ARpGateway* pRp, RqNode& node) {
  PlanChecker checker(pRp, true);
  node.Tour(checker);
  return checker.GetNumFaults();
}

// ---------------------------------------------------------------------------------------------------------------------
// Faults

bool PlanChecker::IsToReport() {
  ++m_numFaults;
  return m_bDisplayNodeIDs;
}

namespace {

NodeID IdentityOf(const RqNode* pNode) { return pNode ? pNode->GetNodeID() : NodeID(); }

}  // namespace

bool PlanChecker::AddNodeIDToMap(RqNode& node) {
  const auto [it, bInserted] = m_nodeMap.try_emplace(node.GetNodeID(), IdentityOf(node.GetParent()));
  if (bInserted) return true;
  if (!IsToReport()) return false;
  std::fprintf(stderr, "Plan Checker found duplicate nodeid %s, owner id %s, containing list id %s\n",
               it->first.ToString().ToUTF8().c_str(), it->second.ToString().ToUTF8().c_str(),
               IdentityOf(m_pContainingList).ToString().ToUTF8().c_str());
  RqDumpout::DebugPrint("local node", node, m_pRp_ForPrettyColumnNames);
  return false;
}

// ---------------------------------------------------------------------------------------------------------------------
// Blocks and their clauses. The answer is false where RqNode::Tour is to walk the slots.

/// Notes the node and gives bDone.
bool PlanChecker::Enter(RqNode& node, bool bDone) {
  AddNodeIDToMap(node);
  return bDone;
}

bool PlanChecker::Visit(RqList& list) {
  AddNodeIDToMap(list);
  m_pContainingList = &list;
  return false;
}

template <class SetOperator>
bool PlanChecker::WalkBranches(SetOperator& list) {
  RqAbstractList* const pContainingList = m_pContainingList;
  for (int i = 0; i < list.GetNumLists(); ++i) {
    m_pContainingList = &list;
    if (RqAbstractList* const pBranch = list.GetIthList(i)) pBranch->Tour(*this);
  }
  m_pContainingList = pContainingList;
  return true;
}

bool PlanChecker::Visit(RqUnion& unionNode) {
  AddNodeIDToMap(unionNode);
  KX_ASSERT(unionNode.GetNumLists() >= 2);
  return WalkBranches(unionNode);
}

bool PlanChecker::Visit(RqIntersect& intersectNode) {
  AddNodeIDToMap(intersectNode);
  KX_ASSERT(intersectNode.GetNumLists() >= 2);
  return WalkBranches(intersectNode);
}

bool PlanChecker::Visit(RqExcept& exceptNode) {
  AddNodeIDToMap(exceptNode);
  KX_ASSERT(exceptNode.GetNumLists() >= 2);
  return WalkBranches(exceptNode);
}

bool PlanChecker::Visit(RqSharedList& list) {
  AddNodeIDToMap(list);
  if (!list.GetSharedRqList() && IsToReport()) std::fprintf(stderr, "ERROR: Dangling NULL ptr");
  m_pContainingList = &list;
  return false;
}

bool PlanChecker::Visit(RqBreakFilter& filter) {
  AddNodeIDToMap(filter);
  m_pContainingList = &filter;
  if (RqAbstractList* const pInner = filter.GetInnerList()) pInner->Tour(*this);
  return true;
}

bool PlanChecker::Visit(RqProjection& projection) {
  AddNodeIDToMap(projection);
  for (int i = 0; i < projection.GetNumColumns(); ++i) {
    if (RqDerivedColumn* const pColumn = projection.GetIthColumn(i)) pColumn->Tour(*this);
  }
  return true;
}

bool PlanChecker::Visit(RqDerivedColumn& column) {
  AddNodeIDToMap(column);
  if (RqExpr* const pExpr = column.GetExpr()) pExpr->TourExpr(*this);
  return true;
}

/// A null report stands for a clause that may be without a condition.
template <class Filter>
bool PlanChecker::EnterFilter(Filter& filter, const char* report) {
  AddNodeIDToMap(filter);
  if (RqExprCond* const pCond = filter.GetCond()) {
    pCond->TourExpr(*this);
  } else if (report && IsToReport()) {
    std::fprintf(stderr, "%s", report);
  }
  return true;
}

bool PlanChecker::Visit(RqDetailFilter& filter) {
  return EnterFilter(filter, "*********** ERROR: RqDetailFilter node with no condition");
}

bool PlanChecker::Visit(RqSummaryFilter& filter) {
  return EnterFilter(filter, "*********** ERROR: RqSummaryFilter node with no condition");
}

bool PlanChecker::Visit(RqHaving& having) { return EnterFilter(having, nullptr); }

/// The clause is its list: as an expression it is entered, and so only once.
bool PlanChecker::Visit(RqGroupBy& groupBy) {
  groupBy.TourExpr(*this);
  return true;
}

bool PlanChecker::Visit(RqOrderBy& orderBy) {
  AddNodeIDToMap(orderBy);
  for (int i = 0; i < orderBy.GetNumSortSpecs(); ++i) {
    if (RqSortSpec* const pSortSpec = orderBy.GetIthSortSpec(i)) pSortSpec->Tour(*this);
  }
  return true;
}

bool PlanChecker::Visit(RqSortSpec& sortSpec) { return Enter(sortSpec, true); }

// ---------------------------------------------------------------------------------------------------------------------
// Joins, tables and the other nodes

bool PlanChecker::Visit(RqJoinSpec& joinSpec) { return Enter(joinSpec, false); }
bool PlanChecker::Visit(RqJoinNode& node) { return Enter(node, false); }

bool PlanChecker::Visit(RqTableReference& reference) {
  AddNodeIDToMap(reference);
  RqAbstractList* const pContainingList = m_pContainingList;
  if (RqAbstractTable* const pLeft = reference.GetLeftTable()) pLeft->Tour(*this);
  m_pContainingList = pContainingList;
  if (RqExprCond* const pCond = reference.GetSearchCond()) pCond->TourExpr(*this);
  m_pContainingList = pContainingList;
  if (RqAbstractTable* const pRight = reference.GetRightTable()) pRight->Tour(*this);
  m_pContainingList = pContainingList;
  return true;
}

bool PlanChecker::Visit(RqDerivedTable& table) {
  AddNodeIDToMap(table);
  table.GetInnerList()->Tour(*this);
  return true;
}

bool PlanChecker::Visit(RqAtomicTable& table) { return Enter(table, true); }
bool PlanChecker::Visit(RqOpaqueTable& table) { return Enter(table, true); }
bool PlanChecker::Visit(RqTransientOpaqueTable& table) { return Enter(table, true); }
bool PlanChecker::Visit(RqTELMNativeTable& table) { return Enter(table, true); }
bool PlanChecker::Visit(RqExternalTable& table) { return Enter(table, true); }
bool PlanChecker::Visit(RqEntity& node) { return Enter(node, true); }

bool PlanChecker::Visit(RqStats& list) { return Enter(list, false); }
bool PlanChecker::Visit(RqCanonicalMap& list) { return Enter(list, false); }
bool PlanChecker::Visit(RqHandleNode& node) { return Enter(node, false); }

// Wanted: these two are not entered, so of their own identities none is ever a duplicate.
bool PlanChecker::Visit(RqMolapStarJoin& list) { return AVisitorRqNode::Visit(list); }
bool PlanChecker::Visit(RqMolapFilterJoin& list) { return AVisitorRqNode::Visit(list); }

/// As an expression it is entered, and so only once.
bool PlanChecker::Visit(RqExpr& expr) {
  expr.TourExpr(*this);
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Expressions

void PlanChecker::WalkOperand(RqExpr& expr, int slot) {
  if (RqExpr* const pOperand = expr.FindOperand(slot)) pOperand->TourExpr(*this);
}

void PlanChecker::WalkOperands(RqExpr& expr, int firstSlot) {
  for (int slot = firstSlot; slot < expr.GetNumOperands(); ++slot) WalkOperand(expr, slot);
}

template <class Case>
void PlanChecker::WalkPairs(Case& expr, int firstPair) {
  for (int i = 0; i < firstPair; ++i) WalkOperand(expr, i);
  for (int i = firstPair; i < expr.GetNumOperands(); i += 2) {
    KX_ASSERT(i + 1 < expr.GetNumOperands());
    WalkOperand(expr, i);
    WalkOperand(expr, i + 1);
  }
}

void PlanChecker::Walk(RqExprLookupCase& expr) { WalkPairs(expr, RqExprLookupCase::kFirstLookupEntry); }
void PlanChecker::Walk(RqExprIfCase& expr) { WalkPairs(expr, RqExprIfCase::kFirstIfCond); }

// A wrapper gives the aggregate and the breaks of its kernel for its own; so the slots are asked for here.

bool PlanChecker::VisitAggr(RqExprAggr& expr) {
  for (const int slot : {RqExprAggr::kAggrExpr, RqExprAggr::kControlBreak, RqExprAggr::kComputeBreak}) {
    WalkOperand(expr, slot);
  }
  return true;
}

void PlanChecker::Walk(RqExprAggr& expr) {
  VisitAggr(expr);
  WalkOperands(expr, RqExprAggr::kNumOperands);
}

void PlanChecker::Walk(RqExprAggrCountStar& expr) {
  KX_ASSERT(expr.GetAggrExpr());
  VisitAggr(expr);
}

template <class Aggr>
void PlanChecker::WalkLimited(Aggr& expr) {
  WalkOperand(expr, Aggr::kAggrExpr);
  WalkOperand(expr, Aggr::kArgument);
  for (RqExprColumnList* const pBreak : {expr.GetControlBreak(), expr.GetComputeBreak()}) {
    if (pBreak && pBreak->GetNumColumns() > 0) pBreak->TourExpr(*this);
  }
}

void PlanChecker::Walk(RqExprAggrTopN& expr) { WalkLimited(expr); }
void PlanChecker::Walk(RqExprAggrBottomN& expr) { WalkLimited(expr); }

// ---------------------------------------------------------------------------------------------------------------------
// The overloads that are alike. A class that is only declared has no object; a node that comes to stand and has no
// Visit above is missed by the linker, and an expression gets the one here.

#define RQ_VISIT_Stands(Class)
#define RQ_VISIT_Declared(Class) \
  bool PlanChecker::Visit(Class&) { KX_LOGIC_ERROR(L""); }
#define RQ_VISIT(Class, body, state) RQ_VISIT_##state(Class)
#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.def"
#undef RQ_VISIT_Stands
#define RQ_VISIT_Stands(Class)           \
  bool PlanChecker::Visit(Class& expr) { \
    AddNodeIDToMap(expr);                \
    Walk(expr);                          \
    return true;                         \
  }
#define RQ_VISIT(Class, body, state) RQ_VISIT_##state(Class)
#include "Query/Optimizer/Request/Node/SQORAVisitorRqExpr.def"
#undef RQ_VISIT_Stands
#undef RQ_VISIT_Declared
