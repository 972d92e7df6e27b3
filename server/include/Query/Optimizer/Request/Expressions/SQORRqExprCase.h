#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "Host/KXDataType.h"
#include "Host/KXString.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprScalar.h"

// Choices between values, and the cast.

/// When and then, owned by whoever is said to take them.
using RqExprPairVector = std::vector<std::pair<RqExpr*, RqExpr*>>;

struct RqLookupCaseOperands {
  enum { kKey, kDefaultReturnValue, kNumOperands, kFirstLookupEntry = kNumOperands };
};
/// The value of the first entry whose key equals the key looked for; without one the default, or null where that is
/// null. Entry i has its key in slot 2i + 2 and its value behind it.
class RqExprLookupCase final : public RqScalarFunction<RqExprLookupCase, kRqExprLookupCase, RqLookupCaseOperands, 1> {
 public:
  using RqScalarFunction::RqScalarFunction;
  /// Takes the entries, each a key and a value and neither null, and leaves the vector empty.
  RqExprLookupCase(RqExpr* pKey, RqExpr* pDefaultReturnValue, RqExprPairVector& entries);

  RqExpr* GetKeyValue() { return GetIthOperand(kKey); }
  const RqExpr* GetKeyValue() const { return GetIthOperand(kKey); }
  RqExpr* GetDefaultReturnValue() { return GetIthOperand(kDefaultReturnValue); }
  const RqExpr* GetDefaultReturnValue() const { return GetIthOperand(kDefaultReturnValue); }
  int GetNumLookupEntries() const { return std::max(GetNumOperands() - kFirstLookupEntry, 0) / 2; }
  RqExpr* GetIthEntryKey(int i) { return GetIthOperand(KeySlot(i)); }
  const RqExpr* GetIthEntryKey(int i) const { return GetIthOperand(KeySlot(i)); }
  RqExpr* GetIthEntryValue(int i) { return GetIthOperand(KeySlot(i) + 1); }
  const RqExpr* GetIthEntryValue(int i) const { return GetIthOperand(KeySlot(i) + 1); }
  /// Takes the value and deletes the one that stands.
  void SetIthEntryValue(int i, RqExpr* pValue) { SetIthOperand(KeySlot(i) + 1, pValue); }

 private:
  static int KeySlot(int i) { return kFirstLookupEntry + 2 * i; }
};

struct RqIfCaseOperands {
  enum { kDefaultReturnValue, kNumOperands, kFirstIfCond = kNumOperands };
};
/// The value of the first pair whose condition is true; without one the default, or null where that is null. Pair i has
/// its condition in slot 2i + 1 and its value behind it.
class RqExprIfCase final : public RqScalarWithFields<RqExprIfCase, kRqExprIfCase, RqIfCaseOperands, 0> {
 public:
  RqExprIfCase() = default;
  /// Takes the pairs, each a condition and a value and neither null, and leaves the vector empty.
  RqExprIfCase(RqExpr* pDefaultReturnValue, RqExprPairVector& whenThenPairs);
  RqExprIfCase(const RqExprIfCase& rhs, bool bNewIDs, bool bDeepCopy)
      : RqScalarWithFields(rhs, bNewIDs, bDeepCopy), m_bAddedInHDSRewrite(rhs.m_bAddedInHDSRewrite) {}

  RqExpr* GetDefaultReturnValue() { return GetIthOperand(kDefaultReturnValue); }
  const RqExpr* GetDefaultReturnValue() const { return GetIthOperand(kDefaultReturnValue); }
  int GetNumWhenThenPairs() const { return std::max(GetNumOperands() - kFirstIfCond, 0) / 2; }
  RqExpr* GetIthEntryCond(int i) { return GetIthOperand(CondSlot(i)); }
  const RqExpr* GetIthEntryCond(int i) const { return GetIthOperand(CondSlot(i)); }
  RqExpr* GetIthEntryValue(int i) { return GetIthOperand(CondSlot(i) + 1); }
  const RqExpr* GetIthEntryValue(int i) const { return GetIthOperand(CondSlot(i) + 1); }
  /// Puts a pair behind those that stand. The first one must be a condition.
  void AddNewWhenThenPair(OwnedRqExprPtr cond, OwnedRqExprPtr value);

  /// Whether a rewrite of a query over external data made it. Takes no part in comparison.
  bool IsAddedInHDSRewrite() const { return m_bAddedInHDSRewrite; }
  void SetAddedInHDSRewrite(bool bAdded) { m_bAddedInHDSRewrite = bAdded; }

 private:
  friend RqScalarWithFields;
  static int CondSlot(int i) { return kFirstIfCond + 2 * i; }

  bool m_bAddedInHDSRewrite = false;

  static constexpr std::tuple kWrittenFields{&RqExprIfCase::m_bAddedInHDSRewrite};
};

struct RqNullIfOperands {
  enum { kExprOperand1, kExprOperand2, kNumOperands };
};
/// The first operand, or null where it equals the second.
class RqExprNullIf final : public RqScalarFunction<RqExprNullIf, kRqExprNullIf, RqNullIfOperands> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

