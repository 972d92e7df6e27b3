#include "Query/Optimizer/Request/Conditions/SQORInwardNegationForm.h"

#include <type_traits>

#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"

namespace {

/// A list of more values than this stays whole, as one atom.
constexpr int kMaxExpandedInValues = 512;

template <class Class>
Class* Copy(const Class& expr) {
  return static_cast<Class*>(expr.DeepExprCopy(false));
}

/// A copy of an operand; null for a null one.
RqExpr* CopyOperand(const RqExpr& expr, int i) {
  const RqExpr* const pOperand = expr.GetIthOperand(i);
  return pOperand ? Copy(*pOperand) : nullptr;
}

RqExprCond* MakeEquality(const RqExprCond& cond, bool bNullsAreEqual) {
  return new RqExprCondEquality(CopyOperand(cond, 0), CopyOperand(cond, 1), bNullsAreEqual);
}

/// The less of two operands of cond.
RqExprCond* MakeLess(const RqExprCond& cond, int lesser, int greater) {
  return new RqExprCondLess(CopyOperand(cond, lesser), CopyOperand(cond, greater));
}

RqExprCond* MakeConstant(bool bValue) {
  return new RqExprCondEquality(new RqExprIntegerLiteral(1, false), new RqExprIntegerLiteral(bValue ? 1 : 2, false),
                                false);
}

}  // namespace

template <class Derived>
bool NegationRewriter<Derived>::SetResult(RqExprCond* pResult) {
  Self().Result() = pResult;
  return true;
}

template <class Derived>
bool NegationRewriter<Derived>::SetAtom(RqExprCond* pAtom) {
  constexpr std::size_t kUsualAtoms = 16;
  RqExprVector& atoms = Self().Atoms();
  if (atoms.capacity() == 0) atoms.reserve(kUsualAtoms);
  atoms.push_back(pAtom);
  SetResult(pAtom);
  return true;
}

template <class Derived>
bool NegationRewriter<Derived>::SetAtom(RqExprCond* pAtom, bool bUnderNot) {
  return SetAtom(bUnderNot ? new RqExprCondNot(pAtom) : pAtom);
}

/// A condition whose negation is its own affair.
template <class Derived>
template <class Cond>
bool NegationRewriter<Derived>::SetNegatableCopy(const Cond& cond) {
  Cond* const pCopy = Copy(cond);
  if constexpr (Derived::kNegates) pCopy->Negate();
  return SetAtom(pCopy);
}

/// A condition of which nothing is known but that it is true, false or unknown.
template <class Derived>
bool NegationRewriter<Derived>::SetOpaqueCopy(const RqExprCond& cond) {
  return SetAtom(Copy(cond), Derived::kNegates);
}

/// Runs a visitor of its own on an operand. Its atoms go behind those that stand here.
template <class Derived>
template <class Rewriter>
RqExprCond* NegationRewriter<Derived>::Rewrite(RqExprCond& cond, bool bConvertCondIn) {
  Rewriter rewriter(bConvertCondIn);
  rewriter.Atoms().swap(Self().Atoms());
  cond.TourExpr(rewriter);
  rewriter.Atoms().swap(Self().Atoms());
  return rewriter.Result().Release();
}

template <class Derived>
template <class Junction>
bool NegationRewriter<Derived>::SetJunction(RqExprCond& left, RqExprCond& right) {
  // Wanted: a negated junction forgets that lists are to stay whole.
  const bool bConvertCondIn = Derived::kNegates || Self().m_bConvertCondIn;
  OwnedRqExprCondPtr newLeft(Rewrite<Derived>(left, bConvertCondIn));
  OwnedRqExprCondPtr newRight(Rewrite<Derived>(right, bConvertCondIn));
  return SetResult(new Junction(newLeft.Release(), newRight.Release()));
}

