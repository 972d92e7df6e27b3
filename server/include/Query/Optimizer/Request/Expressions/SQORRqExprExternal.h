#pragma once

#include <compare>
#include <cstdint>
#include <vector>

#include "Host/ExternalData.h"
#include "Host/ExternalScript.h"
#include "Host/KXDataType.h"
#include "Host/KXString.h"
#include "Host/TableIdentifier.h"
#include "Host/VoidID.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprScalar.h"

// Values that come from elsewhere: lookup tables, dictionaries, models, and data outside the repository.

/// A value looked up in a table by its keys, the operands. A dense lookup finds one for every row of keys; a sparse one
/// may not, and then gives its first operand. Wanted: neither the value nor the form takes part in the order of
/// expressions, so a set keeps the first of lookups that differ there alone.
class RqExprLookup final : public RqScalarFunction<RqExprLookup, kRqExprLookup, RqNoOperands> {
 public:
  RqExprLookup() = default;
  /// Takes the value, which may be null, and the operands, and leaves the vector empty.
  RqExprLookup(bool bDenseLookup, RqExpr* pValueExpr, RqExprVector& operands);
  RqExprLookup(const RqExprLookup& rhs, bool bNewIDs, bool bDeepCopy);

  bool IsDenseLookup() const { return isDenseLookup; }
  /// The column of the table that is asked for, or null. It is this node's, and no operand; a copy has its own.
  RqExpr* GetValueExpr() { return m_pValueExpr.Get(); }
  const RqExpr* GetValueExpr() const { return m_pValueExpr.Get(); }
  void SetValueExpr(OwnedRqExprPtr valueExpr) { m_pValueExpr = valueExpr; }

  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  /// The value travels as a tree of its own inside the payload.
  void ToByteVector(ByteVector& bv) override;
  /// Raises ErrorMessage where the value is no expression.
  const_iterator FromByteVector(const_iterator start) override;

 private:
  bool isDenseLookup = false;
  OwnedRqExprPtr m_pValueExpr;
};

struct RqHDSLookupOperands {
  enum { kGroupingEntity, kBindingExpression, kOptionalNameValuePairs, kNumOperands };
};
/// A value of external data, by the grouping that it belongs to and the expression that binds it.
class RqExprHDSLookup final : public RqScalarFunction<RqExprHDSLookup, kRqExprHDSLookup, RqHDSLookupOperands, 2> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The value behind a code of a dictionary of a native table. Wanted: table and dictionary take no part in the order of
/// expressions, as the value of RqExprLookup. The handle on the table neither counts nor travels; it must be set again.
class RqExprDictLookup final : public RqScalarWithFields<RqExprDictLookup, kRqExprDictLookup, RqFirstOperand> {
 public:
  RqExprDictLookup() = default;
  RqExprDictLookup(RqExpr* pCode, const RefCntTELMNativeTable& nativeTable, const TableIdentifier& tableIdentifier,
                   const KXString& dictionaryName)
      : RqScalarWithFields(pCode),
        m_nativeTable(nativeTable),
        m_tableIdentifier(tableIdentifier),
        m_dictionaryName(dictionaryName) {}
  RqExprDictLookup(const RqExprDictLookup& rhs, bool bNewIDs, bool bDeepCopy)
      : RqScalarWithFields(rhs, bNewIDs, bDeepCopy),
        m_nativeTable(rhs.m_nativeTable),
        m_tableIdentifier(rhs.m_tableIdentifier),
        m_dictionaryName(rhs.m_dictionaryName) {}

  const RefCntTELMNativeTable& GetRefCntTELMNativeTable() const { return m_nativeTable; }
  void SetRefCntTELMNativeTable(const RefCntTELMNativeTable& nativeTable) { m_nativeTable = nativeTable; }
  const TableIdentifier& GetTableIdentifier() const { return m_tableIdentifier; }
  const KXString& GetDictionaryName() const { return m_dictionaryName; }

 private:
  friend RqScalarWithFields;
  RefCntTELMNativeTable m_nativeTable;
  TableIdentifier m_tableIdentifier;
  KXString m_dictionaryName;

  static constexpr std::tuple kComparedFields{&RqExprDictLookup::m_tableIdentifier,
                                              &RqExprDictLookup::m_dictionaryName};
  static constexpr std::tuple kWrittenFields = kComparedFields;
};