struct RqIfNullOperands {
  enum { kExpressionOperand, kValueOperand, kNumOperands };
};
/// The expression, or the value where it is null.
class RqExprIfNull final : public RqScalarFunction<RqExprIfNull, kRqExprIfNull, RqIfNullOperands> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The first of any number of expressions that is not null. No field takes part in comparison, and the sticky type does
/// not travel.
class RqExprCoalesce final : public RqScalarWithFields<RqExprCoalesce, kRqExprCoalesce, RqNoOperands> {
 public:
  RqExprCoalesce() = default;
  /// Takes the expressions, none of them null, and leaves the vector empty.
  explicit RqExprCoalesce(RqExprVector& valueExprs, bool bCreatedForJoin = false);
  RqExprCoalesce(const RqExprCoalesce& rhs, bool bNewIDs, bool bDeepCopy)
      : RqScalarWithFields(rhs, bNewIDs, bDeepCopy),
        m_bCreatedForJoin(rhs.m_bCreatedForJoin),
        m_stickyType(rhs.m_stickyType),
        m_bAddedInHDSRewrite(rhs.m_bAddedInHDSRewrite) {}

  RqExpr* GetIthValueExpr(int i) { return GetIthOperand(i); }
  const RqExpr* GetIthValueExpr(int i) const { return GetIthOperand(i); }
  int GetNumValueExprs() const { return GetNumOperands(); }
  void AddValueExpr(OwnedRqExprPtr valueExpr);

  /// Whether it unites the columns over which an outer join joins.
  bool IsCreatedForJoin() const { return m_bCreatedForJoin; }
  void SetCreatedForJoin(bool bCreatedForJoin) { m_bCreatedForJoin = bCreatedForJoin; }
  /// The type that the result keeps, whatever its expressions become.
  const KXTypeInfo& GetStickyType() const { return m_stickyType; }
  void SetStickyType(const KXTypeInfo& stickyType) { m_stickyType = stickyType; }
  /// As RqExprIfCase::IsAddedInHDSRewrite.
  bool IsAddedInHDSRewrite() const { return m_bAddedInHDSRewrite; }
  void SetAddedInHDSRewrite(bool bAdded) { m_bAddedInHDSRewrite = bAdded; }

 private:
  friend RqScalarWithFields;
  bool m_bCreatedForJoin = false;
  KXTypeInfo m_stickyType;
  bool m_bAddedInHDSRewrite = false;

  static constexpr std::tuple kWrittenFields{&RqExprCoalesce::m_bCreatedForJoin, &RqExprCoalesce::m_bAddedInHDSRewrite};
};

/// The operand as a value of another type. Wanted: casts that differ in their scale alone are equivalent, but not tied
/// in the order; so a set keeps both.
class RqExprCast final : public RqScalarWithFields<RqExprCast, kRqExprCast, RqOneOperand> {
 public:
  RqExprCast() = default;
  /// Precision and scale mean what they mean in KXTypeInfo; where they are negative none is given.
  RqExprCast(RqExpr* pOperand, KXDataType toDataType, std::int32_t precision, std::int32_t scale)
      : RqScalarWithFields(pOperand), m_toDataType(toDataType), m_precision(precision), m_scale(scale) {}
  RqExprCast(const RqExprCast& rhs, bool bNewIDs, bool bDeepCopy)
      : RqScalarWithFields(rhs, bNewIDs, bDeepCopy),
        m_toDataType(rhs.m_toDataType),
        m_precision(rhs.m_precision),
        m_scale(rhs.m_scale),
        m_dateTimeFormat(rhs.m_dateTimeFormat) {}

  KXDataType GetToDataType() const { return m_toDataType; }
  std::int32_t GetPrecision() const { return m_precision; }
  std::int32_t GetScale() const { return m_scale; }
  /// How a date or a time is written as text; empty for the usual way.
  const KXString& GetDateTimeFormat() const { return m_dateTimeFormat; }
  void SetDateTimeFormat(const KXString& format) { m_dateTimeFormat = format; }

  /// Whether values are cast to the type. To any other, a cast has no text.
  static bool IsCastType(KXDataType type);

  bool IsAlwaysNull() const override;
  /// Under a BoundedRead a type that values are not cast to raises ErrorMessage.
  const_iterator FromByteVector(const_iterator start) override;

 private:
  friend RqScalarWithFields;
  KXDataType m_toDataType = KXUnknown;
  std::int32_t m_precision = 0;
  std::int32_t m_scale = 0;
  KXString m_dateTimeFormat;

  static constexpr std::tuple kComparedFields{&RqExprCast::m_toDataType, &RqExprCast::m_precision,
                                              &RqExprCast::m_dateTimeFormat};
  static constexpr std::tuple kOrderedFields{&RqExprCast::m_toDataType, &RqExprCast::m_precision, &RqExprCast::m_scale,
                                             &RqExprCast::m_dateTimeFormat};
  static constexpr std::tuple kWrittenFields{RqEnumField{&RqExprCast::m_toDataType, KXUnknown},
                                             &RqExprCast::m_precision, &RqExprCast::m_scale,
                                             &RqExprCast::m_dateTimeFormat};
};
