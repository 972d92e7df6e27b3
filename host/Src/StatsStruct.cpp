#include "Host/StatsStruct.h"

#include "Host/DataBlobUtil.h"

void StatsStruct::ToByteVector(ByteVector& bv) const {
  DataBlobUtil::ToByteVector(bv, m_origin.m_userName);
  DataBlobUtil::ToByteVector(bv, m_origin.m_repositoryName);
  DataBlobUtil::ToByteVector(bv, m_origin.m_subjectArea);
  DataBlobUtil::ToByteVector(bv, m_origin.m_sessionID);
  DataBlobUtil::ToByteVector(bv, m_request.m_statement);
  DataBlobUtil::ToByteVector(bv, m_request.m_hash);
  DataBlobUtil::ToByteVector(bv, m_request.m_bCacheHit);
  DataBlobUtil::ToByteVector(bv, m_counts.m_rowsFromDatabases);
  DataBlobUtil::ToByteVector(bv, m_counts.m_rowsToClient);
  DataBlobUtil::ToByteVector(bv, m_counts.m_physicalQueries);
  m_times.m_start.ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_times.m_compileMicroseconds);
  DataBlobUtil::ToByteVector(bv, m_times.m_executeMicroseconds);
}

const_iterator StatsStruct::FromByteVector(const_iterator start) {
  start = DataBlobUtil::FromByteVector(start, m_origin.m_userName);
  start = DataBlobUtil::FromByteVector(start, m_origin.m_repositoryName);
  start = DataBlobUtil::FromByteVector(start, m_origin.m_subjectArea);
  start = DataBlobUtil::FromByteVector(start, m_origin.m_sessionID);
  start = DataBlobUtil::FromByteVector(start, m_request.m_statement);
  start = DataBlobUtil::FromByteVector(start, m_request.m_hash);
  start = DataBlobUtil::FromByteVector(start, m_request.m_bCacheHit);
  start = DataBlobUtil::FromByteVector(start, m_counts.m_rowsFromDatabases);
  start = DataBlobUtil::FromByteVector(start, m_counts.m_rowsToClient);
  start = DataBlobUtil::FromByteVector(start, m_counts.m_physicalQueries);
  start = m_times.m_start.FromByteVector(start);
  start = DataBlobUtil::FromByteVector(start, m_times.m_compileMicroseconds);
  return DataBlobUtil::FromByteVector(start, m_times.m_executeMicroseconds);
}
