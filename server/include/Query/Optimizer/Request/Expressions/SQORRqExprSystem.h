#pragma once

#include <cstdint>

#include "Host/KXDataType.h"
#include "Host/KXString.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprScalar.h"

// What the server or the database knows: about the session, about a row, and by functions of the database's own.

/// The name of the database.
class RqExprDatabase final : public RqScalarFunction<RqExprDatabase, kRqExprDatabase, RqNoOperands> {
 public:
  using RqScalarFunction::RqScalarFunction;
  bool IsConstant() const override { return true; }
};

/// The name of the user.
class RqExprUser final : public RqScalarFunction<RqExprUser, kRqExprUser, RqNoOperands> {
 public:
  using RqScalarFunction::RqScalarFunction;
  bool IsConstant() const override { return true; }
};

/// The column that an index chooses from a list. No slot is named: index and columns are added as children, and there
/// may be any number of them.
class RqExprIndexCol final : public RqScalarFunction<RqExprIndexCol, kRqExprIndexCol, RqNoOperands> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The number of a row where it is stored.
class RqExprRowID final : public RqScalarFunction<RqExprRowID, kRqExprRowID, RqNoOperands> {
 public:
  using RqScalarFunction::RqScalarFunction;
  bool IsConstant() const override { return false; }
};

/// A column of a row by its number.
class RqExprExtract final : public RqScalarWithFields<RqExprExtract, kRqExprExtract, RqNoOperands> {
 public:
  explicit RqExprExtract(int columnNumber) : columnNumber_(columnNumber) {}
  RqExprExtract(const RqExprExtract& rhs, bool bNewIDs, bool bDeepCopy)
      : RqScalarWithFields(rhs, bNewIDs, bDeepCopy), columnNumber_(rhs.columnNumber_) {}

  int GetColumnNumber() const { return columnNumber_; }

 private:
  friend RqScalarWithFields;
  std::int32_t columnNumber_;

  static constexpr std::tuple kComparedFields{&RqExprExtract::columnNumber_};
  static constexpr std::tuple kOrderedFields = kComparedFields;
  static constexpr std::tuple kWrittenFields = kComparedFields;
};

/// A function that only the target database knows, named by its text there, over any number of operands.
class RqExprEvaluate final : public RqScalarFunction<RqExprEvaluate, kRqExprEvaluate, RqNoOperands> {
 public:
  RqExprEvaluate() = default;
  /// Takes the expressions and leaves the vector empty.
  RqExprEvaluate(const KXString& functionDef, RqExprVector& exprs) : m_functionDef(functionDef) { TakeOperands(exprs); }
  RqExprEvaluate(const RqExprEvaluate& rhs, bool bNewIDs, bool bDeepCopy);

  const KXString& GetFunctionDef() const { return m_functionDef; }
  void SetFunctionDef(const KXString& functionDef) { m_functionDef = functionDef; }

  // None of the following takes part in comparison or travels.

  /// The expression that the text is made of, if it was given as one. It is this node's, and no operand; a copy has its
  /// own.
  RqExpr* GetMicroExpr() { return m_microExpr.Get(); }
  const RqExpr* GetMicroExpr() const { return m_microExpr.Get(); }
  void SetMicroExpr(OwnedRqExprPtr microExpr) { m_microExpr = microExpr; }
  /// The type that the result keeps.
  const KXTypeInfo& GetStickyType() const { return m_stickyType; }
  void SetStickyType(const KXTypeInfo& stickyType) { m_stickyType = stickyType; }
  /// Whether the function was given a name by a user.
  bool IsUserDefinedFunction() const { return !m_userDefinedFuncName.empty(); }
  const KXString& GetUserDefinedFuncName() const { return m_userDefinedFuncName; }
  void SetUserDefinedFuncName(const KXString& funcName) { m_userDefinedFuncName = funcName; }
  /// What the text says about the types of its arguments.
  const KXStringVector& GetTypingParams() const { return m_typingParams; }
  void SetTypingParams(const KXStringVector& typingParams) { m_typingParams = typingParams; }

  bool IsTargetOnlyExpr() const override { return true; }
  bool IsConstant() const override { return false; }
  bool IsNavigationConstant() const override { return false; }
  /// The function text counts without regard to case.
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  /// Wanted: the function text comes before what the base writes.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  OwnedRqExprPtr m_microExpr;
  KXTypeInfo m_stickyType;
  KXString m_functionDef;
  KXString m_userDefinedFuncName;
  KXStringVector m_typingParams;
};
