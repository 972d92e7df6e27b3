#include "HostMemory/MemoryGateway.h"

#include <algorithm>

#include "Host/GlobalRpVariables.h"
#include "Host/InactiveSchemas.h"
#include "Host/KXAssert.h"

namespace {

/// Gives a copy of the value under the key, and tells whether there is such a key.
template <class Map>
bool CopyValue(const Map& values, const typename Map::key_type& key, std::unique_ptr<PropertyValue>& pValue) {
  const auto found = values.find(key);
  if (found == values.end()) return false;
  pValue.reset(found->second ? found->second->Clone() : nullptr);
  return true;
}

bool IsDBFeatureProperty(const KXStringPair& key) {
  return key.second.view().starts_with(ARpGateway::kDBFeaturePropertyPrefix);
}

}  // namespace

MemoryGateway::~MemoryGateway() {
  KX_ASSERT_TEXT(
      std::ranges::all_of(m_objects, [](const auto& keyAndEntry) { return keyAndEntry.second.m_refCount == 0; }),
      L"no handle is left when the gateway goes");
}

MemoryGateway& MemoryGateway::SetRequestProperty(const KXStringPair& key, MemoryValue value) {
  const auto [place, bNew] = m_requestProperties.insert_or_assign(key, value.Release());
  if (bNew && IsDBFeatureProperty(key)) ++m_numDBFeatureProperties;
  return *this;
}

MemoryGateway& MemoryGateway::SetRequestProperty(const KXString& name, MemoryValue value) {
  return SetRequestProperty(KXStringPair(GlobalRpVariables::global_SessionBlockWildcard, name), std::move(value));
}

MemoryGateway& MemoryGateway::RemoveRequestProperty(const KXStringPair& key) {
  if (m_requestProperties.erase(key) > 0 && IsDBFeatureProperty(key)) --m_numDBFeatureProperties;
  return *this;
}

MemoryGateway& MemoryGateway::SetSessionProperty(const KXString& name, MemoryValue value) {
  m_sessionProperties.insert_or_assign(name, value.Release());
  return *this;
}

MemoryGateway& MemoryGateway::SetSessionVariable(const KXString& block, const KXString& name, MemoryValue value) {
  m_sessionVariables.insert_or_assign(KXStringPair(block, name), value.Release());
  return *this;
}

MemoryGateway& MemoryGateway::RemoveSessionVariable(const KXString& block, const KXString& name) {
  m_sessionVariables.erase(KXStringPair(block, name));
  return *this;
}

MemoryGateway& MemoryGateway::SetOfflineMode(bool bOffline) {
  m_bOffline = bOffline;
  return *this;
}

MemoryGateway& MemoryGateway::SetGatewayType(GatewayType type) {
  m_gatewayType = type;
  return *this;
}

MemoryGateway& MemoryGateway::SetRepositoryUniqueID32(std::uint32_t uniqueID) {
  m_repositoryUniqueID = uniqueID;
  return *this;
}

MemoryGateway& MemoryGateway::SetRepositoryID(const RepositoryID& id) {
  m_repositoryID = id;
  return *this;
}

MemoryGateway& MemoryGateway::SetExternal(const VoidID& id) {
  m_externalIDs.insert(id);
  return *this;
}

MemoryGateway& MemoryGateway::SetSecurityVariableNames(KXStringVector names) {
  m_securityVariableNames = std::move(names);
  return *this;
}

MemoryGateway& MemoryGateway::SetInactiveSchemas(VoidIDSet ids) {
  m_inactiveSchemaIDs = std::move(ids);
  return *this;
}

void MemoryGateway::Publish() const {
  GlobalRpVariables::SetSecurityVariableNames(m_securityVariableNames);
  InactiveSchemas::globalInactiveSchemas.SetInactiveSchemas(m_inactiveSchemaIDs);
}

void MemoryGateway::TakeObject(std::unique_ptr<ARpObject> pObject) {
  KX_ASSERT(pObject);
  ObjectEntry& entry = m_objects[pObject->GetID()];
  KX_ASSERT(!entry.m_pObject);
  entry.m_pObject = std::move(pObject);
}

MemoryGateway& MemoryGateway::RemoveObject(const VoidID& id) {
  const auto found = m_objects.find(id);
  if (found == m_objects.end()) return *this;
  if (found->second.m_refCount == 0) {
    m_objects.erase(found);
  } else {
    found->second.m_bRemoved = true;
  }
  return *this;
}

void MemoryGateway::GetObjectIDs(TypeID interfaceType, VoidIDVector& ids) const {
  ids.clear();
  for (auto place = m_objects.lower_bound(VoidID(interfaceType, 0u));
       place != m_objects.end() && place->first.GetInterfaceTypeID() == interfaceType; ++place) {
    if (!place->second.m_bRemoved) ids.push_back(place->first);
  }
}

VoidIDVector MemoryGateway::GetObjectIDs() const {
  VoidIDVector ids;
  for (const auto& [id, entry] : m_objects) {
    if (!entry.m_bRemoved) ids.push_back(id);
  }
  return ids;
}

std::uint32_t MemoryGateway::GetObjectRefCount(const VoidID& id) const {
  const auto found = m_objects.find(id);
  return found == m_objects.end() ? 0 : found->second.m_refCount;
}

bool MemoryGateway::ContainDBFeatureRequestProperty() { return m_numDBFeatureProperties > 0; }

ARpObject* MemoryGateway::LookupObject(const VoidID& id) {
  const auto found = m_objects.find(id);
  return found == m_objects.end() || found->second.m_bRemoved ? nullptr : found->second.m_pObject.get();
}

/// The entry of an object that someone has a pointer to.
MemoryGateway::ObjectEntry& MemoryGateway::ReferencedEntry(const VoidID& id) {
  const auto found = m_objects.find(id);
  KX_ASSERT(found != m_objects.end());
  return found->second;
}

void MemoryGateway::AddObjectRef(const VoidID& id) { ++ReferencedEntry(id).m_refCount; }

void MemoryGateway::ReleaseObjectRef(const VoidID& id) {
  ObjectEntry& entry = ReferencedEntry(id);
  KX_ASSERT(entry.m_refCount > 0);
  if (--entry.m_refCount == 0 && entry.m_bRemoved) m_objects.erase(id);
}

bool MemoryGateway::FindSessionProperty(const KXString& name, std::unique_ptr<PropertyValue>& pValue) {
  return CopyValue(m_sessionProperties, name, pValue);
}

bool MemoryGateway::FindRequestProperty(const KXStringPair& key, std::unique_ptr<PropertyValue>& pValue) {
  return CopyValue(m_requestProperties, key, pValue) || CopyValue(m_sessionVariables, key, pValue);
}
