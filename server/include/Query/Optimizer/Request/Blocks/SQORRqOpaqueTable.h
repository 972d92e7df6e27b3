#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "Host/ExternalScript.h"
#include "Host/KXDataType.h"
#include "Host/KXString.h"
#include "Host/ServerInfo.h"
#include "Host/VoidID.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAtomicTable.h"
#include "Query/Optimizer/Request/Node/SQORRqFieldBytes.h"

/// How the text of an opaque table reads. The numbers travel in byte forms.
enum OpaqueTableType : std::uint16_t { kOpaqueTableTypeStoredProc, kOpaqueTableTypeSelect, kOpaqueTableTypeTableName };

/// A table of the repository that is a text for the database to evaluate: a query, a call, or a plain name.
class RqOpaqueTable : public RqNodeImpl<RqOpaqueTable, RqAtomicTable, kRqOpaqueTable> {
 public:
  RqOpaqueTable() = default;
  /// Marks the node for the target.
  RqOpaqueTable(ARpGateway* pRp, int tableNumber, const VoidID& tableID, const VoidID& targetID,
                OpaqueTableType opaqueTableType);
  RqOpaqueTable(const RqOpaqueTable& rhs, bool bNewIDs, bool bDeepCopy);

  /// The text; here the table's full name, under which the repository keeps it.
  virtual KXString GetQueryString(ARpGateway* pRp) const { return GetTableName(pRp, false, false); }
  virtual bool IsSelectStatement() const { return m_opaqueTableType == kOpaqueTableTypeSelect; }
  virtual bool IsStoredProcedureQuery() const { return m_opaqueTableType == kOpaqueTableTypeStoredProc; }
  virtual bool IsTableName() const { return m_opaqueTableType == kOpaqueTableTypeTableName; }

  bool IsRqOpaqueTable() const override { return true; }
  bool IsLeafTable() const override { return false; }
  bool IsEquivalent(const RqAbstractTable& rhs) const override;
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  OpaqueTableType m_opaqueTableType = kOpaqueTableTypeStoredProc;
};

/// A text for the database to evaluate that the compiler made itself: the repository knows neither the table nor the
/// types of its columns, which stand here.
class RqTransientOpaqueTable : public RqNodeImpl<RqTransientOpaqueTable, RqOpaqueTable, kRqTransientOpaqueTable> {
 public:
  using ColumnTypeMap =
      std::map<KXString, KXTypeInfo, std::less<KXString>, KXNodeStdAlloc<std::pair<const KXString, KXTypeInfo>>>;
  using ScriptVector = KXNodeVector<RefCnt<ExternalScriptExecutionData>>;

  RqTransientOpaqueTable() = default;
  /// Marks the node for the target. The repository is that of pRp.
  RqTransientOpaqueTable(ARpGateway* pRp, int tableNumber, const KXString& bypassSQL, const VoidID& targetID,
                         OpaqueTableType opaqueTableType);
  /// The copy shares the scripts.
  RqTransientOpaqueTable(const RqTransientOpaqueTable& rhs, bool bNewIDs, bool bDeepCopy);

  /// The text, with or without a gateway.
  KXString GetQueryString([[maybe_unused]] ARpGateway* pRp) const override { return m_bypassSQL; }
  void SetQueryString(const KXString& bypassSQL) { m_bypassSQL = bypassSQL; }
  /// The connection that the text goes to, in any letter case; empty for that of the target.
  const KXString& GetTargetConnectionId() const { return m_targetConnectionId; }
  void SetTargetConnectionId(const KXString& connectionId) { m_targetConnectionId = connectionId; }
  const KXString& GetOpaqueTableName() const { return m_tableName; }
  void SetOpaqueTableName(const KXString& tableName) { m_tableName = tableName; }

