#pragma once

#include <map>

#include "Query/Optimizer/Request/Node/SQORAVisitorRqExpr.h"
#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.h"
#include "Query/Optimizer/Request/Node/SQUCompositeNode.h"

class ARpGateway;
class RqAbstractList;
class RqNode;

/// Identities of nodes, and of something that belongs to each.
using NodeIDMap = std::map<NodeID, NodeID>;

/// Walks a finished tree once and reports, on the standard error stream, what cannot be right about its structure: a
/// node whose identity was met before, as when one subtree stands in two places or a copy with the same identities
/// joined its source; a filter without a condition; a shared list without a list. It mends nothing, and whatever it
/// finds the walk goes on, so below a node that is met twice every node is reported. A set operator of fewer than two
/// lists, a derived table without a block and a case with half a pair end the process.
///
/// What is no child slot is not looked at: the list behind a shared list, links of joins, blocks of subqueries, grains
/// and filters of grouping sets; nor are the aggregates that are computed together with a sort.
///
/// A checker serves one walk on one thread. Cost: n log n for n nodes.
class PlanChecker : public AVisitorRqNode, public AVisitorRqExpr {
 public:
  /// The gateway is for names in the reports, and may be null. Without bDisplayNodeIDs nothing is written, and damage
  /// is counted alone.
  PlanChecker(ARpGateway* pRp, bool bDisplayNodeIDs);

  /// Reports on the tree, and gives the number of faults found; 0 for a healthy tree, of which nothing is written.
  /// Raises ErrorMessage as RqNode::Tour does.
  static int CheckPlan(ARpGateway* pRp, RqNode& node);
  /// The faults found so far, written or not.
  int GetNumFaults() const { return m_numFaults; }

  /// Notes a node that is met. False if a node of its identity was met before, which is then a fault. Wanted: the
  /// report names an owner and a containing list even where there is none, by an identity made for the purpose.
  bool AddNodeIDToMap(RqNode& node);

#define RQ_VISIT(Class, body, state) bool Visit(Class& node) override;
#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.def"
#define RQ_VISIT(Class, body, state) bool Visit(Class& expr) override;
#include "Query/Optimizer/Request/Node/SQORAVisitorRqExpr.def"
  /// The measure, the grouping list and the compute break, as far as they are there.
  bool VisitAggr(RqExprAggr& expr);

 private:
  /// Counts a fault. True if it is to be written.
  bool IsToReport();

  bool Enter(RqNode& node, bool bDone);
  template <class SetOperator>
  bool WalkBranches(SetOperator& list);
  template <class Filter>
  bool EnterFilter(Filter& filter, const char* report);

  // What is walked of an expression: of the overloads that take a class, that of the nearest base counts.
  void WalkOperand(RqExpr& expr, int slot);
  void WalkOperands(RqExpr& expr, int firstSlot = 0);
  void Walk(RqExpr& expr) { WalkOperands(expr); }
  template <class Case>
  void WalkPairs(Case& expr, int firstPair);
  void Walk(RqExprLookupCase& expr);
  void Walk(RqExprIfCase& expr);
  void Walk(RqExprAggr& expr);
  void Walk(RqExprAggrCountStar& expr);
  template <class Aggr>
  void WalkLimited(Aggr& expr);
  void Walk(RqExprAggrTopN& expr);
  void Walk(RqExprAggrBottomN& expr);

  ARpGateway* m_pRp_ForPrettyColumnNames;
  NodeIDMap m_nodeMap;
  RqAbstractList* m_pContainingList = nullptr;
  bool m_bDisplayNodeIDs;
  int m_numFaults = 0;
};
