#pragma once

#include <map>
#include <utility>
#include <vector>

#include "Query/Optimizer/Request/Conditions/SQORAVisitorRqExprCond.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondHierarchy.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondQuantified.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondSpecial.h"
#include "SQORBitClause.h"

/// The atom table: the bit of each distinct atom. Atoms that are one tree under the total order share a bit; a Not is
/// an atom with a bit of its own, unrelated to that of what it negates. The atoms are lent.
using LiteralIndexMap =
    std::map<RqExprCond*, int, LessEquivalentRqExpr, KXNodeStdAlloc<std::pair<RqExprCond* const, int>>>;

/// Fills an atom table and the list of distinct atoms, where atom i has bit i. The first of equal atoms stands for all.
class BuildLiteralIndexMap {
 public:
  BuildLiteralIndexMap(LiteralIndexMap& literalIndexMap, RqExprCondVector& literals)
      : m_literalIndexMap(literalIndexMap), m_literals(literals) {}

  void operator()(RqExpr* pAtom) {
    auto* const pCond = static_cast<RqExprCond*>(pAtom);
    // insert, and not try_emplace, which compares twice more for an atom that is new.
    if (m_literalIndexMap.insert({pCond, static_cast<int>(m_literalIndexMap.size())}).second) {
      m_literals.push_back(pCond);
    }
  }

 private:
  LiteralIndexMap& m_literalIndexMap;
  RqExprCondVector& m_literals;
};

/// Turns a condition in inward negation form into a clause. To be started by cond.TourExpr(visitor); the visitor owns
/// the clause.
///
/// Requires: every atom of the condition, or one equal to it, is in the table, which outlives the visitor.
/// Ensures:  And of Ands and Or of Ors are flattened. An operand that is always true is left out of an And, even the
///           last one. An operand that is always false is left out of an Or; wanted: of two such the left one stays.
/// A condition that the inward negation form does not leave ends the process.
class RqExprCondToBitClause final : public AVisitorRqExprCond {
 public:
  explicit RqExprCondToBitClause(const LiteralIndexMap& literalIndexMap);
  RqExprCondToBitClause(const RqExprCondToBitClause&) = delete;
  RqExprCondToBitClause& operator=(const RqExprCondToBitClause&) = delete;

  /// Lends the clause; null before a tour.
  BitClause* GetBitClause() const { return m_rootClause.Get(); }

  using AVisitorRqExprCond::Visit;
  bool Visit(RqExprCondAnd& cond) override;
  bool Visit(RqExprCondOr& cond) override;
  bool Visit(RqExprCondEquality& cond) override;
  bool Visit(RqExprCondLess& cond) override;
  bool Visit(RqExprCondNot& cond) override;
  bool Visit(RqExprCondIsNull& cond) override;
  bool Visit(RqExprCondLike& cond) override;
  bool Visit(RqExprCondIn& cond) override;
  bool Visit(RqExprCondMultiColumnIn& cond) override;
  bool Visit(RqExprEvaluatePredicate& cond) override;
  bool Visit(RqExprCondOuterJoinFilter& cond) override;
#define RQ_OPAQUE_COND(Class) \
  bool Visit(Class& cond) override { return SetAtom(cond); }
#include "Query/Optimizer/Request/Conditions/SQOROpaqueConds.def"

 private:
  /// The atoms of the table sorted by address: most atoms are found without comparing any trees.
  using AddressIndex = std::vector<std::pair<const RqExprCond*, int>>;

  /// For an operand: shares the index of the visitor that meets it, and puts an atom right into that one's clause.
  RqExprCondToBitClause(const RqExprCondToBitClause& outer, BitClause& outerClause)
      : m_literalIndexMap(outer.m_literalIndexMap),
        m_addressIndex(outer.m_addressIndex),
        m_pOuterClause(&outerClause) {}

  int Width() const { return static_cast<int>(m_literalIndexMap.size()); }
  int FindBit(RqExprCond& atom) const;
  bool SetAtom(RqExprCond& cond);
  void InsertOperand(BitClause& clause, RqExprCond& operand) const;

  Heap<BitClause> m_rootClause;
  const LiteralIndexMap& m_literalIndexMap;
  AddressIndex m_ownedAddressIndex;  // empty in a visitor of an operand
  const AddressIndex& m_addressIndex;
  BitClause* m_pOuterClause = nullptr;
};
