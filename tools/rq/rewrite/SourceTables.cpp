#include "rq/rewrite/SourceTables.h"

#include <algorithm>

#include "Host/RpObjects.h"

namespace {

bool Contains(const VoidIDVector& ids, const VoidID& id) { return std::ranges::find(ids, id) != ids.end(); }

/// What an operation of a logical table appends; nothing if there is no such table.
VoidIDVector IDsOf(ARpGateway& gateway, const VoidID& logicalTableID,
                   void (ALogicalTable::*append)(VoidIDVector&) const) {
  VoidIDVector ids;
  if (const RefALogicalTable table(&gateway, logicalTableID); table) ((*table).*append)(ids);
  return ids;
}

VoidIDVector JoinedTables(ARpGateway& gateway, const VoidID& logicalTableID) {
  return IDsOf(gateway, logicalTableID, &ALogicalTable::GetJoinedTableIDs);
}

bool IsNullable(ARpGateway& gateway, const VoidID& foreignKeyID) {
  VoidIDVector columnIDs;
  RefAForeignKey(&gateway, foreignKeyID)->GetColumnIDs(columnIDs);
  return std::ranges::any_of(columnIDs,
                             [&](const VoidID& id) { return RefAColumn(&gateway, id)->GetTypeInfo().nullable_ != 0; });
}

}  // namespace

VoidIDVector SourcesOf(ARpGateway& gateway, const VoidID& logicalTableID) {
  return IDsOf(gateway, logicalTableID, &ALogicalTable::GetSourceIDs);
}

VoidIDVector TablesOf(ARpGateway& gateway, const VoidID& sourceID) {
  VoidIDVector ids;
  RefALogicalTableSource(&gateway, sourceID)->GetTableIDs(ids);
  return ids;
}

VoidIDVector AllJoinedTables(ARpGateway& gateway, const VoidID& logicalTableID) {
  VoidIDVector ids = JoinedTables(gateway, logicalTableID);
  for (std::size_t i = 0; i < ids.size(); ++i) {
    for (const VoidID& id : JoinedTables(gateway, ids[i])) {
      if (!Contains(ids, id)) ids.push_back(id);
    }
  }
  return ids;
}

// ---------------------------------------------------------------------------------------------------------------------
// SourceGrain

/// The grand total of a dimension tells nothing apart.
SourceGrain::SourceGrain(ARpGateway& gateway, const VoidID& sourceID) : m_gateway(gateway) {
  VoidIDVector levelIDs;
  RefALogicalTableSource(&gateway, sourceID)->GetContentLevelIDs(levelIDs);
  for (const VoidID& levelID : levelIDs) {
    const RefALevel level(&gateway, levelID);
    if (!level->IsGrandTotal()) m_levelIDs.emplace(level->GetDimensionID(), levelID);
  }
}

bool SourceGrain::HasDimensionOf(const VoidID& logicalTableID) const {
  return std::ranges::any_of(m_levelIDs, [&](const auto& entry) {
    VoidIDVector attributeIDs;
    RefALevel(&m_gateway, entry.second)->GetKeyAttributeIDs(attributeIDs);
    return std::ranges::any_of(
        attributeIDs, [&](const VoidID& id) { return RefAAttribute(&m_gateway, id)->GetEntityID() == logicalTableID; });
  });
}

bool SourceGrain::TellsApart(const VoidID& levelID) const {
  const RefALevel level(&m_gateway, levelID);
  if (level->IsGrandTotal()) return true;
  const auto found = m_levelIDs.find(level->GetDimensionID());
  if (found == m_levelIDs.end()) return false;
  VoidIDVector above{found->second};
  for (std::size_t i = 0; i < above.size(); ++i) {
    VoidIDVector parentIDs;
    RefALevel(&m_gateway, above[i])->GetParentLevelIDs(parentIDs);
    for (const VoidID& id : parentIDs) {
      if (!Contains(above, id)) above.push_back(id);
    }
  }
  return Contains(above, levelID);
}

bool SourceGrain::TellsApart(const SourceGrain& other) const {
  return std::ranges::all_of(other.m_levelIDs, [this](const auto& entry) { return TellsApart(entry.second); });
}

SourceGrain::Standing SourceGrain::StandingOf(const VoidID& attributeID) const {
  Standing best = Standing::kInNoLevel;
  VoidIDVector levelIDs;
  m_gateway.GetObjectIDs(kTIDALevel, levelIDs);
  for (const VoidID& levelID : levelIDs) {
    const RefALevel level(&m_gateway, levelID);
    VoidIDVector attributeIDs;
    level->GetAttributeIDs(attributeIDs);
    if (!Contains(attributeIDs, attributeID)) continue;
    const Standing standing = TellsApart(levelID)                     ? Standing::kToldApart
                              : HasDimension(level->GetDimensionID()) ? Standing::kBelow
                                                                      : Standing::kSummedUp;
    best = std::min(best, standing);
  }
  return best;
}

