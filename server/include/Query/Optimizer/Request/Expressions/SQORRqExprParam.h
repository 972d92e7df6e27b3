#pragma once

#include <cstdint>

#include "Host/KXDataType.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"

/// What the execution knows of the parameters of a query; not looked into here.
class ParameterControlBlock;

/// A parameter of a query, by its number. Parameters of one number are equivalent, whatever else they hold.
class RqExprParam final : public RqNodeImpl<RqExprParam, RqExpr, kRqExprParam> {
 public:
  explicit RqExprParam(int paramNumber) : m_paramNumber(paramNumber) {}
  /// The control block is lent and must outlive the node and its copies.
  RqExprParam(int paramNumber, ParameterControlBlock* pParamControlBlock)
      : m_paramNumber(paramNumber), m_paramControlBlock(pParamControlBlock) {}
  RqExprParam(const RqExprParam& rhs, bool bNewIDs, bool bDeepCopy);

  int GetParamNumber() const { return m_paramNumber; }
  const KXTypeInfo& GetTypeInfo() const { return m_typeInfo; }
  void SetTypeInfo(const KXTypeInfo& typeInfo) { m_typeInfo = typeInfo; }
  ParameterControlBlock* GetParamControlBlock() const { return m_paramControlBlock; }

  bool IsConstant() const override { return true; }
  bool IsParam() const override { return true; }
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  /// The type and the control block are left out.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  std::int32_t m_paramNumber;
  KXTypeInfo m_typeInfo;
  ParameterControlBlock* m_paramControlBlock = nullptr;
};