  /// Identifiers of the columns, each once, in the order in which they were added.
  void GetTransientColumns(VoidIDVector& columnIDs) const { columnIDs = m_transientColumns; }
  void AddTransientColumn(const VoidID& columnID);
  /// Whether the type of a column is known; if not, `type` is as it was.
  bool GetColumnTypeInfo(const KXString& columnName, KXTypeInfo& type) const;
  /// A type that is known stays.
  void SetColumnTypeInfo(const KXString& columnName, const KXTypeInfo& type);
  void AddColumnTypeInfos(const ColumnTypeMap& types) {
    m_ColumnNameToKXTypeInfoMap.insert(types.begin(), types.end());
  }

  /// The key of a cached result that stands in for the text; empty without one.
  const KXString& GetCacheSharedKey() const { return m_hdsCacheSharedKey; }
  void SetCacheSharedKey(const KXString& sharedKey) { m_hdsCacheSharedKey = sharedKey; }
  /// What stands between the fields of a file that is read as a table.
  const KXString& GetExtTableDelimiter() const { return m_delimiter; }
  void SetExtTableDelimiter(const KXString& delimiter) { m_delimiter = delimiter; }
  /// The scripts that make columns of the table. None is null.
  const ScriptVector& GetExternalScriptExecutionDataVector() const { return m_externalScriptExecutionDataVector; }
  void AddExternalScriptExecutionData(const RefCnt<ExternalScriptExecutionData>& script) {
    m_externalScriptExecutionDataVector.push_back(script);
  }
  /// Whether a failure on a replica of the database is worth another try.
  bool GetRetryForReplica() const { return m_bRetryForReplica; }
  void SetRetryForReplica(bool bRetry) { m_bRetryForReplica = bRetry; }

  bool IsDataTypeProvidingTransientTable() const override { return true; }
  /// With the characters of its texts, the columns and their types; the scripts are shared and count as handles.
  int GetMySize() const override;
  /// Kind, text and connection in any letter case, columns in order, types, and what the scripts do. Wanted: what the
  /// base classes hold takes no part.
  bool IsEquivalent(const RqAbstractTable& rhs) const override;
  void ToByteVector(ByteVector& bv) override;
  /// A column with the null identifier is a mistake of the writer; under a BoundedRead it raises ErrorMessage.
  const_iterator FromByteVector(const_iterator start) override;

 private:
  KXString m_bypassSQL;
  KXString m_targetConnectionId;
  KXString m_tableName;
  VoidIDVector m_transientColumns;
  ColumnTypeMap m_ColumnNameToKXTypeInfoMap;
  KXString m_hdsCacheSharedKey;
  KXString m_delimiter;
  ScriptVector m_externalScriptExecutionDataVector;
  bool m_bRetryForReplica = false;
};

/// A table outside the repository, by its name at the target.
class RqExternalTable final : public RqNodeImpl<RqExternalTable, RqAtomicTable, kRqExternalTable> {
 public:
  static constexpr VoidID kVoidTableID{};
  static constexpr int kVoidTableNum = 0;

  RqExternalTable() = default;
  /// Marks the node for the target.
  RqExternalTable(ARpGateway* pRp, const KXString& tableName, const VoidID& targetID,
                  ServerInfo::TargetType targetType);
  RqExternalTable(const RqExternalTable& rhs, bool bNewIDs, bool bDeepCopy);

  virtual bool IsRqExternalTable() const { return true; }

  const KXString& GetTableName() const { return m_tableName; }
  /// Where the table is, whatever the node is marked for since.
  ServerInfo::TargetType GetTableTargetType() const { return m_targetType; }
  const VoidID& GetTableTargetID() const { return m_targetID; }

  bool IsLeafTable() const override { return false; }
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  KXString m_tableName;
  ServerInfo::TargetType m_targetType = ServerInfo::kUnknown;
  VoidID m_targetID;

  static constexpr std::tuple kWrittenFields{
      &RqExternalTable::m_tableName, RqEnumField{&RqExternalTable::m_targetType, ServerInfo::kHighestTargetType},
      &RqExternalTable::m_targetID};
};
