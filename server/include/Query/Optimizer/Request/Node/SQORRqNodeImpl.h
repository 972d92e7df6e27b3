#pragma once

#include <type_traits>

#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.h"
#include "Query/Optimizer/Request/Node/SQORRqNode.h"

/// Gives a concrete class its kind, its copies and its Accept, so that the class holds only what is its own. Derived
/// needs a constructor (const Derived&, bool bNewIDs, bool bDeepCopy); one without fields says
/// `using RqNodeImpl::RqNodeImpl;`. Expressions get the form below SQORRqExpr.h.
template <class Derived, class Base, RqNodeType_e kKind>
class RqNodeImpl : public Base {
 public:
  static constexpr RqNodeType_e kObjectType = kKind;

  using Base::Base;
  RqNodeImpl() = default;
  RqNodeImpl(const RqNodeImpl& rhs, bool bNewIDs, bool bDeepCopy) : Base(rhs, bNewIDs, bDeepCopy) {}

  RqNodeType_e GetObjectType() const override { return kKind; }

  RqNode* DeepCopy(bool bNewIDs) const override {
    static_assert(std::is_same_v<typename RqNodeTraits<kKind>::Class, Derived>, "the catalogue has another class here");
    return new Derived(static_cast<const Derived&>(*this), bNewIDs, true);
  }

  bool Accept(AVisitorRqNode& visitor) override {
    return visitor.Visit(static_cast<typename RqNodeTraits<kKind>::VisitedAs&>(static_cast<Derived&>(*this)));
  }

 private:
  [[no_unique_address]] RqNode::KindMark<kKind> m_kindMark{this};
};
