#include "Host/ExternalData.h"

#include "Host/BaseStringUtil.h"
#include "Host/DataBlobUtil.h"

KXString ExternalObjectReference::ToString() const {
  KXString text;
  for (const KXString& name : m_path) {
    if (!text.empty()) text += L'.';
    text += name;
  }
  if (!m_alias.empty()) text.append(L" as ").append(m_alias);
  return text;
}

KXString ExternalObjectReference::ToStringForQueryGeneration() const {
  KXString text;
  for (const KXString& name : m_path) {
    text += text.empty() ? L"\"" : L".\"";
    text.append(BaseStringUtil::EscapeCharacter(name, L'"', L'"')).append(L'"');
  }
  return text;
}

KXString ExternalObjectReference::GetObjectReferenceStringAsPath() const {
  KXString text;
  for (const KXString& name : m_path) text.append(L'/').append(BaseStringUtil::EscapeCharacter(name, L'/', L'\\'));
  return text;
}

void ExternalObjectReference::ToByteVector(ByteVector& bv) const {
  DataBlobUtil::ToByteVector(bv, m_path);
  DataBlobUtil::ToByteVector(bv, m_alias);
}

const_iterator ExternalObjectReference::FromByteVector(const_iterator start) {
  return DataBlobUtil::FromByteVector(DataBlobUtil::FromByteVector(start, m_path), m_alias);
}

void ExternalJoiningIndex::ToByteVector(ByteVector& bv) const {
  DataBlobUtil::ToByteVector(bv, m_index);
  DataBlobUtil::ToByteVector(bv, static_cast<std::uint32_t>(m_joinForm));
}

const_iterator ExternalJoiningIndex::FromByteVector(const_iterator start) {
  return DataBlobUtil::FromByteVector(DataBlobUtil::FromByteVector(start, m_index), m_joinForm, kExternalUnknownJoin);
}
