#pragma once

#include <concepts>
#include <cstdint>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "Host/KXAssert.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"
#include "Query/Optimizer/Request/Node/SQORRqFieldBytes.h"

// What the scalar operators and functions have in common. They hold operands for the text and for visitors that tell
// them apart; nothing here computes a value.
//
// Operand slots are named by an enumeration that ends in kNumOperands. A constructor takes its operands in the order of
// the slots, and what is no operand behind them. The default constructor makes the target of FromByteVector.

// The slots that several classes have.

struct RqNoOperands {
  enum { kNumOperands };
};
struct RqOneOperand {
  enum { kOperand, kNumOperands };
};
struct RqFirstOperand {
  enum { kFirstOperand, kNumOperands };
};
struct RqTwoOperands {
  enum { kFirstOperand, kSecondOperand, kNumOperands };
};
struct RqStringOperand {
  enum { kStringOperand, kNumOperands };
};

/// A function with the operands that Slots names, of which the first kNumRequired must be given. Where the others are
/// null there is no such argument; their slots stand all the same.
template <class Derived, RqNodeType_e kKind, class Slots, int kNumRequired = Slots::kNumOperands>
class RqScalarFunction : public RqNodeImpl<Derived, RqExpr, kKind>, public Slots {
 public:
  using RqNodeImpl<Derived, RqExpr, kKind>::RqNodeImpl;
  RqScalarFunction() = default;
  template <std::convertible_to<RqExpr*>... Operands>
  requires(sizeof...(Operands) > 0 &&
           sizeof...(Operands) == Slots::kNumOperands) explicit RqScalarFunction(Operands... operands) {
    int slot = 0;
    for (RqExpr* const pOperand : {static_cast<RqExpr*>(operands)...}) {
      KX_ASSERT(pOperand || slot >= kNumRequired);
      this->AddChild(pOperand);
      ++slot;
    }
  }
};

// ---------------------------------------------------------------------------------------------------------------------
// Fields

/// A function with fields. The class says which of them take part in what, by tuples of pointers to them: those that
/// equivalent functions have alike (kComparedFields), those that order functions of one kind, in their order
/// (kOrderedFields), and those that travel in the payload (kWrittenFields). A tuple that it does not give is empty.
template <class Derived, RqNodeType_e kKind, class Slots, int kNumRequired = Slots::kNumOperands>
class RqScalarWithFields : public RqScalarFunction<Derived, kKind, Slots, kNumRequired> {
  using Function = RqScalarFunction<Derived, kKind, Slots, kNumRequired>;

 public:
  using Function::Function;

  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override {
    if (!Function::IsEquivalent(rhs, pred)) return false;
    return Values(Self(), Derived::kComparedFields) ==
           Values(static_cast<const Derived&>(rhs), Derived::kComparedFields);
  }
  bool IsShallowLessThan(const RqExpr& rhs) const override {
    return IsShallowLessThanByKey(Self(), rhs,
                                  [](const Derived& expr) { return Values(expr, Derived::kOrderedFields); });
  }
  void ToByteVector(ByteVector& bv) override {
    Function::ToByteVector(bv);
    RqFieldBytes::Write(bv, Self(), Derived::kWrittenFields);
  }
  const_iterator FromByteVector(const_iterator start) override {
    return RqFieldBytes::Read(Function::FromByteVector(start), static_cast<Derived&>(*this), Derived::kWrittenFields);
  }

 protected:
  static constexpr std::tuple<> kComparedFields{};
  static constexpr std::tuple<> kOrderedFields{};
  static constexpr std::tuple<> kWrittenFields{};

 private:
  const Derived& Self() const { return static_cast<const Derived&>(*this); }

  template <class Fields>
  static auto Values([[maybe_unused]] const Derived& expr, const Fields& fields) {
    return std::apply([&](const auto&... pFields) { return std::tie(expr.*pFields...); }, fields);
  }
};
