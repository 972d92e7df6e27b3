#include "Host/TableIdentifier.h"

#include "Host/DataBlobUtil.h"

KXString TableIdentifier::ToString() const {
  return m_storageUser.empty() ? m_tableName : m_storageUser + L"." + m_tableName;
}

void TableIdentifier::ToByteVector(ByteVector& bv) const {
  DataBlobUtil::ToByteVector(bv, m_storageUser);
  DataBlobUtil::ToByteVector(bv, m_tableName);
}

const_iterator TableIdentifier::FromByteVector(const_iterator start) {
  return DataBlobUtil::FromByteVector(DataBlobUtil::FromByteVector(start, m_storageUser), m_tableName);
}