struct RqJsonValueOperands {
  enum { kOperandPath, kOperandColumnValue, kNumOperands };
};
/// What stands at a path in a JSON text. No field travels.
class RqExprJsonValue final : public RqScalarWithFields<RqExprJsonValue, kRqExprJsonValue, RqJsonValueOperands, 1> {
 public:
  RqExprJsonValue() = default;
  RqExprJsonValue(RqExpr* pPath, RqExpr* pColumnValue, const KXTypeInfo& stickyType = KXTypeInfo())
      : RqScalarWithFields(pPath, pColumnValue), m_stickyType(stickyType) {}
  RqExprJsonValue(const RqExprJsonValue& rhs, bool bNewIDs, bool bDeepCopy)
      : RqScalarWithFields(rhs, bNewIDs, bDeepCopy),
        m_stickyType(rhs.m_stickyType),
        m_hdsPath(rhs.m_hdsPath),
        m_hdsTableName(rhs.m_hdsTableName) {}

  const KXTypeInfo& GetStickyType() const { return m_stickyType; }
  void SetStickyType(const KXTypeInfo& stickyType) { m_stickyType = stickyType; }
  /// Where the text comes from if it is external data; empty otherwise.
  const KXString& GetHDSPath() const { return m_hdsPath; }
  void SetHDSPath(const KXString& hdsPath) { m_hdsPath = hdsPath; }
  const KXString& GetHDSTableName() const { return m_hdsTableName; }
  void SetHDSTableName(const KXString& hdsTableName) { m_hdsTableName = hdsTableName; }

 private:
  friend RqScalarWithFields;
  KXTypeInfo m_stickyType;
  KXString m_hdsPath;
  KXString m_hdsTableName;

  static constexpr std::tuple kComparedFields{&RqExprJsonValue::m_stickyType, &RqExprJsonValue::m_hdsPath,
                                              &RqExprJsonValue::m_hdsTableName};
  static constexpr std::tuple kOrderedFields = kComparedFields;
};

/// What a model or a script of a data source makes of the operands, of which there may be any number.
class RqExprPredict final : public RqScalarWithFields<RqExprPredict, kRqExprPredict, RqNoOperands> {
 public:
  RqExprPredict() = default;
  /// The name is that of a script if bIsEvaluateScript says so, else that of a model. Takes the operands and leaves the
  /// vector empty.
  RqExprPredict(const VoidID& datasourceID, const KXString& name, bool bIsEvaluateScript, RqExprVector& operands)
      : m_DatasourceID(datasourceID), m_bIsEvaluateScript(bIsEvaluateScript) {
    (bIsEvaluateScript ? m_ScriptName : m_ModelName) = name;
    TakeOperands(operands);
  }
  RqExprPredict(const RqExprPredict& rhs, bool bNewIDs, bool bDeepCopy)
      : RqScalarWithFields(rhs, bNewIDs, bDeepCopy),
        m_DatasourceID(rhs.m_DatasourceID),
        m_ScriptName(rhs.m_ScriptName),
        m_ModelName(rhs.m_ModelName),
        m_ColumnType(rhs.m_ColumnType),
        m_DataBindings(rhs.m_DataBindings),
        m_Options(rhs.m_Options),
        m_bIsEvaluateScript(rhs.m_bIsEvaluateScript) {}

  const VoidID& GetDatasourceID() const { return m_DatasourceID; }
  const KXString& GetScriptName() const { return m_ScriptName; }
  void SetScriptName(const KXString& scriptName) { m_ScriptName = scriptName; }
  const KXString& GetModelName() const { return m_ModelName; }
  void SetModelName(const KXString& modelName) { m_ModelName = modelName; }
  /// The type of the result, by its name.
  const KXString& GetColumnType() const { return m_ColumnType; }
  void SetColumnType(const KXString& columnType) { m_ColumnType = columnType; }
  /// The names of the inputs, and the columns that they are bound to.
  const KXNodeVector<KXStringPair>& GetDataBindings() const { return m_DataBindings; }
  void SetDataBindings(const KXNodeVector<KXStringPair>& dataBindings) { m_DataBindings = dataBindings; }
  /// Names and values.
  const KXNodeVector<KXStringPair>& GetOptions() const { return m_Options; }
  void SetOptions(const KXNodeVector<KXStringPair>& options) { m_Options = options; }
  bool IsEvaluateScript() const { return m_bIsEvaluateScript; }

 private:
  friend RqScalarWithFields;
  VoidID m_DatasourceID;
  KXString m_ScriptName;
  KXString m_ModelName;
  KXString m_ColumnType;
  KXNodeVector<KXStringPair> m_DataBindings;
  KXNodeVector<KXStringPair> m_Options;
  bool m_bIsEvaluateScript = false;

