#include "Host/ExternalScript.h"

#include "Host/DataBlobUtil.h"

void ExternalScriptDataBinding::ToByteVector(ByteVector& bv) const {
  for (const KXString* const pField : {&m_BMMColumn, &m_PresentationColumn, &m_RawDatatype, &m_SortOrder}) {
    DataBlobUtil::ToByteVector(bv, *pField);
  }
}

const_iterator ExternalScriptDataBinding::FromByteVector(const_iterator start) {
  for (KXString* const pField : {&m_BMMColumn, &m_PresentationColumn, &m_RawDatatype, &m_SortOrder}) {
    start = DataBlobUtil::FromByteVector(start, *pField);
  }
  return start;
}

void ExternalScriptExecutionData::ToByteVector(ByteVector& bv) const {
  DataBlobUtil::ToByteVector(bv, m_ScriptPath);
  DataBlobUtil::ToByteVector(bv, m_OutputColumn);
  DataBlobUtil::ToByteVector(bv, m_PAFOpCode);
  DataBlobUtil::ToByteVector(bv, m_isFloatingTimeGrain);
  DataBlobUtil::ToByteVector(bv, m_bIsEvaluateScript);
  DataBlobUtil::ToByteVector(bv, m_Target);
  DataBlobUtil::ToByteVector(bv, m_ConnectionPool);
  DataBlobUtil::ToByteVector(bv, m_DbTable);
  DataBlobUtil::ToByteVector(bv, static_cast<std::int32_t>(m_DataBindings.size()));
  for (const ExternalScriptDataBinding& binding : m_DataBindings) binding.ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, static_cast<std::int32_t>(m_Options.size()));
  for (const KXStringPair& option : m_Options) DataBlobUtil::ToByteVector(bv, option);
}

const_iterator ExternalScriptExecutionData::FromByteVector(const_iterator start) {
  start = DataBlobUtil::FromByteVector(start, m_ScriptPath);
  start = DataBlobUtil::FromByteVector(start, m_OutputColumn);
  start = DataBlobUtil::FromByteVector(start, m_PAFOpCode);
  start = DataBlobUtil::FromByteVector(start, m_isFloatingTimeGrain);
  start = DataBlobUtil::FromByteVector(start, m_bIsEvaluateScript);
  start = DataBlobUtil::FromByteVector(start, m_Target);
  start = DataBlobUtil::FromByteVector(start, m_ConnectionPool);
  start = DataBlobUtil::FromByteVector(start, m_DbTable);
  // The counts are not trusted for reserving room: each element is read before the next one is made.
  std::int32_t count = 0;
  start = DataBlobUtil::FromByteVector(start, count);
  m_DataBindings.clear();
  for (std::int32_t i = 0; i < count; ++i) start = m_DataBindings.emplace_back().FromByteVector(start);
  start = DataBlobUtil::FromByteVector(start, count);
  m_Options.clear();
  for (std::int32_t i = 0; i < count; ++i) start = DataBlobUtil::FromByteVector(start, m_Options.emplace_back());
  return start;
}
