#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"

#include <algorithm>

RqExprColumnListOrdered::RqExprColumnListOrdered(RqExprVector& columns) { TakeOperands(columns); }

bool RqExprColumnListOrdered::HasEquivalentMember(const RqExpr& expr) const {
  const RqEquivalence equivalence;
  for (int i = 0; i < GetNumColumns(); ++i) {
    const RqExpr* const pColumn = GetIthColumn(i);
    if (pColumn && equivalence(*pColumn, expr)) return true;
  }
  return false;
}

bool RqExprColumnListOrdered::IsAlwaysNull() const {
  for (int i = 0; i < GetNumColumns(); ++i) {
    const RqExpr* const pColumn = GetIthColumn(i);
    if (pColumn && !pColumn->IsAlwaysNull()) return false;
  }
  return GetNumColumns() > 0;
}

RqExprColumnList::RqExprColumnList(RqExprVector& columns, bool dropConstants, bool sortColumns) {
  Init(columns, dropConstants, sortColumns);
}

void RqExprColumnList::Init(RqExprVector& columns, bool dropConstants, bool sortColumns) {
  OwnedRqExprVector donated;
  donated.swap(columns);

  // Columns that stay come to the front in the order they had; the others are deleted with the vector.
  RqExprSet distinct;
  auto keptEnd = donated.begin();
  for (auto it = donated.begin(); it != donated.end(); ++it) {
    const bool bDropped = dropConstants && *it && (*it)->IsConstant();
    if (!bDropped && distinct.insert(*it).second) std::iter_swap(keptEnd++, it);
  }
  if (sortColumns) std::copy(distinct.begin(), distinct.end(), donated.begin());

  for (auto it = donated.begin(); it != keptEnd; ++it) {
    AddChild(*it);
    *it = nullptr;
  }
}

void RqExprColumnList::Replace(RqNode* pReplacement, RqNode& releaseContainer) {
  RqNodeImpl::Replace(pReplacement, releaseContainer);
  if (pReplacement && pReplacement->GetObjectType() == kRqExprColumnList) {
    ReplaceSmartPtrReferences(static_cast<RqExprColumnList*>(pReplacement));
  }
}