  static constexpr std::tuple kComparedFields{&RqExprPredict::m_DatasourceID,     &RqExprPredict::m_ScriptName,
                                              &RqExprPredict::m_ModelName,        &RqExprPredict::m_ColumnType,
                                              &RqExprPredict::m_DataBindings,     &RqExprPredict::m_Options,
                                              &RqExprPredict::m_bIsEvaluateScript};
  static constexpr std::tuple kOrderedFields = kComparedFields;
  static constexpr std::tuple kWrittenFields{
      &RqExprPredict::m_DatasourceID, &RqExprPredict::m_ScriptName,        &RqExprPredict::m_ModelName,
      &RqExprPredict::m_ColumnType,   &RqExprPredict::m_bIsEvaluateScript, &RqExprPredict::m_DataBindings,
      &RqExprPredict::m_Options};
};

/// What is known of a column of external data. Ordered field by field.
struct RqExternalColumn {
  enum ExternalDataForm : std::uint32_t { kCSVData, kUnknownData };

  ExternalDataForm m_ExternalDataForm = kUnknownData;
  ExternalObjectReference m_ObjectReference;  ///< the data that it is a column of
  KXString m_CacheSharedKey;
  KXString m_ColumnName;
  KXTypeInfo m_ColumnTypeInfo;  ///< does not travel
  KXString m_AggrRule;          ///< the name of the aggregate by which it is summed up
  bool m_bIsVirtual = false;
  bool m_bIsForceVirtual = false;
  bool m_bIsOptionalVirtual = false;
  bool m_bIsSortKeyColumn = false;
  bool m_bIsDescriptorIDColumn = false;
  bool m_bScalarWithNoPath = false;
  bool m_bNeedsGrainCheck = false;
  bool m_bIsPrimaryKeyColumn = false;
  bool m_bIsLookupJoinColumn = false;
  bool m_bIsPresentWithIncomingQuery = false;
  KXNodeVector<ExternalJoiningIndex> m_ExternalJoiningIndexVector;

  friend auto operator<=>(const RqExternalColumn&, const RqExternalColumn&) = default;
};

struct RqExternalDataOperands {
  enum {
    kConformsToExpr,
    kConformsToEntityExprs,
    kConformsToColumnExprs,
    kDerivedColumnExpr,
    kSourceExpr,
    kNumOperands
  };
};
/// A column of external data, and what it conforms to in the business model; any operand may be null. The column and
/// the script that makes it, if one does, take part in comparison; the script does not travel.
class RqExprExternalData final
    : public RqScalarFunction<RqExprExternalData, kRqExprExternalData, RqExternalDataOperands, 0>,
      private RqExternalColumn {
 public:
  using RqExternalColumn::ExternalDataForm;
  using RqExternalColumn::kCSVData;
  using RqExternalColumn::kUnknownData;

  RqExprExternalData() = default;
  RqExprExternalData(RqExpr* pConformsToExpr, RqExpr* pConformsToEntityExprs, RqExpr* pConformsToColumnExprs,
                     RqExpr* pDerivedColumnExpr, RqExpr* pSourceExpr, const RqExternalColumn& column)
      : RqScalarFunction(pConformsToExpr, pConformsToEntityExprs, pConformsToColumnExprs, pDerivedColumnExpr,
                         pSourceExpr),
        RqExternalColumn(column) {}
  RqExprExternalData(const RqExprExternalData& rhs, bool bNewIDs, bool bDeepCopy)
      : RqScalarFunction(rhs, bNewIDs, bDeepCopy),
        RqExternalColumn(rhs),
        m_ExternalScriptExecutionData(rhs.m_ExternalScriptExecutionData) {}

  const RqExternalColumn& GetExternalColumn() const { return *this; }
  void SetExternalColumn(const RqExternalColumn& column) { static_cast<RqExternalColumn&>(*this) = column; }
  const KXNodeVector<ExternalJoiningIndex>& GetExternalJoiningIndexVector() const {
    return m_ExternalJoiningIndexVector;
  }
  void AddExternalJoiningIndex(const ExternalJoiningIndex& index) { m_ExternalJoiningIndexVector.push_back(index); }
  /// Forgets which joins the column is a key of.
  void RemoveExternalJoiningIndexVector() { m_ExternalJoiningIndexVector.clear(); }
  /// Null when no script makes the column. Copies of the node share it.
  const RefCnt<ExternalScriptExecutionData>& GetExternalScriptExecutionData() const {
    return m_ExternalScriptExecutionData;
  }
  void SetExternalScriptExecutionData(const RefCnt<ExternalScriptExecutionData>& data) {
    m_ExternalScriptExecutionData = data;
  }

  bool IsConstant() const override { return false; }
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  std::strong_ordering CompareFields(const RqExprExternalData& rhs) const;

  RefCnt<ExternalScriptExecutionData> m_ExternalScriptExecutionData;
};
