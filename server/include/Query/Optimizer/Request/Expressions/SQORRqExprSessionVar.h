#pragma once

#include <cstdint>

#include "Host/KXString.h"
#include "Host/PropertyValue.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"

using OwnedPropertyValue = Heap<PropertyValue>;

/// The variable that a request may leave as a call to be replaced later.
extern const KXString g_sessionVarSkipReplacement;

/// A variable of the session, named by its block and its name. Its value is fixed during a request.
class RqExprSessionVar final : public RqNodeImpl<RqExprSessionVar, RqExpr, kRqExprSessionVar> {
 public:
  /// The index of a variable that is taken as a whole, whatever the number of its values.
  static constexpr int kNoIndex = -1;

  RqExprSessionVar() = default;
  explicit RqExprSessionVar(const KXStringPair& sessionVar, int byIndex = kNoIndex)
      : m_byIndex(byIndex), m_sessionVar(sessionVar) {}
  RqExprSessionVar(const RqExprSessionVar& rhs, bool bNewIDs, bool bDeepCopy);

  /// The value as the gateway's session has it, never null. Without one there, in this order: the value of the lookup
  /// bundle that the variable stands for; the placeholder of a dual stream session; the call of a variable that is to
  /// be left in place. The last two need a live session. Raises ErrorMessage kMsgSessionVariableHasNoValue when none
  /// applies.
  virtual OwnedPropertyValue GetValue(ARpGateway* pRp) const;

  const KXStringPair& GetVarName() const { return m_sessionVar; }
  int GetByIndex() const { return m_byIndex; }

  /// The value of a variable of a lookup's bundle. False, with value as it was, unless the name says that it is one and
  /// this expression stands right under a lookup.
  bool GetVBLBundleSessionVariableIfItExists(Heap<PropertyValue>& value, ARpGateway* pRp) const;

  bool IsConstant() const override { return true; }
  /// Reads the value, and raises as GetValue does.
  bool IsNonZeroValue(ARpGateway* pRp) const override;
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  std::int32_t m_byIndex = kNoIndex;
  KXStringPair m_sessionVar;
};
