#include "Query/Optimizer/Request/Blocks/SQORRqTELMNativeTable.h"

#include "Host/DataBlobUtil.h"
#include "Host/KXAssert.h"

const KXString RqTELMNativeTable::kTablePrefix = L"T";

RqTELMNativeTable::RqTELMNativeTable(const RefCntTELMNativeTable& nativeTable, int tableNumber)
    : RqTELMNativeTable(nativeTable, KXString(), tableNumber) {}

RqTELMNativeTable::RqTELMNativeTable(const RefCntTELMNativeTable& nativeTable, const KXString& dictionaryName,
                                     int tableNumber)
    : RqNodeImpl(nullptr, tableNumber, VoidID::NullID),
      m_nativeTable(nativeTable),
      m_tableIdentifier(nativeTable->GetTableIdentifier()),
      m_dictionaryName(dictionaryName) {
  if (IsDictionary() && !m_nativeTable->GetDictionary(m_dictionaryName)) {
    KX_LOGIC_ERROR(m_dictionaryName + L" is not dictionary-encoded");
  }
}

RqTELMNativeTable::RqTELMNativeTable(const RqTELMNativeTable& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      m_nativeTable(rhs.m_nativeTable),
      m_tableIdentifier(rhs.m_tableIdentifier),
      m_dictionaryName(rhs.m_dictionaryName) {}

const KXFieldDescriptor* RqTELMNativeTable::GetFieldDescriptor(const KXString& name) const {
  KX_ASSERT(!m_nativeTable.IsNull());
  if (!IsDictionary()) return m_nativeTable->GetFieldDescriptor(name);
  const ATELMDictionary* const pDictionary = m_nativeTable->GetDictionary(m_dictionaryName);
  KX_ASSERT(pDictionary);
  return pDictionary->GetFieldDescriptor(name);
}

bool RqTELMNativeTable::GetColumnTypeInfo(const KXString& name, KXTypeInfo& type) const {
  const KXFieldDescriptor* const pField = GetFieldDescriptor(name);
  if (pField) type = pField->m_typeInfo;
  return pField;
}

void RqTELMNativeTable::ToByteVector(ByteVector& bv) {
  RqIdentifiedTable::ToByteVector(bv);
  m_tableIdentifier.ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_dictionaryName);
}

const_iterator RqTELMNativeTable::FromByteVector(const_iterator start) {
  start = m_tableIdentifier.FromByteVector(RqIdentifiedTable::FromByteVector(start));
  return DataBlobUtil::FromByteVector(start, m_dictionaryName);
}
