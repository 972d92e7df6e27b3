#include "SQORRqExprCondToBitClause.h"

#include <algorithm>
#include <functional>

#include "Host/KXAssert.h"

RqExprCondToBitClause::RqExprCondToBitClause(const LiteralIndexMap& literalIndexMap)
    : m_literalIndexMap(literalIndexMap),
      m_ownedAddressIndex(literalIndexMap.begin(), literalIndexMap.end()),
      m_addressIndex(m_ownedAddressIndex) {
  std::sort(m_ownedAddressIndex.begin(), m_ownedAddressIndex.end());
}

int RqExprCondToBitClause::FindBit(RqExprCond& atom) const {
  const auto it = std::lower_bound(
      m_addressIndex.begin(), m_addressIndex.end(), &atom,
      [](const AddressIndex::value_type& entry, const RqExprCond* pAtom) { return std::less<>()(entry.first, pAtom); });
  if (it != m_addressIndex.end() && it->first == &atom) return it->second;
  if (const auto found = m_literalIndexMap.find(&atom); found != m_literalIndexMap.end()) return found->second;
  // Outer join filters have no strict order, so the search may pass by the equal that kept the atom out of the table.
  const LessEquivalentRqExpr isLess = m_literalIndexMap.key_comp();
  const auto equal = std::find_if(m_literalIndexMap.begin(), m_literalIndexMap.end(), [&](const auto& entry) {
    return !isLess(entry.first, &atom) && !isLess(&atom, entry.first);
  });
  KX_ASSERT_TEXT(equal != m_literalIndexMap.end(), L"the atom is not in the table");
  return equal->second;
}

/// Starts a visitor of its own on the operand and adds what it makes.
void RqExprCondToBitClause::InsertOperand(BitClause& clause, RqExprCond& operand) const {
  RqExprCondToBitClause visitor(*this, clause);
  operand.TourExpr(visitor);
  if (BitClause* const pOperandClause = visitor.GetBitClause()) clause.Insert(pOperandClause);
}

/// An atom is a conjunction of one. As an operand it dissolves in a clause of either kind, so none is made for it.
bool RqExprCondToBitClause::SetAtom(RqExprCond& cond) {
  const auto bit = static_cast<std::size_t>(FindBit(cond));
  if (m_pOuterClause) {
    m_pOuterClause->GetLiterals().set(bit);
  } else {
    m_rootClause = new BitClauseConjunction(Width());
    m_rootClause->GetLiterals().set(bit);
  }
  return true;
}

bool RqExprCondToBitClause::Visit(RqExprCondAnd& cond) {
  m_rootClause = new BitClauseConjunction(Width());
  for (RqExprCond* const pOperand : {cond.GetLeftCond(), cond.GetRightCond()}) {
    if (!pOperand->IsAlwaysTrue()) InsertOperand(*m_rootClause, *pOperand);
  }
  return true;
}

bool RqExprCondToBitClause::Visit(RqExprCondOr& cond) {
  m_rootClause = new BitClauseDisjunction(Width());
  RqExprCond& left = *cond.GetLeftCond();
  RqExprCond& right = *cond.GetRightCond();
  const bool bKeepRight = !right.IsAlwaysFalse();
  // Wanted, and not so for an And: a disjunction is not left without any operand.
  if (!bKeepRight || !left.IsAlwaysFalse()) InsertOperand(*m_rootClause, left);
  if (bKeepRight) InsertOperand(*m_rootClause, right);
  return true;
}

bool RqExprCondToBitClause::Visit(RqExprCondEquality& cond) { return SetAtom(cond); }
bool RqExprCondToBitClause::Visit(RqExprCondLess& cond) { return SetAtom(cond); }
bool RqExprCondToBitClause::Visit(RqExprCondNot& cond) { return SetAtom(cond); }
bool RqExprCondToBitClause::Visit(RqExprCondIsNull& cond) { return SetAtom(cond); }
bool RqExprCondToBitClause::Visit(RqExprCondLike& cond) { return SetAtom(cond); }
bool RqExprCondToBitClause::Visit(RqExprCondIn& cond) { return SetAtom(cond); }
bool RqExprCondToBitClause::Visit(RqExprCondMultiColumnIn& cond) { return SetAtom(cond); }
bool RqExprCondToBitClause::Visit(RqExprEvaluatePredicate& cond) { return SetAtom(cond); }

// The inward negation form drops these. Wanted: not those below a negation that it cancels, as in not (not filter and
// a), which end the process here.
bool RqExprCondToBitClause::Visit(RqExprCondOuterJoinFilter&) { KX_LOGIC_ERROR(L""); }
