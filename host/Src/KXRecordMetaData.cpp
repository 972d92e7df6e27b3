#include "Host/KXRecordMetaData.h"

#include <algorithm>

const KXFieldDescriptor* KXRecordMetaData::FindField(std::wstring_view name) const {
  const auto it = std::find_if(m_fields.begin(), m_fields.end(),
                               [&](const KXFieldDescriptor& field) { return field.m_name == name; });
  return it == m_fields.end() ? nullptr : &*it;
}
