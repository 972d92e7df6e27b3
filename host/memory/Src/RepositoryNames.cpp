#include "HostMemory/RepositoryNames.h"

#include <algorithm>
#include <iterator>

#include "Host/BaseStringUtil.h"
#include "HostMemory/MemoryGateway.h"
#include "HostMemory/NearestNames.h"
#include "SqlWords.h"

namespace {

/// A container may contain itself by mistake of who made it: longer paths are taken to be cut here.
constexpr std::size_t kMaxDepth = 16;

KXString Lowered(std::wstring_view name) {
  KXString lowered;
  lowered.reserve(name.size());
  for (const wchar_t c : name) lowered.append(BaseStringUtil::ToLower(c));
  return lowered;
}

TypeID ColumnTypeOf(const VoidID& tableID) {
  return tableID.GetInterfaceTypeID() == kTIDATable ? kTIDAColumn : kTIDAAttribute;
}

}  // namespace

RepositoryNames::RepositoryNames(MemoryGateway& gateway) {
  for (const RefARpObject& object : gateway.GetObjects<ARpObject>()) {
    Add(object->GetID(), object->GetParentID(), object->GetName());
  }
}

void RepositoryNames::Add(const VoidID& id, const VoidID& parentID, const KXString& name) {
  m_entries.insert_or_assign(id, Entry{parentID, name});
  m_idsByName[{id.GetInterfaceTypeID(), Lowered(name)}].push_back(id);
  m_idsByParent[{parentID, id.GetInterfaceTypeID()}].push_back(id);
}

NameLookup RepositoryNames::FindTable(const KXStringVector& path) const {
  for (const TypeID type : {kTIDALogicalTable, kTIDATable}) {
    if (!GetCandidates(type, path).empty()) return Find(type, path);
  }
  const NameLookup logical = FindLogicalTable(path);
  const NameLookup physical = FindPhysicalTable(path);
  const auto knowsNearName = [](const NameLookup& lookup) { return lookup.m_cause.find(L"; did") != KXString::npos; };
  return knowsNearName(logical) && !knowsNearName(physical) ? logical : physical;
}

NameLookup RepositoryNames::FindLogicalTable(const KXStringVector& path) const { return Find(kTIDALogicalTable, path); }

NameLookup RepositoryNames::FindPhysicalTable(const KXStringVector& path) const { return Find(kTIDATable, path); }

NameLookup RepositoryNames::FindColumn(const VoidID& tableID, const KXString& name) const {
  return FindIn(tableID, ColumnTypeOf(tableID), name);
}

NameLookup RepositoryNames::FindColumn(const VoidIDVector& tableIDs, const KXString& name) const {
  VoidIDVector found;
  for (const VoidID& tableID : tableIDs) {
    if (const VoidID id = GetIn(tableID, ColumnTypeOf(tableID), name); !id.IsNullID()) found.push_back(id);
  }
  if (found.size() == 1) return {found.front(), {}};
  if (!found.empty()) return Ambiguous(L"column " + JoinQualifiedName({name}), found);
  KXStringVector names;
  for (const VoidID& tableID : tableIDs) AppendNamesIn(tableID, ColumnTypeOf(tableID), names);
  return {{}, L"there is no column " + JoinQualifiedName({name}) + L" in these tables" + DidYouMean(name, names)};
}

NameLookup RepositoryNames::FindVariable(const KXStringVector& path) const { return Find(kTIDARpVariable, path); }

NameLookup RepositoryNames::Find(TypeID interfaceType, const KXStringVector& path) const {
  const VoidIDVector ids = GetCandidates(interfaceType, path);
  if (ids.size() == 1) return {ids.front(), {}};
  if (ids.empty()) return NoSuch(interfaceType, path);
  return Ambiguous(GetNoun(interfaceType) + L" " + JoinQualifiedName(path), ids);
}

NameLookup RepositoryNames::FindIn(const VoidID& parentID, TypeID interfaceType, const KXString& name) const {
  const VoidID id = GetIn(parentID, interfaceType, name);
  if (!id.IsNullID()) return {id, {}};
  KXStringVector names;
  AppendNamesIn(parentID, interfaceType, names);
  const KXString container = parentID.IsNullID() ? KXString() : L" in " + GetName(parentID);
  return {{},
          L"there is no " + GetNoun(interfaceType) + L" " + JoinQualifiedName({name}) + container +
              DidYouMean(name, names)};
}

