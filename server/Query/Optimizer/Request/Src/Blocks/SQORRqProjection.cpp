#include "Query/Optimizer/Request/Blocks/SQORRqProjection.h"

#include <algorithm>

#include "Host/DataBlobUtil.h"
#include "Host/KXAssert.h"
#include "Query/Optimizer/Request/Conditions/SQORExprSubsumption.h"

namespace {

/// The index of the first column that is there and matches; the number of columns if there is none.
template <class Matches>
int FindFirstColumn(const RqProjection& projection, const Matches& matches) {
  const int numColumns = projection.GetNumColumns();
  for (int i = 0; i < numColumns; ++i) {
    const RqDerivedColumn* const pColumn = projection.GetIthColumn(i);
    if (pColumn && matches(*pColumn)) return i;
  }
  return numColumns;
}

/// Whether a column computes an equivalent of an expression.
class Computes {
 public:
  explicit Computes(const RqExpr* pExpr) : m_pExpr(pExpr) {}
  bool operator()(const RqDerivedColumn& column) const {
    const RqExpr* const pExpr = column.GetExpr();
    return pExpr && m_equivalence(*pExpr, *m_pExpr);
  }

 private:
  const RqExpr* m_pExpr;
  RqEquivalence m_equivalence;
};

const RqExpr* ExprOf(const RqDerivedColumn* pColumn) { return pColumn ? pColumn->GetExpr() : nullptr; }

}  // namespace

RqProjection::RqProjection(const RqProjection& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy), m_nextColumnNumber(rhs.m_nextColumnNumber) {}

void RqProjection::SetNumColumns(int numColumns) {
  ReSyncColumnNumGenerator(numColumns);
  SetNumChildren(numColumns);
}

void RqProjection::SetIthColumn(int i, RqDerivedColumn* pNewColumn) {
  KX_ASSERT(pNewColumn->GetColumnNum() != RqDerivedColumn::kUnknownColumnNum);
  SetIthChild(i, pNewColumn);
}

void RqProjection::AddColumn(RqDerivedColumn* pColumn) {
  if (pColumn->GetColumnNum() == RqDerivedColumn::kUnknownColumnNum) pColumn->SetColumnNum(GetNextColumnNum());
  AddChild(pColumn);
}

RqDerivedColumn* RqProjection::AddNewColumn(RqExpr* pDonated) {
  auto* const pColumn = new RqDerivedColumn(pDonated, GetNextColumnNum());
  AddColumn(pColumn);
  return pColumn;
}

RqDerivedColumn* RqProjection::InsertColumnExpr(const RqExpr* pExpr, bool& inserted, bool bForceInsert) {
  if (!pExpr) KX_LOGIC_ERROR(L"");
  KX_ASSERT(pExpr->IsValueExpr());
  inserted = false;
  if (!bForceInsert) {
    if (RqDerivedColumn* const pColumn = GetMatchingColumn(pExpr)) return pColumn;
  }
  inserted = true;
  return AddNewColumn(pExpr->DeepExprCopy(false));
}

RqDerivedColumn* RqProjection::InsertColumnExpr(const RqExpr* pExpr) {
  bool inserted;
  return InsertColumnExpr(pExpr, inserted, false);
}

RqDerivedColumn* RqProjection::InsertColumnExprShareBase(const RqExpr* pExpr, bool& inserted) {
  if (!pExpr) KX_LOGIC_ERROR(L"");
  KX_ASSERT(pExpr->IsValueExpr());
  const RqShallowLessThanShareBase less;
  const int index = FindFirstColumn(*this, [&](const RqDerivedColumn& column) {
    return column.GetExpr() && column.GetExpr()->IsLessThan(*pExpr, less);
  });
  inserted = index == GetNumColumns();
  return inserted ? AddNewColumn(pExpr->DeepExprCopy(false)) : GetIthColumn(index);
}

