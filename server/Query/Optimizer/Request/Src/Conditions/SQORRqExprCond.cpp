#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"

#include <algorithm>
#include <cstdlib>

#include "Host/DataBlobUtil.h"
#include "Host/PropertyValue.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"

namespace {

/// The order in which operands are stored at construction.
bool SortsFirst(const RqExpr& lhs, const RqExpr& rhs) { return lhs.IsLessThan(rhs, RqShallowLessThanShareBase()); }

/// Whether both have one value in every row: the same form, and aggregates the same share base too.
bool AreSameValue(const RqExpr& lhs, const RqExpr& rhs) { return RqEquivalenceShareBase()(lhs, rhs); }

bool IsKnownToBe(bool bValue, const RqExprCond& cond) { return bValue ? cond.IsAlwaysTrue() : cond.IsAlwaysFalse(); }

/// Whether cond is "not other".
bool IsNotOf(const RqExprCond& cond, const RqExprCond& other) {
  return cond.IsNotConnective() && AreSameValue(*static_cast<const RqExprCondNot&>(cond).GetInnerOperand(), other);
}

}  // namespace

bool RqExprCond::IsContainedInConjunctTree(const RqExprCond& tree) const {
  if (RqEquivalence()(*this, tree)) return true;
  if (!tree.IsAndCond()) return false;
  for (int i = 0; i < tree.GetNumOperands(); ++i) {
    const RqExpr* const pOperand = tree.GetIthOperand(i);
    if (pOperand && pOperand->IsCond() && IsContainedInConjunctTree(static_cast<const RqExprCond&>(*pOperand))) {
      return true;
    }
  }
  return false;
}

void OwnedEquivRqExprCondSet::moveConjunctSetToCondition(OwnedRqExprCondPtr& cond) {
  cond = nullptr;
  while (!empty()) cond = RqExprCondAnd::Concatenate(cond.Release(), erase_no_delete(begin()));
}

// ---------------------------------------------------------------------------------------------------------------------
// Comparisons

bool RqExprCondEqualityOperator::IsMultiValuedInListExpression(ARpGateway* pRp, RqExpr*& otherOperand,
                                                               RqExprSessionVar*& sessionVar) {
  RqExpr* const pLeft = GetIthOperand(RqExprCondEquality::kLeftOperand);
  RqExpr* const pRight = GetIthOperand(RqExprCondEquality::kRightOperand);
  const auto isSessionVar = [](const RqExpr* pExpr) { return pExpr && pExpr->GetObjectType() == kRqExprSessionVar; };
  const bool bLeft = isSessionVar(pLeft);
  if (!bLeft && !isSessionVar(pRight)) return false;

  sessionVar = static_cast<RqExprSessionVar*>(bLeft ? pLeft : pRight);
  otherOperand = bLeft ? pRight : pLeft;
  const OwnedPropertyValue pMultiPropertyValue = sessionVar->GetValue(pRp);
  KX_ASSERT(pMultiPropertyValue.Get());
  return pMultiPropertyValue->GetType() == PropertyValue::StringVector &&
         sessionVar->GetByIndex() == RqExprSessionVar::kNoIndex;
}

RqExprCondEquality::RqExprCondEquality(RqExpr* pLeftOperand, RqExpr* pRightOperand, bool bNullsAreEqual)
    : m_bNullsAreEqual(bNullsAreEqual) {
  KX_ASSERT(pLeftOperand);
  KX_ASSERT(pRightOperand);
  if (!pRightOperand->IsParam() && (pLeftOperand->IsParam() || !SortsFirst(*pLeftOperand, *pRightOperand))) {
    std::swap(pLeftOperand, pRightOperand);
  }
  AddChild(pLeftOperand);
  AddChild(pRightOperand);
}

RqExprCondEquality::RqExprCondEquality(const RqExprCondEquality& rhs, bool bNewIDs, bool bDeepCopy)
    : RqExprCondComparison(rhs, bNewIDs, bDeepCopy), m_bNullsAreEqual(rhs.m_bNullsAreEqual) {}

