#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "Host/ARpGateway.h"
#include "HostMemory/MemoryObjects.h"

/// A value to set: made from any property value, from the types that have one, or from null for "there, but without a
/// value".
class MemoryValue {
 public:
  MemoryValue(std::nullptr_t) {}
  MemoryValue(const PropertyValue& value) : m_pValue(value.Clone()) {}
  MemoryValue(bool bValue) : MemoryValue(bValue ? 1 : 0) {}
  MemoryValue(int value) : m_pValue(new PropertyValueInteger(value)) {}
  MemoryValue(double value) : m_pValue(new PropertyValueFloat(value)) {}
  MemoryValue(const KorvelNumber& value) : m_pValue(new PropertyValueNumber(value)) {}
  MemoryValue(const KXString& value) : m_pValue(new PropertyValueString(value)) {}
  MemoryValue(const wchar_t* value) : MemoryValue(KXString(value)) {}
  MemoryValue(const KXDate& value) : m_pValue(new PropertyValueDate(value)) {}
  MemoryValue(const KXTime& value) : m_pValue(new PropertyValueTime(value)) {}
  MemoryValue(const KXDateTime& value) : m_pValue(new PropertyValueDateTime(value)) {}
  MemoryValue(KXStringVector values) : m_pValue(new PropertyValueStringVector(std::move(values))) {}

  std::unique_ptr<PropertyValue> Release() { return std::move(m_pValue); }

 private:
  std::unique_ptr<PropertyValue> m_pValue;
};

/// A repository, a session and a request held in memory. It starts empty, with a live session, and is what its setters
/// make it; each setter replaces what was set before and gives the gateway back for the next one.
///
/// The gateway owns its objects. An object that is removed can no longer be looked up, but lives on until its last
/// handle is gone. Destroying the gateway while a handle is left is a logic error.
class MemoryGateway final : public ARpGateway {
 public:
  MemoryGateway() = default;
  ~MemoryGateway() override;

  // The request.
  MemoryGateway& SetRequestProperty(const KXStringPair& key, MemoryValue value);
  /// In the block of those that have none of their own.
  MemoryGateway& SetRequestProperty(const KXString& name, MemoryValue value);
  MemoryGateway& RemoveRequestProperty(const KXStringPair& key);

  // The session.
  MemoryGateway& SetSessionProperty(const KXString& name, MemoryValue value);
  MemoryGateway& SetSessionVariable(const KXString& block, const KXString& name, MemoryValue value);
  MemoryGateway& RemoveSessionVariable(const KXString& block, const KXString& name);
  /// Default false.
  MemoryGateway& SetOfflineMode(bool bOffline);
  /// Default kRpGatewayType_Memory.
  MemoryGateway& SetGatewayType(GatewayType type);

  // The repository.
  /// Default 0.
  MemoryGateway& SetRepositoryUniqueID32(std::uint32_t uniqueID);
  /// Default 0.
  MemoryGateway& SetRepositoryID(const RepositoryID& id);
  /// Marks the identifier as that of an object outside the repository.
  MemoryGateway& SetExternal(const VoidID& id);
  /// The session variables that row security goes by. Default none.
  MemoryGateway& SetSecurityVariableNames(KXStringVector names);
  /// The schemas whose tables no plan may read. Default none.
  MemoryGateway& SetInactiveSchemas(VoidIDSet ids);
  /// Makes this the repository at work for the whole process: gives it these variables and schemas, as
  /// GlobalRpVariables and InactiveSchemas tell them. To be done before the first request.
  void Publish() const;

  /// Takes the object over and lends it. The gateway must have none of that identifier.
  template <class Object>
  Object& AddObject(std::unique_ptr<Object> pObject) {
    Object& object = *pObject;
    TakeObject(std::move(pObject));
    return object;
  }
  /// Makes an object from the arguments of its constructor.
  template <class Object, class... Args>
  Object& MakeObject(Args&&... args) {
    return AddObject(std::make_unique<Object>(std::forward<Args>(args)...));
  }
  /// Does nothing if there is none.
  MemoryGateway& RemoveObject(const VoidID& id);
  /// Handles on all objects of an interface, in the order of their identifiers.
  template <class Interface>
  std::vector<Ref<Interface>> GetObjects() {
    std::vector<Ref<Interface>> objects;
    for (const VoidID& id : GetObjectIDs()) {
      if (Ref<Interface> object(this, id); !object.IsNull()) objects.push_back(std::move(object));
    }
    return objects;
  }
  /// The first of an interface that has the name, letter by letter; null if none has.
  template <class Interface>
  Ref<Interface> FindObject(std::wstring_view name) {
    for (Ref<Interface>& object : GetObjects<Interface>()) {
      if (object->GetName() == name) return std::move(object);
    }
    return {};
  }
  /// Handles on the object that are alive.
  std::uint32_t GetObjectRefCount(const VoidID& id) const;

  bool ContainDBFeatureRequestProperty() override;
  bool IsOfflineMode() const override { return m_bOffline; }
  GatewayType GetGatewayType() const override { return m_gatewayType; }
  std::uint32_t GetRepositoryUniqueID32() const override { return m_repositoryUniqueID; }
  RepositoryID GetRepositoryID() const override { return m_repositoryID; }
  bool IsExternalARpObject(const VoidID& id) override { return m_externalIDs.contains(id); }
  void GetObjectIDs(TypeID interfaceType, VoidIDVector& ids) const override;
  ARpObject* LookupObject(const VoidID& id) override;
  void AddObjectRef(const VoidID& id) override;
  void ReleaseObjectRef(const VoidID& id) override;

 protected:
  bool FindSessionProperty(const KXString& name, std::unique_ptr<PropertyValue>& pValue) override;
  bool FindRequestProperty(const KXStringPair& key, std::unique_ptr<PropertyValue>& pValue) override;

 private:
  struct ObjectEntry {
    std::unique_ptr<ARpObject> m_pObject;
    std::uint32_t m_refCount = 0;
    bool m_bRemoved = false;
  };
  using ValueByKey = std::map<KXStringPair, std::unique_ptr<PropertyValue>>;

  void TakeObject(std::unique_ptr<ARpObject> pObject);
  /// Of those that can be looked up.
  VoidIDVector GetObjectIDs() const;
  ObjectEntry& ReferencedEntry(const VoidID& id);

  ValueByKey m_requestProperties;
  std::uint32_t m_numDBFeatureProperties = 0;
  std::map<KXString, std::unique_ptr<PropertyValue>> m_sessionProperties;
  ValueByKey m_sessionVariables;
  bool m_bOffline = false;
  GatewayType m_gatewayType = kRpGatewayType_Memory;
  std::uint32_t m_repositoryUniqueID = 0;
  RepositoryID m_repositoryID{0};
  VoidIDSet m_externalIDs;
  KXStringVector m_securityVariableNames;
  VoidIDSet m_inactiveSchemaIDs;
  std::map<VoidID, ObjectEntry> m_objects;
};
