#include "Query/Optimizer/Request/Blocks/SQORRqOpaqueTable.h"

#include <algorithm>

#include "Host/BaseStringUtil.h"
#include "Host/DataBlobUtil.h"
#include "Host/KXAssert.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"

// ---------------------------------------------------------------------------------------------------------------------
// RqOpaqueTable

RqOpaqueTable::RqOpaqueTable(ARpGateway* pRp, int tableNumber, const VoidID& tableID, const VoidID& targetID,
                             OpaqueTableType opaqueTableType)
    : RqNodeImpl(pRp, tableNumber, tableID), m_opaqueTableType(opaqueTableType) {
  MarkTargetID(targetID);
}

RqOpaqueTable::RqOpaqueTable(const RqOpaqueTable& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy), m_opaqueTableType(rhs.m_opaqueTableType) {}

bool RqOpaqueTable::IsEquivalent(const RqAbstractTable& rhs) const {
  return GetObjectType() == rhs.GetObjectType() &&
         m_opaqueTableType == static_cast<const RqOpaqueTable&>(rhs).m_opaqueTableType && RqNodeImpl::IsEquivalent(rhs);
}

void RqOpaqueTable::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, static_cast<std::uint16_t>(m_opaqueTableType));
}

const_iterator RqOpaqueTable::FromByteVector(const_iterator start) {
  start = RqNodeImpl::FromByteVector(start);
  return DataBlobUtil::FromByteVector<std::uint16_t>(start, m_opaqueTableType, kOpaqueTableTypeTableName);
}

// ---------------------------------------------------------------------------------------------------------------------
// RqTransientOpaqueTable

namespace {

template <class Container>
void WriteCount(ByteVector& bv, const Container& container) {
  DataBlobUtil::ToByteVector(bv, static_cast<std::int32_t>(container.size()));
}

/// Reads a count and calls readEntry, which takes the cursor and returns it advanced, as many times. An entry of the
/// byte form has nBytesAtLeast bytes.
template <class ReadEntry>
const_iterator ReadCounted(const_iterator start, std::uint64_t nBytesAtLeast, const ReadEntry& readEntry) {
  std::int32_t count;
  const const_iterator countAt = start;
  start = DataBlobUtil::FromByteVector(start, count);
  if (count < 0) DataBlobUtil::RaiseMalformedIfBounded(countAt, L"count");
  if (count > 0) DataBlobUtil::RequireReadable(start, static_cast<std::uint64_t>(count) * nBytesAtLeast);
  for (std::int32_t i = 0; i < count; ++i) start = readEntry(start);
  return start;
}

const_iterator ReadColumnID(const_iterator start, VoidIDVector& columnIDs) {
  KXString text;
  const const_iterator end = DataBlobUtil::FromByteVector(start, text);
  VoidID colID;
  VoidID::StringToVoidID(text, colID);
  if (colID.IsNullID()) DataBlobUtil::RaiseMalformedIfBounded(start, L"identifier");
  KX_ASSERT(!colID.IsNullID());
  columnIDs.push_back(colID);
  return end;
}

}  // namespace

RqTransientOpaqueTable::RqTransientOpaqueTable(ARpGateway* pRp, int tableNumber, const KXString& bypassSQL,
                                               const VoidID& targetID, OpaqueTableType opaqueTableType)
    : RqNodeImpl(pRp, tableNumber, VoidID::NullID, targetID, opaqueTableType), m_bypassSQL(bypassSQL) {}