/// Wanted: nulls are left out of account, so that a column compared to itself is true in a row where it is null.
bool RqExprCondEquality::IsAlwaysTrue() const {
  return AreSameValue(*GetIthOperand(kLeftOperand), *GetIthOperand(kRightOperand));
}

/// Values of different kinds are not compared: an integer literal may well equal a float literal. Wanted: constants of
/// one kind that are not of one form count as different values whatever they come out as: parameters ($1 = $2), the
/// token of the current date beside a date, computed ones (1 + 2 = 0 + 3, upper('x') = upper('X')). Where they are
/// equal after all, a form in which this was folded lacks the rows that it lets through, and has those that its
/// negation keeps out.
bool RqExprCondEquality::IsAlwaysFalse() const {
  const RqExpr& left = *GetIthOperand(kLeftOperand);
  const RqExpr& right = *GetIthOperand(kRightOperand);
  const RqNodeType_e type = left.GetKind();
  return type == right.GetKind() && type != kRqExprSessionVar && left.IsConstant() && right.IsConstant() &&
         !AreSameValue(left, right);
}

bool RqExprCondEquality::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  return RqExpr::IsEquivalent(rhs, pred) &&
         m_bNullsAreEqual == static_cast<const RqExprCondEquality&>(rhs).m_bNullsAreEqual;
}

bool RqExprCondEquality::IsShallowLessThan(const RqExpr& rhs) const {
  return IsShallowLessThanByKey(*this, rhs, [](const RqExprCondEquality& cond) { return cond.m_bNullsAreEqual; });
}

void RqExprCondEquality::ToByteVector(ByteVector& bv) {
  RqExprCondComparison::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_bNullsAreEqual);
}

const_iterator RqExprCondEquality::FromByteVector(const_iterator start) {
  return DataBlobUtil::FromByteVector(RqExprCondComparison::FromByteVector(start), m_bNullsAreEqual);
}

// ---------------------------------------------------------------------------------------------------------------------
// Connectives

namespace {

/// cond as a node of the connective, or null.
template <class Traits>
typename Traits::Connective* AsConnective(RqExpr* pExpr) {
  return pExpr && pExpr->GetKind() == Traits::kKind ? static_cast<typename Traits::Connective*>(pExpr) : nullptr;
}

/// The height of the spine that begins at an operand; 0 for a leaf.
template <class Traits>
std::int32_t SpineHeight(RqExpr* pOperand) {
  auto* const pConnective = AsConnective<Traits>(pOperand);
  return pConnective ? Traits::Height(*pConnective) : 0;
}

/// Makes a condition a leaf of whatever spine holds it.
template <class Traits>
void TakeOffSpine(RqExprCond& cond) {
  if (auto* const pConnective = AsConnective<Traits>(&cond)) Traits::Height(*pConnective) = 0;
}

/// A new spine of one node.
template <class Traits>
typename Traits::Connective* StartSpine(RqExprCond* pFirst, RqExprCond* pSecond) {
  auto* const pNew = new typename Traits::Connective(pFirst, pSecond);
  Traits::Height(*pNew) = 1;
  return pNew;
}

/// Law: (A . (B . C)) => ((A . B) . C), where . is the connective and the outer node, here pNode, becomes the left
/// operand of the inner one.
/// Requires: the right operand of pNode is of the connective; pNode has no parent or is its right operand.
/// Ensures:  the former right operand stands in pNode's place and is the result. Its height is not touched: it holds
///           for a tree that was balanced before the last insertion.
template <class Traits>
typename Traits::Connective* RotateLeft(typename Traits::Connective* pNode) {
  using Connective = typename Traits::Connective;
  auto* const pRight = static_cast<Connective*>(pNode->ReleaseIthChild(Connective::kRightOperand));
  pNode->SetIthChild(Connective::kRightOperand, pRight->ReleaseIthChild(Connective::kLeftOperand));
  if (RqNode* const pParent = pNode->GetParent()) {
    pParent->ReleaseIthChild(Connective::kRightOperand);
    pParent->SetIthChild(Connective::kRightOperand, pRight);
  }
  pRight->SetIthChild(Connective::kLeftOperand, pNode);
  return pRight;
}

}  // namespace