// ---------------------------------------------------------------------------------------------------------------------
// SourceTables

SourceTables::SourceTables(ARpGateway& gateway, const VoidID& logicalTableID, const VoidID& sourceID, Joins joins)
    : m_gateway(gateway), m_grain(gateway, sourceID), m_joins(joins) {
  m_places.push_back({logicalTableID, sourceID, TablesOf(gateway, sourceID).front(), VoidID::NullID, 0, 0});
  for (std::size_t i = 0; i < m_places.size(); ++i) {
    if (m_places[i].m_bOneRow) AddPlacesBehind(i);
  }
  // A row that stands for others is known to be meant only if no other key leads to the table.
  for (Place& place : m_places) {
    const bool bOnly = std::ranges::count(m_places, place.m_logicalTableID, &Place::m_logicalTableID) == 1;
    place.m_bAmbiguous |= !place.m_bOneRow && !bOnly;
  }
}

/// The table is entered as that of each logical table that it gives rows to, first the table itself and then those that
/// its keys lead to.
void SourceTables::AddPlacesBehind(std::size_t from) {
  const Place place = m_places[from];
  const VoidIDVector ownTableIDs = TablesOf(m_gateway, place.m_sourceID);
  const VoidIDVector joinedIDs = JoinedTablesFrom(place);
  const auto add = [&](const VoidID& tableID, const VoidID& keyID) {
    if (Contains(ownTableIDs, tableID)) {
      Add({place.m_logicalTableID, place.m_sourceID, tableID, keyID, from, place.m_distance + 1});
    }
    for (const VoidID& joinedID : joinedIDs) {
      for (const VoidID& sourceID : SourcesOf(m_gateway, joinedID)) {
        if (!Contains(TablesOf(m_gateway, sourceID), tableID)) continue;
        Add({joinedID, sourceID, tableID, keyID, from, place.m_distance + 1});
      }
    }
  };
  add(place.m_tableID, VoidID::NullID);
  VoidIDVector keyIDs;
  RefATable(&m_gateway, place.m_tableID)->GetForeignKeyIDs(keyIDs);
  for (const VoidID& keyID : keyIDs) add(RefAForeignKey(&m_gateway, keyID)->GetReferencedTableID(), keyID);
}

/// A longer way to a table is none.
void SourceTables::Add(Place place) {
  const bool bOwnKey = m_places[place.m_from].m_logicalTableID == GetLogicalTableID();
  place.m_bOneRow = IsAtOneRow(place);
  if (!place.m_bOneRow && !(bOwnKey && m_grain.HasDimensionOf(place.m_logicalTableID))) return;
  const auto isSame = [&place](const Place& other) {
    return other.m_logicalTableID == place.m_logicalTableID && other.m_tableID == place.m_tableID;
  };
  const auto known = std::ranges::find_if(m_places, isSame);
  if (known == m_places.end()) {
    m_places.push_back(place);
  } else {
    known->m_bAmbiguous |= known->m_distance == place.m_distance;
  }
}

bool SourceTables::IsAtOneRow(const Place& place) const {
  const Place& from = m_places[place.m_from];
  const bool bKeyOfModel = m_joins == Joins::kOfModel || from.m_logicalTableID != GetLogicalTableID();
  if (bKeyOfModel || place.m_sourceID == from.m_sourceID) return from.m_bOneRow;
  const SourceGrain grain(m_gateway, place.m_sourceID);
  return !grain.IsEmpty() && m_grain.TellsApart(grain);
}

/// A summary may have a key of its own to what the details reach through a table that is summed up. What the logical
/// table joins itself is not reached through another one.
VoidIDVector SourceTables::JoinedTablesFrom(const Place& place) const {
  if (place.m_logicalTableID == GetLogicalTableID()) {
    return m_joins == Joins::kSummedUp ? AllJoinedTables(m_gateway, place.m_logicalTableID)
                                       : JoinedTables(m_gateway, place.m_logicalTableID);
  }
  VoidIDVector ids = JoinedTables(m_gateway, place.m_logicalTableID);
  const VoidIDVector own = JoinedTables(m_gateway, GetLogicalTableID());
  std::erase_if(ids, [&own](const VoidID& id) { return Contains(own, id); });
  return ids;
}

bool SourceTables::MayBeMissing(std::size_t place) const {
  for (; place != 0; place = m_places[place].m_from) {
    const VoidID& keyID = m_places[place].m_foreignKeyID;
    if (!keyID.IsNullID() && IsNullable(m_gateway, keyID)) return true;
  }
  return false;
}

bool SourceTables::HasKeys(std::size_t place) const {
  for (; place != 0; place = m_places[place].m_from) {
    if (m_places[place].m_foreignKeyID.IsNullID()) return false;
  }
  return true;
}
