#pragma once

#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "HostMemory/MemoryGateway.h"
#include "HostMemory/RepositoryNames.h"
#include "JsonCursor.h"

/// The objects of a model while it is read, with their names for what refers to them: the gateway gets them at the end,
/// or none. What a model refers to may be in the gateway already.
class ModelObjects {
 public:
  explicit ModelObjects(MemoryGateway& gateway) : m_gateway(gateway), m_names(gateway) {}

  const RepositoryNames& GetNames() const { return m_names; }

  /// Makes an object with the next number of its interface; behind the name stand the other arguments of its
  /// constructor.
  template <class Object, class... Args>
  Object& Make(const KXString& name, Args&&... args) {
    auto pObject = std::make_unique<Object>(NextNumber(Object::kInterfaceTypeID), name, std::forward<Args>(args)...);
    Object& object = *pObject;
    m_names.Add(object.GetID(), object.GetParentID(), name);
    m_places.emplace(object.GetID(), m_objects.size());
    m_objects.push_back(std::move(pObject));
    return object;
  }

  /// An object of this model or of the gateway; it must be there.
  template <class Interface>
  const Interface& Get(const VoidID& id) const {
    return dynamic_cast<const Interface&>(Lookup(id));
  }

  /// The name for a new object in a container, which must have none of that name.
  KXString NewName(const JsonCursor& name, const VoidID& parentID, TypeID interfaceType) const;
  void CheckNew(const JsonCursor& cursor, const VoidID& parentID, TypeID interfaceType, const KXString& name) const;
  /// The object that the text names, wherever it stands.
  VoidID Refer(const JsonCursor& text, TypeID interfaceType) const;
  /// The object in a container that the text names.
  VoidID ReferIn(const JsonCursor& text, const VoidID& parentID, TypeID interfaceType) const;
  /// The column that the text names behind the name of its table.
  VoidID ReferToColumn(const JsonCursor& text) const;
  /// The parts of the name that the text is.
  static KXStringVector PathOf(const JsonCursor& text);

  /// To be done with the gateway when it has got the objects; not at all if the model has faults.
  void AtHandOver(std::function<void(MemoryGateway&)> function) { m_atHandOver.push_back(std::move(function)); }
  void HandOver();

 private:
  const ARpObject& Lookup(const VoidID& id) const;
  /// The lowest one that neither the gateway nor this model has given.
  std::uint32_t NextNumber(TypeID interfaceType);

  MemoryGateway& m_gateway;
  RepositoryNames m_names;
  std::map<TypeID, std::uint32_t> m_lastNumbers;
  std::vector<std::unique_ptr<ARpObject>> m_objects;
  std::map<VoidID, std::size_t> m_places;
  std::vector<std::function<void(MemoryGateway&)>> m_atHandOver;
};

/// Calls function(element, *pObject) for each element of an array of which an object was made.
template <class Object, class Function>
void ForEachMade(const JsonCursor& array, const std::vector<Object*>& objects, Function function) {
  array.ForEachElement([&](const JsonCursor& element) {
    if (Object* const pObject = objects[element.GetIndex()]) function(element, *pObject);
  });
}

/// Reads an array of different names: calls refer(element) for the object that each names and take(id) for it.
template <class Refer, class Take>
void ReadReferences(const JsonCursor& array, Refer refer, Take take) {
  VoidIDSet seen;
  array.ForEachElement([&](const JsonCursor& element) {
    const VoidID id = refer(element);
    if (!seen.insert(id).second) element.Throw(element.AsText() + L" stands here twice");
    take(id);
  });
}