template <class Traits>
RqExprCondJunction<Traits>::RqExprCondJunction(RqExprCond* pLeftOperand, RqExprCond* pRightOperand) {
  KX_ASSERT(pLeftOperand);
  KX_ASSERT(pRightOperand);
  if (!SortsFirst(*pLeftOperand, *pRightOperand)) std::swap(pLeftOperand, pRightOperand);
  this->AddChild(pLeftOperand);
  this->AddChild(pRightOperand);
}

template <class Traits>
bool RqExprCondJunction<Traits>::FoldsTo(bool bValue) const {
  const RqExprCond& left = *GetLeftCond();
  const RqExprCond& right = *GetRightCond();
  if (bValue != Traits::kDominant) return IsKnownToBe(bValue, left) && IsKnownToBe(bValue, right);
  return IsKnownToBe(bValue, left) || IsKnownToBe(bValue, right) || IsNotOf(left, right) || IsNotOf(right, left);
}

template <class Traits>
RqExprCond* RqExprCondJunction<Traits>::Concatenate(RqExprCond* pFirst, RqExprCond* pSecond) {
  if (!pFirst) return pSecond;
  if (!pSecond) return pFirst;
  if (auto* const pRoot = AsConnective<Traits>(pFirst)) return InsertAtEnd(pRoot, pSecond);
  Connective* const pNew = StartSpine<Traits>(pFirst, pSecond);
  TakeOffSpine<Traits>(*pSecond);
  return pNew;
}

template <class Traits>
RqExprCond* RqExprCondJunction<Traits>::ConcatenateCopy(RqExprCond* pFirst, RqExprCond& second) {
  auto* const pCopy = static_cast<RqExprCond*>(second.DeepExprCopy(false));
  if (!pFirst) return pCopy;
  if (auto* const pRoot = AsConnective<Traits>(pFirst)) return InsertAtEnd(pRoot, pCopy);
  Connective* const pNew = StartSpine<Traits>(pFirst, pCopy);
  TakeOffSpine<Traits>(second);
  return pNew;
}

/// Law: a tree whose every node has operands that differ in height by at most one has logarithmic height.
/// Requires: as declared; the heights along the right edge are those of their spines.
/// Ensures:  pNewCond is a leaf at or beside the right end, whatever connective it is itself; every node of the spine
///           has its height, and differences above one are gone where they came from this insertion. Wanted: a left
///           operand that was the higher one before is rotated down all the same, one level an insertion, since the
///           rotation knows one direction only.
/// Cost:     one level of recursion, and at most one rotation, a node of the right edge.
template <class Traits>
typename Traits::Connective* RqExprCondJunction<Traits>::InsertAtEnd(Connective* pRoot, RqExprCond* pNewCond) {
  if (SpineHeight<Traits>(pRoot->GetRightCond()) == 0) {
    auto* const pOldEnd = static_cast<RqExprCond*>(pRoot->ReleaseIthChild(kRightOperand));
    pRoot->FillSlot(kRightOperand, StartSpine<Traits>(pOldEnd, pNewCond));
    Traits::Height(*pRoot) = 2;
    TakeOffSpine<Traits>(*pNewCond);
    return pRoot;
  }

  // The result is the right operand already: a rotation links it in through its parent.
  const Connective* const pRight = InsertAtEnd(static_cast<Connective*>(pRoot->GetRightCond()), pNewCond);
  const std::int32_t leftHeight = SpineHeight<Traits>(pRoot->GetLeftCond());
  const std::int32_t rightHeight = Traits::Height(*pRight);
  if (std::abs(rightHeight - leftHeight) < 2) {
    Traits::Height(*pRoot) = std::max(leftHeight, rightHeight) + 1;
    return pRoot;
  }
  Connective* const pNewRoot = RotateLeft<Traits>(pRoot);
  Traits::Height(*pRoot) = std::max(leftHeight, SpineHeight<Traits>(pRoot->GetRightCond())) + 1;
  return pNewRoot;
}