VoidID RepositoryNames::GetIn(const VoidID& parentID, TypeID interfaceType, const KXString& name) const {
  const auto named = m_idsByName.find({interfaceType, Lowered(name)});
  if (named == m_idsByName.end()) return {};
  const auto found =
      std::ranges::find_if(named->second, [&](const VoidID& id) { return m_entries.at(id).m_parentID == parentID; });
  return found == named->second.end() ? VoidID() : *found;
}

VoidIDVector RepositoryNames::GetCandidates(TypeID interfaceType, const KXStringVector& path) const {
  VoidIDVector ids;
  if (path.empty()) return ids;
  if (const auto named = m_idsByName.find({interfaceType, Lowered(path.back())}); named != m_idsByName.end()) {
    std::ranges::copy_if(named->second, std::back_inserter(ids),
                         [&](const VoidID& id) { return PathEndsWith(id, path); });
  }
  return ids;
}

void RepositoryNames::AppendNamesIn(const VoidID& parentID, TypeID interfaceType, KXStringVector& names) const {
  const auto siblings = m_idsByParent.find({parentID, interfaceType});
  if (siblings == m_idsByParent.end()) return;
  for (const VoidID& id : siblings->second) names.push_back(GetName(id));
}

NameLookup RepositoryNames::Ambiguous(const KXString& what, const VoidIDVector& ids) const {
  return {{}, L"the " + what + L" is ambiguous: " + GetQualifiedName(ids[0]) + L" or " + GetQualifiedName(ids[1])};
}

KXString RepositoryNames::GetName(const VoidID& id) const {
  const auto found = m_entries.find(id);
  return found == m_entries.end() ? KXString() : found->second.m_name;
}

KXString RepositoryNames::GetQualifiedName(const VoidID& id) const { return JoinQualifiedName(GetPath(id)); }

KXStringVector RepositoryNames::GetPath(const VoidID& id) const {
  KXStringVector path;
  auto place = m_entries.find(id);
  while (place != m_entries.end() && path.size() < kMaxDepth) {
    path.push_back(place->second.m_name);
    place = m_entries.find(place->second.m_parentID);
  }
  std::ranges::reverse(path);
  return path;
}

bool RepositoryNames::PathEndsWith(const VoidID& id, const KXStringVector& end) const {
  const KXStringVector path = GetPath(id);
  return path.size() >= end.size() &&
         std::equal(end.rbegin(), end.rend(), path.rbegin(),
                    [](const KXString& a, const KXString& b) { return BaseStringUtil::IsCaseInsensitiveMatch(a, b); });
}

/// Names are near that are as long a part of a path as the one that was not found.
NameLookup RepositoryNames::NoSuch(TypeID interfaceType, const KXStringVector& path) const {
  KXStringVector names;
  for (const auto& [id, entry] : m_entries) {
    if (id.GetInterfaceTypeID() != interfaceType) continue;
    const KXStringVector whole = GetPath(id);
    const auto length = static_cast<std::ptrdiff_t>(std::min(path.size(), whole.size()));
    KXString name = JoinQualifiedName(KXStringVector(whole.end() - length, whole.end()));
    if (std::ranges::find(names, name) == names.end()) names.push_back(std::move(name));
  }
  const KXString text = JoinQualifiedName(path);
  return {{}, L"there is no " + GetNoun(interfaceType) + L" " + text + DidYouMean(text, names)};
}

KXString RepositoryNames::GetNoun(TypeID interfaceType) {
  switch (interfaceType) {
    case kTIDALogicalTable:
      return L"logical table";
    case kTIDALogicalTableSource:
      return L"source";
    case kTIDAAttribute:
    case kTIDAColumn:
      return L"column";
    case kTIDADimension:
      return L"dimension";
    case kTIDAHierarchy:
    case kTIDAPresentationHierarchy:
      return L"hierarchy";
    case kTIDALevel:
    case kTIDAPresentationLevel:
      return L"level";
    case kTIDADatabase:
      return L"database";
    case kTIDASchema:
      return L"schema";
    case kTIDATable:
      return L"table";
    case kTIDAForeignKey:
      return L"foreign key";
    case kTIDAComplexJoin:
      return L"join";
    case kTIDARpVariable:
      return L"variable";
    case kTIDASessionVariableBlock:
      return L"block";
    default:
      return L"object";
  }
}