RqTransientOpaqueTable::RqTransientOpaqueTable(const RqTransientOpaqueTable& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      m_bypassSQL(rhs.m_bypassSQL),
      m_targetConnectionId(rhs.m_targetConnectionId),
      m_tableName(rhs.m_tableName),
      m_transientColumns(rhs.m_transientColumns),
      m_ColumnNameToKXTypeInfoMap(rhs.m_ColumnNameToKXTypeInfoMap),
      m_hdsCacheSharedKey(rhs.m_hdsCacheSharedKey),
      m_delimiter(rhs.m_delimiter),
      m_externalScriptExecutionDataVector(rhs.m_externalScriptExecutionDataVector),
      m_bRetryForReplica(rhs.m_bRetryForReplica) {}

void RqTransientOpaqueTable::AddTransientColumn(const VoidID& columnID) {
  if (std::find(m_transientColumns.begin(), m_transientColumns.end(), columnID) == m_transientColumns.end()) {
    m_transientColumns.push_back(columnID);
  }
}

bool RqTransientOpaqueTable::GetColumnTypeInfo(const KXString& columnName, KXTypeInfo& type) const {
  const auto it = m_ColumnNameToKXTypeInfoMap.find(columnName);
  if (it == m_ColumnNameToKXTypeInfoMap.end()) return false;
  type = it->second;
  return true;
}

void RqTransientOpaqueTable::SetColumnTypeInfo(const KXString& columnName, const KXTypeInfo& type) {
  m_ColumnNameToKXTypeInfoMap.emplace(columnName, type);
}

int RqTransientOpaqueTable::GetMySize() const {
  std::size_t size = m_transientColumns.size() * sizeof(VoidID) +
                     m_externalScriptExecutionDataVector.size() * sizeof(ScriptVector::value_type);
  for (const KXString* const pText :
       {&m_bypassSQL, &m_targetConnectionId, &m_tableName, &m_hdsCacheSharedKey, &m_delimiter}) {
    size += pText->size() * sizeof(wchar_t);
  }
  for (const auto& [name, type] : m_ColumnNameToKXTypeInfoMap) size += name.size() * sizeof(wchar_t) + sizeof(type);
  return RqNodeImpl::GetMySize() + static_cast<int>(size);
}

bool RqTransientOpaqueTable::IsEquivalent(const RqAbstractTable& rhs) const {
  if (GetObjectType() != rhs.GetObjectType()) return false;
  const auto& right = static_cast<const RqTransientOpaqueTable&>(rhs);
  return BaseStringUtil::IsCaseInsensitiveMatch(m_bypassSQL, right.m_bypassSQL) &&
         BaseStringUtil::IsCaseInsensitiveMatch(m_targetConnectionId, right.m_targetConnectionId) &&
         m_transientColumns == right.m_transientColumns &&
         m_ColumnNameToKXTypeInfoMap == right.m_ColumnNameToKXTypeInfoMap &&
         std::equal(m_externalScriptExecutionDataVector.begin(), m_externalScriptExecutionDataVector.end(),
                    right.m_externalScriptExecutionDataVector.begin(), right.m_externalScriptExecutionDataVector.end(),
                    [](const auto& script, const auto& rightScript) { return *script == *rightScript; });
}

void RqTransientOpaqueTable::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_bypassSQL);
  WriteCount(bv, m_transientColumns);
  for (const VoidID& columnID : m_transientColumns) DataBlobUtil::ToByteVector(bv, columnID.ToString());
  WriteCount(bv, m_ColumnNameToKXTypeInfoMap);
  for (const auto& [name, type] : m_ColumnNameToKXTypeInfoMap) {
    DataBlobUtil::ToByteVector(bv, name);
    RqExpr::ToByteVector_KXTypeInfo(bv, type);
  }
  DataBlobUtil::ToByteVector(bv, m_hdsCacheSharedKey);
  WriteCount(bv, m_externalScriptExecutionDataVector);
  for (const auto& script : m_externalScriptExecutionDataVector) script->ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_targetConnectionId);
  DataBlobUtil::ToByteVector(bv, m_bRetryForReplica);
  DataBlobUtil::ToByteVector(bv, m_tableName);
  DataBlobUtil::ToByteVector(bv, m_delimiter);
}

const_iterator RqTransientOpaqueTable::FromByteVector(const_iterator start) {
  constexpr std::uint64_t kCountSize = sizeof(std::int32_t);
  m_transientColumns.clear();
  m_ColumnNameToKXTypeInfoMap.clear();
  m_externalScriptExecutionDataVector.clear();
  start = DataBlobUtil::FromByteVector(RqNodeImpl::FromByteVector(start), m_bypassSQL);
  start =
      ReadCounted(start, kCountSize, [&](const_iterator cursor) { return ReadColumnID(cursor, m_transientColumns); });
  start = ReadCounted(start, 2 * kCountSize, [&](const_iterator cursor) {
    KXString name;
    KXTypeInfo type;
    cursor = RqExpr::FromByteVector_KXTypeInfo(DataBlobUtil::FromByteVector(cursor, name), type);
    SetColumnTypeInfo(name, type);
    return cursor;
  });
  start = DataBlobUtil::FromByteVector(start, m_hdsCacheSharedKey);
  start = ReadCounted(start, kCountSize, [&](const_iterator cursor) {
    const RefCnt<ExternalScriptExecutionData> script(new ExternalScriptExecutionData);
    AddExternalScriptExecutionData(script);
    return script->FromByteVector(cursor);
  });
  start = DataBlobUtil::FromByteVector(start, m_targetConnectionId);
  start = DataBlobUtil::FromByteVector(start, m_bRetryForReplica);
  start = DataBlobUtil::FromByteVector(start, m_tableName);
  return DataBlobUtil::FromByteVector(start, m_delimiter);
}

// ---------------------------------------------------------------------------------------------------------------------
// RqExternalTable

RqExternalTable::RqExternalTable(ARpGateway* pRp, const KXString& tableName, const VoidID& targetID,
                                 ServerInfo::TargetType targetType)
    : RqNodeImpl(pRp, kVoidTableNum, kVoidTableID),
      m_tableName(tableName),
      m_targetType(targetType),
      m_targetID(targetID) {
  MarkTargetID(targetID);
  MarkTargetType(targetType);
}

RqExternalTable::RqExternalTable(const RqExternalTable& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      m_tableName(rhs.m_tableName),
      m_targetType(rhs.m_targetType),
      m_targetID(rhs.m_targetID) {}

void RqExternalTable::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  RqFieldBytes::Write(bv, *this, kWrittenFields);
}

const_iterator RqExternalTable::FromByteVector(const_iterator start) {
  return RqFieldBytes::Read(RqNodeImpl::FromByteVector(start), *this, kWrittenFields);
}