template <class Derived>
template <class Junction>
bool NegationRewriter<Derived>::SetExpandedIn(const RqExpr& search, const RqExpr& values, bool bUnderNot) {
  const int numValues = values.GetNumOperands();
  OwnedRqExprCondPtr result;
  for (int i = 0; i < numValues; ++i) {
    SetAtom(new RqExprCondEquality(Copy(search), CopyOperand(values, i), false), bUnderNot);
    result = Junction::Concatenate(result.Release(), Self().Result().Release());
  }
  return SetResult(result.Release());
}

template <class Derived>
bool NegationRewriter<Derived>::Visit(RqExprCondEquality& cond) {
  if constexpr (Derived::kNegates) return SetOpaqueCopy(cond);
  return SetAtom(MakeEquality(cond, cond.AreNullsEqual()));
}

template <class Derived>
bool NegationRewriter<Derived>::Visit(RqExprCondNotEqual& cond) {
  return SetAtom(MakeEquality(cond, false), !Derived::kNegates);
}

template <class Derived>
bool NegationRewriter<Derived>::Visit(RqExprCondLess& cond) {
  return SetOpaqueCopy(cond);
}

template <class Derived>
bool NegationRewriter<Derived>::Visit(RqExprCondLessEqual& cond) {
  return SetAtom(MakeLess(cond, RqExprCondLessEqual::kRightOperand, RqExprCondLessEqual::kLeftOperand),
                 !Derived::kNegates);
}

template <class Derived>
bool NegationRewriter<Derived>::Visit(RqExprCondGreater& cond) {
  return SetAtom(MakeLess(cond, RqExprCondGreater::kRightOperand, RqExprCondGreater::kLeftOperand), Derived::kNegates);
}

template <class Derived>
bool NegationRewriter<Derived>::Visit(RqExprCondGreaterEqual& cond) {
  return SetAtom(MakeLess(cond, RqExprCondGreaterEqual::kLeftOperand, RqExprCondGreaterEqual::kRightOperand),
                 !Derived::kNegates);
}

template <class Derived>
bool NegationRewriter<Derived>::Visit(RqExprCondAnd& cond) {
  using Junction = std::conditional_t<Derived::kNegates, RqExprCondOr, RqExprCondAnd>;
  return SetJunction<Junction>(*cond.GetLeftCond(), *cond.GetRightCond());
}

template <class Derived>
bool NegationRewriter<Derived>::Visit(RqExprCondOr& cond) {
  using Junction = std::conditional_t<Derived::kNegates, RqExprCondAnd, RqExprCondOr>;
  return SetJunction<Junction>(*cond.GetLeftCond(), *cond.GetRightCond());
}

template <class Derived>
bool NegationRewriter<Derived>::Visit(RqExprCondNot& cond) {
  using Opposite = std::conditional_t<Derived::kNegates, InwardNegationForm, NegateCondExpr>;
  RqExprCond& inner = *cond.GetInnerOperand();
  if (!inner.IsCanonicalAtomicPredicate()) return SetResult(Rewrite<Opposite>(inner, Self().m_bConvertCondIn));
  if constexpr (Derived::kNegates) return SetAtom(Copy(inner));
  return SetAtom(Copy(cond));
}

template <class Derived>
bool NegationRewriter<Derived>::Visit(RqExprCondIsNull& cond) {
  return SetNegatableCopy(cond);
}

template <class Derived>
bool NegationRewriter<Derived>::Visit(RqExprCondLike& cond) {
  return SetNegatableCopy(cond);
}

template <class Derived>
bool NegationRewriter<Derived>::Visit(RqExprEvaluatePredicate& cond) {
  return SetNegatableCopy(cond);
}

