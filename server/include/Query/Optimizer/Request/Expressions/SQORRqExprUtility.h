#pragma once

#include <map>
#include <set>
#include <vector>

#include "Host/KXString.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"

// ---------------------------------------------------------------------------------------------------------------------
// Content maps: which expression of a source stands for a logical one, where aggregates are rendered.

/// A row of a content map. All three expressions are lent and may be null.
struct LogicalToPhysical {
  const RqExpr* first = nullptr;   ///< The logical expression.
  const RqExpr* second = nullptr;  ///< What stands for it in the source.
  const RqExpr* m_pOverrideAggrRuleExpr = nullptr;

  const RqExpr* GetLeafTranslationExpr(bool bPhysical) const { return bPhysical ? second : first; }
};

/// Row numbers by expression: by structure, not by address.
using RqExprToIntMap = std::map<const RqExpr*, int, LessEquivalentRqExpr>;

/// The rows of a content map, and the index over their logical expressions, which is lent.
class SourceContentMap : public std::vector<LogicalToPhysical> {
 public:
  using std::vector<LogicalToPhysical>::vector;

  void SetExprMap(const RqExprToIntMap* pExprMap) { m_pExprMap = pExprMap; }
  /// Stores the number of the last row whose logical expression is that of pExpr, in the total order. False, with index
  /// as it was, if there is none. The second operand of an aggregate takes no part: it is out of its place while this
  /// looks, and lost if the comparison raises an error. Requires an index.
  bool FindMapping(const RqExpr* pExpr, int& index) const;

 private:
  const RqExprToIntMap* m_pExprMap = nullptr;
};

/// A content map with all that it needs: its index, and the constants made up for it.
class SourceContentMapWrapper {
 public:
  SourceContentMapWrapper() = default;
  SourceContentMapWrapper(const SourceContentMapWrapper&) = delete;
  SourceContentMapWrapper& operator=(const SourceContentMapWrapper&) = delete;

  /// Takes a copy of the map over and indexes it. Of rows with equivalent logical expressions the last one is found. A
  /// null one is a key as any other.
  void InstallContentMap(const SourceContentMap& contentMap);
  const SourceContentMap& GetContentMap() const { return m_contentMap; }
  /// Takes a constant that rows of the map point at, so that it lives as long as they do.
  void recordDummyConstant(RqExpr* pExpr) { m_dummyConstantsHolder.push_back(pExpr); }

 private:
  RqExprToIntMap m_exprMap;
  SourceContentMap m_contentMap;
  OwnedRqExprVector m_dummyConstantsHolder;
};

// ---------------------------------------------------------------------------------------------------------------------
// Sweeps over trees

class ConjunctUtility {
 public:
  /// A new comparison that says the opposite, with the operands of pCond, which is left with null ones; the caller owns
  /// it. Null, with pCond as it was, for what is none of the six comparisons. A null-equal equality loses that mark.
  static RqExprCond* InvertComparisonPredicate(RqExprCond* pCond);

  /// Takes the Nots over rank tests out of a conjunct: a filter for the top or bottom values cannot be pushed down
  /// below a Not. That is a Not whose condition holds a top or bottom aggregate and no And and no Or. A comparison
  /// below it is turned round. Wanted: the Not goes even where there is no comparison to turn round, and the conjunct
  /// then means something else; rank tests are comparisons. Nodes that are replaced go to releaseContainer.
  static void UnNegateTopNBottomNConjunct(Heap<RqExprCond>& conjunct, RqHandleNode& releaseContainer);
  static void UnNegateTopNBottomNConjuncts(KXNodeVector<Heap<RqExprCond>>& conjuncts, RqHandleNode& releaseContainer);
};

class RqExprUtility {
 public:
  /// Stores the references to derived columns in a tree, lent, in pre-order; none for null.
  static void GetAllDerivedColumnReferences(const RqNode* pNode, std::vector<RqDerivedColumnReference*>& references);
  /// Clears the vector of joining indexes of every external data in the expression.
  static void RemoveExternalJoiningIndexes(RqExpr* pExpr);
};

// ---------------------------------------------------------------------------------------------------------------------
// Text for a debugger: the elements in brackets, as RqDumpout renders them through pRp, which may be null.

KXString ToString(const LogicalToPhysical& mapping, ARpGateway* pRp);
KXString ToString(const std::vector<LogicalToPhysical>& mappings, ARpGateway* pRp);
KXString ToString(const std::set<RqExpr*, LessEquivalentRqExpr>& exprs, ARpGateway* pRp);
/// The elements of any range, put together by the overloads for containers.
KXString ToStringOfExprs(const ConstRqExprVector& exprs, ARpGateway* pRp);

template <class Vector>
KXString ToString(const OwnedRqPtrVector<Vector>& exprs, ARpGateway* pRp) {
  return ToStringOfExprs(ConstRqExprVector(exprs.begin(), exprs.end()), pRp);
}
template <class Set>
KXString ToString(const OwnedEquivRqPtrSet<Set>& exprs, ARpGateway* pRp) {
  return ToStringOfExprs(ConstRqExprVector(exprs.begin(), exprs.end()), pRp);
}
