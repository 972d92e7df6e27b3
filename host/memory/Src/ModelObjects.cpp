#include "ModelObjects.h"

#include "Host/KXAssert.h"

KXString ModelObjects::NewName(const JsonCursor& name, const VoidID& parentID, TypeID interfaceType) const {
  KXString text = name.AsName();
  CheckNew(name, parentID, interfaceType, text);
  return text;
}

void ModelObjects::CheckNew(const JsonCursor& cursor, const VoidID& parentID, TypeID interfaceType,
                            const KXString& name) const {
  if (m_names.GetIn(parentID, interfaceType, name).IsNullID()) return;
  const KXString noun = RepositoryNames::GetNoun(interfaceType);
  cursor.Throw(L"there is a " + noun + L" of this name already");
}

VoidID ModelObjects::Refer(const JsonCursor& text, TypeID interfaceType) const {
  const NameLookup lookup = m_names.Find(interfaceType, PathOf(text));
  if (!lookup) text.Throw(lookup.m_cause);
  return lookup.m_id;
}

VoidID ModelObjects::ReferIn(const JsonCursor& text, const VoidID& parentID, TypeID interfaceType) const {
  const NameLookup lookup = m_names.FindIn(parentID, interfaceType, text.AsName());
  if (!lookup) text.Throw(lookup.m_cause);
  return lookup.m_id;
}

VoidID ModelObjects::ReferToColumn(const JsonCursor& text) const {
  KXStringVector path = PathOf(text);
  if (path.size() < 2) text.ThrowUnless(L"a column with its table, as in product.name,");
  const KXString column = path.back();
  path.pop_back();
  NameLookup lookup = m_names.FindPhysicalTable(path);
  if (lookup) lookup = m_names.FindColumn(lookup.m_id, column);
  if (!lookup) text.Throw(lookup.m_cause);
  return lookup.m_id;
}

KXStringVector ModelObjects::PathOf(const JsonCursor& text) {
  KXStringVector path = SplitQualifiedName(text.AsText());
  if (path.empty()) text.ThrowUnless(L"a name, with what is no plain word in double quotes,");
  return path;
}

void ModelObjects::HandOver() {
  for (auto& pObject : m_objects) m_gateway.AddObject(std::move(pObject));
  m_objects.clear();
  for (const auto& function : m_atHandOver) function(m_gateway);
}

const ARpObject& ModelObjects::Lookup(const VoidID& id) const {
  const auto found = m_places.find(id);
  if (found != m_places.end()) return *m_objects[found->second];
  const ARpObject* const pObject = m_gateway.LookupObject(id);
  KX_ASSERT(pObject);
  return *pObject;
}

std::uint32_t ModelObjects::NextNumber(TypeID interfaceType) {
  std::uint32_t& number = m_lastNumbers[interfaceType];
  // A removed object keeps its number as long as it has a handle.
  const auto isTaken = [&](const VoidID& id) {
    return m_gateway.LookupObject(id) || m_gateway.GetObjectRefCount(id) > 0;
  };
  do {
    ++number;
  } while (isTaken(VoidID(interfaceType, number)));
  return number;
}