/// x between l and h  =>  not x < l and not h < x;  negated:  x < l or h < x. The low side is the first atom.
template <class Derived>
bool NegationRewriter<Derived>::Visit(RqExprCondBetween& cond) {
  const bool bUnderNot = cond.IsNegated() == Derived::kNegates;
  SetAtom(MakeLess(cond, RqExprCondBetween::kOperand, RqExprCondBetween::kLowOperand), bUnderNot);
  OwnedRqExprCondPtr low(Self().Result().Release());
  SetAtom(MakeLess(cond, RqExprCondBetween::kHighOperand, RqExprCondBetween::kOperand), bUnderNot);
  OwnedRqExprCondPtr high(Self().Result().Release());
  if (bUnderNot) return SetResult(new RqExprCondAnd(low.Release(), high.Release()));
  return SetResult(new RqExprCondOr(low.Release(), high.Release()));
}

/// x in (v1, v2)  =>  x = v1 or x = v2;  negated:  not x = v1 and not x = v2. Without values it is a constant. What is
/// no list, or too long a one, or not to be expanded, stays whole.
template <class Derived>
bool NegationRewriter<Derived>::Visit(RqExprCondIn& cond) {
  const bool bNegated = cond.IsNegated() != Derived::kNegates;
  const auto* const pValues = dynamic_cast<const RqExprColumnList*>(cond.GetIthOperand(RqExprCondIn::kInValues));
  if (!pValues) return SetNegatableCopy(cond);
  const int numValues = pValues->GetNumColumns();
  if (numValues == 0) return SetAtom(MakeConstant(bNegated));
  if (!Self().m_bConvertCondIn || numValues > kMaxExpandedInValues) return SetNegatableCopy(cond);
  const RqExpr& search = *cond.GetIthOperand(RqExprCondIn::kSearchExpr);
  if (bNegated) return SetExpandedIn<RqExprCondAnd>(search, *pValues, true);
  return SetExpandedIn<RqExprCondOr>(search, *pValues, false);
}

template <class Derived>
bool NegationRewriter<Derived>::Visit(RqExprCondMultiColumnIn& cond) {
  // Wanted: no caller negates one, and if it happens the column list below ends the process.
  if constexpr (Derived::kNegates) return AVisitorRqExprCond::Visit(cond);
  return SetAtom(Copy(cond));
}

template class NegationRewriter<InwardNegationForm>;
template class NegationRewriter<NegateCondExpr>;

/// Law: an And has at most the sum of the clauses of its operands, an Or their product.
///      In the dual form it is the other way round, and a Not turns one form into the other.
/// Wanted: an In counts its values in the dual form alone, and its own negation is not looked at.
std::uint32_t InwardNegationForm::CheckComplexityScore(const RqExprCond* cond, bool bNegated, std::uint32_t& limit) {
  KXThread::LowStackCheck(0);
  if (!cond) return 1;
  const RqNodeType_e type = cond->GetKind();
  switch (type) {
    case kRqExprCondAnd:
    case kRqExprCondOr: {
      const auto* const pLeft = static_cast<const RqExprCond*>(cond->GetIthOperand(RqExprCondAnd::kLeftOperand));
      const std::uint32_t left = CheckComplexityScore(pLeft, bNegated, limit);
      if (left > limit) return left;
      const auto* const pRight = static_cast<const RqExprCond*>(cond->GetIthOperand(RqExprCondAnd::kRightOperand));
      const std::uint32_t right = CheckComplexityScore(pRight, bNegated, limit);
      if (right > limit) return right;
      return (type == kRqExprCondAnd) == bNegated ? left * right : left + right;
    }
    case kRqExprCondNot:
      return CheckComplexityScore(static_cast<const RqExprCondNot*>(cond)->GetInnerOperand(), !bNegated, limit);
    case kRqExprCondIn: {
      const RqExpr* const pValues = cond->GetIthOperand(RqExprCondIn::kInValues);
      if (!bNegated || !pValues || pValues->GetObjectType() != kRqExprColumnList) return 1;
      return static_cast<std::uint32_t>(pValues->GetNumOperands());
    }
    default:
      return 1;
  }
}
