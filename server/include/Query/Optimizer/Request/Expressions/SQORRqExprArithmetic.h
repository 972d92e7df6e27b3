#pragma once

#include <utility>

#include "Query/Optimizer/Request/Expressions/SQORRqExprScalar.h"

// Arithmetic and the functions of numbers.

/// An operator between two operands, neither of which is null. If it commutes, the operand that sorts first is stored
/// left, aggregates by their share base first, so that a + b and b + a are one form; equal operands change places.
template <class Derived, RqNodeType_e kKind, bool kCommutes>
class RqBinaryOperator : public RqNodeImpl<Derived, RqExpr, kKind> {
 public:
  enum { kLeftOperand, kRightOperand, kNumOperands };

  using RqNodeImpl<Derived, RqExpr, kKind>::RqNodeImpl;
  RqBinaryOperator() = default;
  RqBinaryOperator(RqExpr* pLeft, RqExpr* pRight) {
    KX_ASSERT(pLeft);
    KX_ASSERT(pRight);
    if (kCommutes && !pLeft->IsLessThan(*pRight, RqShallowLessThanShareBase())) std::swap(pLeft, pRight);
    this->AddChild(pLeft);
    this->AddChild(pRight);
  }
};

/// left + right
class RqExprAdd final : public RqBinaryOperator<RqExprAdd, kRqExprAdd, true> {
 public:
  using RqBinaryOperator::RqBinaryOperator;
};

/// left - right
class RqExprSubtract final : public RqBinaryOperator<RqExprSubtract, kRqExprSubtract, false> {
 public:
  using RqBinaryOperator::RqBinaryOperator;
};

/// left * right
class RqExprMultiply final : public RqBinaryOperator<RqExprMultiply, kRqExprMultiply, true> {
 public:
  using RqBinaryOperator::RqBinaryOperator;
};

/// left / right
class RqExprDivide final : public RqBinaryOperator<RqExprDivide, kRqExprDivide, false> {
 public:
  using RqBinaryOperator::RqBinaryOperator;
};

/// -operand
class RqExprUnaryMinus final : public RqScalarFunction<RqExprUnaryMinus, kRqExprUnaryMinus, RqOneOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

// ---------------------------------------------------------------------------------------------------------------------
// Functions of one number

/// e to the power of the operand.
class RqExprExp final : public RqScalarFunction<RqExprExp, kRqExprExp, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The operand times itself.
class RqExprSquare final : public RqScalarFunction<RqExprSquare, kRqExprSquare, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The square root.
class RqExprSqrt final : public RqScalarFunction<RqExprSqrt, kRqExprSqrt, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The least integer that is not below the operand.
class RqExprCeil final : public RqScalarFunction<RqExprCeil, kRqExprCeil, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The greatest integer that is not above the operand.
class RqExprFloor final : public RqScalarFunction<RqExprFloor, kRqExprFloor, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// -1, 0 or 1.
class RqExprSign final : public RqScalarFunction<RqExprSign, kRqExprSign, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The operand without its sign.
class RqExprAbs final : public RqScalarFunction<RqExprAbs, kRqExprAbs, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The natural logarithm.
class RqExprLog final : public RqScalarFunction<RqExprLog, kRqExprLog, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The logarithm to base 10.
class RqExprLog10 final : public RqScalarFunction<RqExprLog10, kRqExprLog10, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// An angle in radians, in degrees.
class RqExprDegrees final : public RqScalarFunction<RqExprDegrees, kRqExprDegrees, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// An angle in degrees, in radians.
class RqExprRadians final : public RqScalarFunction<RqExprRadians, kRqExprRadians, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

// Angles are in radians.

/// The sine.
class RqExprSin final : public RqScalarFunction<RqExprSin, kRqExprSin, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The cosine.
class RqExprCos final : public RqScalarFunction<RqExprCos, kRqExprCos, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The tangent.
class RqExprTan final : public RqScalarFunction<RqExprTan, kRqExprTan, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The cotangent.
class RqExprCot final : public RqScalarFunction<RqExprCot, kRqExprCot, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The angle of a sine.
class RqExprAsin final : public RqScalarFunction<RqExprAsin, kRqExprAsin, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The angle of a cosine.
class RqExprAcos final : public RqScalarFunction<RqExprAcos, kRqExprAcos, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The angle of a tangent.
class RqExprAtan final : public RqScalarFunction<RqExprAtan, kRqExprAtan, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The hyperbolic sine.
class RqExprSinh final : public RqScalarFunction<RqExprSinh, kRqExprSinh, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The hyperbolic cosine.
class RqExprCosh final : public RqScalarFunction<RqExprCosh, kRqExprCosh, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The hyperbolic tangent.
class RqExprTanh final : public RqScalarFunction<RqExprTanh, kRqExprTanh, RqFirstOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// A random number, another in each row. Without a seed there is no slot for it.
class RqExprRand final : public RqScalarFunction<RqExprRand, kRqExprRand, RqFirstOperand> {
 public:
  RqExprRand() = default;
  explicit RqExprRand(RqExpr* pSeed) {
    if (pSeed) AddChild(pSeed);
  }
  RqExprRand(const RqExprRand& rhs, bool bNewIDs, bool bDeepCopy) : RqScalarFunction(rhs, bNewIDs, bDeepCopy) {}

  bool IsConstant() const override { return false; }
};

// ---------------------------------------------------------------------------------------------------------------------
// Functions of two numbers

/// The first operand to the power of the second.
class RqExprPow final : public RqScalarFunction<RqExprPow, kRqExprPow, RqTwoOperands> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The first operand to as many decimal places as the second says; to none if that is null.
class RqExprRound final : public RqScalarFunction<RqExprRound, kRqExprRound, RqTwoOperands, 1> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// As RqExprRound, with the places behind cut off.
class RqExprTruncate final : public RqScalarFunction<RqExprTruncate, kRqExprTruncate, RqTwoOperands, 1> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The remainder of the first operand divided by the second.
class RqExprMod final : public RqScalarFunction<RqExprMod, kRqExprMod, RqTwoOperands> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The remainder of a division of floating-point numbers.
class RqExprModf final : public RqScalarFunction<RqExprModf, kRqExprModf, RqTwoOperands> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The angle of the point whose ordinate is the first operand and whose abscissa is the second.
class RqExprAtan2 final : public RqScalarFunction<RqExprAtan2, kRqExprAtan2, RqTwoOperands> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The bit of the first operand that the second numbers.
class RqExprExtractBit final : public RqScalarFunction<RqExprExtractBit, kRqExprExtractBit, RqTwoOperands> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

// ---------------------------------------------------------------------------------------------------------------------
// Functions without operands

/// The number pi.
class RqExprPi final : public RqScalarFunction<RqExprPi, kRqExprPi, RqNoOperands> {
 public:
  using RqScalarFunction::RqScalarFunction;
  bool IsConstant() const override { return true; }
};