RqDerivedColumn* RqProjection::InsertDonatedColumnExpr(RqExpr* pExpr) {
  KX_ASSERT(pExpr);
  KX_ASSERT(pExpr->IsValueExpr());
  OwnedRqExprPtr donated(pExpr);
  if (RqDerivedColumn* const pColumn = GetMatchingColumn(pExpr)) return pColumn;
  return AddNewColumn(donated.Release());
}

const RqDerivedColumn* RqProjection::GetMatchingColumn(const RqExpr* pExpr) const {
  const int index = GetMatchingColumnIndex(pExpr);
  return index < GetNumColumns() ? GetIthColumn(index) : nullptr;
}

RqDerivedColumn* RqProjection::GetMatchingColumn(const RqExpr* pExpr) {
  return const_cast<RqDerivedColumn*>(static_cast<const RqProjection*>(this)->GetMatchingColumn(pExpr));
}

RqDerivedColumn* RqProjection::GetMatchingColumn(int columnNumber) {
  const int index = FindColumnIndex(columnNumber);
  return index != kColumnNotFound ? GetIthColumn(index) : nullptr;
}

void RqProjection::GetMatchingColumns(const RqExpr* pExpr, RqDerivedColumnVector& columns) {
  const Computes computes(pExpr);
  for (int i = 0; i < GetNumColumns(); ++i) {
    RqDerivedColumn* const pColumn = GetIthColumn(i);
    if (pColumn && computes(*pColumn)) columns.push_back(pColumn);
  }
}

int RqProjection::GetMatchingColumnIndex(const RqExpr* pExpr) const { return FindFirstColumn(*this, Computes(pExpr)); }

void RqProjection::GetMatchingColumnReferences(const RqExpr* pExpr, RqExprVector& exprs,
                                               const RqEquivalence& equivalence) {
  exprs.clear();
  for (int i = 0; i < GetNumColumns(); ++i) {
    RqDerivedColumn* const pColumn = GetIthColumn(i);
    if (pColumn) SubExprFinder::FindAllEquivalentSubExprs(pColumn->GetExpr(), *pExpr, exprs, equivalence);
  }
}

int RqProjection::FindColumnIndex(const RqDerivedColumn* pColumn) const { return FindChildIndex(pColumn); }
static_assert(RqProjection::kColumnNotFound == CompositeNode::kChildNotFound);

int RqProjection::FindColumnIndex(int columnNumber) const {
  const int index = FindFirstColumn(
      *this, [columnNumber](const RqDerivedColumn& column) { return column.GetColumnNum() == columnNumber; });
  return index < GetNumColumns() ? index : kColumnNotFound;
}

int RqProjection::GetNextColumnNum() {
  // Columns that came without asking for a number may have taken those up to their count.
  if (m_nextColumnNumber < GetNumColumns()) m_nextColumnNumber = GetNumColumns();
  return ++m_nextColumnNumber;
}

void RqProjection::ReSyncColumnNumGenerator(int columnNum) {
  m_nextColumnNumber = std::max<std::int32_t>(m_nextColumnNumber, columnNum);
}

bool RqProjection::IsEquivalent(const RqProjection& rhs) const {
  if (GetObjectType() != rhs.GetObjectType() || GetNumColumns() != rhs.GetNumColumns()) return false;
  const RqEquivalence equivalence;
  for (int i = 0; i < GetNumColumns(); ++i) {
    const RqExpr* const pMine = ExprOf(GetIthColumn(i));
    const RqExpr* const pOthers = ExprOf(rhs.GetIthColumn(i));
    if (!pMine != !pOthers || (pMine && !equivalence(*pMine, *pOthers))) return false;
  }
  return true;
}

void RqProjection::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_nextColumnNumber);
}

const_iterator RqProjection::FromByteVector(const_iterator start) {
  return DataBlobUtil::FromByteVector(RqNodeImpl::FromByteVector(start), m_nextColumnNumber);
}