template class RqExprCondJunction<RqExprCondAndTraits>;
template class RqExprCondJunction<RqExprCondOrTraits>;

RqExprCondNot::RqExprCondNot(RqExprCond* pOperand) {
  KX_ASSERT(pOperand);
  AddChild(pOperand);
}

// ---------------------------------------------------------------------------------------------------------------------
// Predicates with a negation of their own

bool RqExprCondNegatable::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  return RqExprCond::IsEquivalent(rhs, pred) && m_bNegated == static_cast<const RqExprCondNegatable&>(rhs).m_bNegated;
}

bool RqExprCondNegatable::IsShallowLessThan(const RqExpr& rhs) const {
  return IsShallowLessThanByKey(*this, rhs, [](const RqExprCondNegatable& cond) { return cond.m_bNegated; });
}

void RqExprCondNegatable::ToByteVector(ByteVector& bv) {
  RqExprCond::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_bNegated);
}

const_iterator RqExprCondNegatable::FromByteVector(const_iterator start) {
  return DataBlobUtil::FromByteVector(RqExprCond::FromByteVector(start), m_bNegated);
}

RqExprCondIsNull::RqExprCondIsNull(RqExpr* pExpr, bool bNegated) : RqNodeImpl(bNegated) {
  KX_ASSERT(pExpr);
  AddChild(pExpr);
}

/// Wanted: every constant that is not known for null by its form counts as not null, so a parameter does, and
/// NULLIF(1, 1).
bool RqExprCondIsNull::IsOperandNeverNull() const {
  const RqExpr& operand = *GetIthOperand(kOperand);
  return operand.IsConstant() && !operand.IsAlwaysNull();
}

RqExprCondBetween::RqExprCondBetween(RqExpr* pExpr, RqExpr* low, RqExpr* high, bool bNegated) : RqNodeImpl(bNegated) {
  KX_ASSERT(pExpr);
  AddChild(pExpr);
  AddChild(low);
  AddChild(high);
}

RqExprCondLike::RqExprCondLike(RqExpr* pExpr, RqExpr* pattern, bool bNegated, RqExpr* escape) : RqNodeImpl(bNegated) {
  KX_ASSERT(pExpr);
  AddChild(pExpr);
  AddChild(pattern);
  AddChild(escape);
}

RqExprCondIn::RqExprCondIn(RqExpr* pSearchExpr, RqExpr* pInClause, bool bNegated) : RqNodeImpl(bNegated) {
  KX_ASSERT(pSearchExpr);
  KX_ASSERT(pInClause);
  AddChild(pSearchExpr);
  AddChild(pInClause);
}

bool RqExprCondIn::IsCanonicalAtomicPredicate() const {
  const RqExpr* const pInValues = GetIthOperand(kInValues);
  return pInValues && pInValues->IsExprLogicalSubquery();
}

namespace {

bool HasParam(const RqExpr& expr) {
  return FoundNodes(&expr, [](const RqNode& node) { return node.GetObjectType() == kRqExprParam; });
}

/// What both folds of an In demand of it: plain, a list of values, a constant that is not null to look for, no
/// parameter.
bool MayFold(const RqExprCondIn& cond) {
  const RqExpr* const pSearch = cond.GetIthOperand(RqExprCondIn::kSearchExpr);
  const RqExpr* const pValues = cond.GetIthOperand(RqExprCondIn::kInValues);
  return !cond.IsNegated() && pSearch && pValues && pValues->GetObjectType() == kRqExprColumnList &&
         pSearch->IsConstant() && !pSearch->IsAlwaysNull() && !HasParam(*pSearch) && !HasParam(*pValues);
}

/// Whether every entry of a list satisfies the predicate. A null slot does not.
template <class Predicate>
bool AllEntries(const RqExpr& list, Predicate predicate) {
  for (int i = 0; i < list.GetNumOperands(); ++i) {
    const RqExpr* const pEntry = list.GetIthOperand(i);
    if (!pEntry || !predicate(*pEntry)) return false;
  }
  return true;
}

bool IsNullLiteral(const RqExpr& expr) { return expr.GetObjectType() == kRqExprNullLiteral; }

}  // namespace

/// Every value that is no null is the one looked for, and there is one.
bool RqExprCondIn::IsAlwaysTrue() const {
  if (!MayFold(*this)) return false;
  const RqExpr& search = *GetIthOperand(kSearchExpr);
  const RqExpr& values = *GetIthOperand(kInValues);
  return !AllEntries(values, IsNullLiteral) &&
         AllEntries(values, [&](const RqExpr& value) { return IsNullLiteral(value) || AreSameValue(value, search); });
}

/// Every value is a constant of the kind looked for and another one; so it is with no values at all. Wanted: they are
/// other ones by their form, as those of an equality are, so 1 + 2 in (0 + 3) is false, and so is a row in rows that
/// differ from it in a kind alone: (1, 2) in ((1.0, 2)).
bool RqExprCondIn::IsAlwaysFalse() const {
  if (!MayFold(*this)) return false;
  const RqExpr& search = *GetIthOperand(kSearchExpr);
  const RqNodeType_e type = search.GetObjectType();
  return type != kRqExprSessionVar && AllEntries(*GetIthOperand(kInValues), [&](const RqExpr& value) {
           return value.GetObjectType() == type && value.IsConstant() && !AreSameValue(value, search);
         });
}

namespace {

/// The connection of a row's comparisons, column by column; null when the row has no value for a column.
template <class Connective, class MakeComparison>
OwnedRqExprCondPtr ExpandRow(const RqExpr& columns, const RqExpr& row, MakeComparison makeComparison) {
  const int numColumns = columns.GetNumOperands();
  if (row.GetNumOperands() < numColumns) return {};
  OwnedRqExprCondPtr result;
  for (int i = 0; i < numColumns; ++i) {
    const RqExpr* const pColumn = columns.GetIthOperand(i);
    const RqExpr* const pValue = row.GetIthOperand(i);
    if (!pColumn || !pValue) return {};
    result = Connective::Concatenate(result.Release(),
                                     makeComparison(pColumn->DeepExprCopy(false), pValue->DeepExprCopy(false)));
  }
  return result;
}

/// OverRows over the rows of OverColumns over the columns; null when one row has no such form.
template <class OverRows, class OverColumns, class MakeComparison>
OwnedRqExprCondPtr ExpandRows(const RqExpr& columns, const RqExpr& rows, MakeComparison makeComparison) {
  OwnedRqExprCondPtr result;
  for (int i = 0; i < rows.GetNumOperands(); ++i) {
    const RqExpr* const pRow = rows.GetIthOperand(i);
    if (!pRow || !pRow->IsMultiExpr()) return {};
    OwnedRqExprCondPtr rowCond = ExpandRow<OverColumns>(columns, *pRow, makeComparison);
    if (!rowCond) return {};
    result = OverRows::Concatenate(result.Release(), rowCond.Release());
  }
  return result;
}

}  // namespace

RqExprCond* RqExprCondMultiColumnIn::Expand() const {
  const RqExpr* const pColumns = GetIthOperand(kSearchExpr);
  const RqExpr* const pRows = GetIthOperand(kInValues);
  if (!pColumns || !pColumns->IsMultiExpr() || !pRows || !pRows->IsMultiExpr()) return nullptr;
  if (!IsNegated()) {
    const auto makeEquality = [](RqExpr* pColumn, RqExpr* pValue) {
      return new RqExprCondEquality(pColumn, pValue, false);
    };
    return ExpandRows<RqExprCondOr, RqExprCondAnd>(*pColumns, *pRows, makeEquality).Release();
  }
  const auto makeNotEqual = [](RqExpr* pColumn, RqExpr* pValue) { return new RqExprCondNotEqual(pColumn, pValue); };
  return ExpandRows<RqExprCondAnd, RqExprCondOr>(*pColumns, *pRows, makeNotEqual).Release();
}
