#pragma once

#include <cstddef>
#include <map>
#include <vector>

#include "Host/ARpGateway.h"

// What the business model says of the rows of a source.

/// The grain of a source: for each dimension that its rows tell apart the level down to which they do. They are summed
/// up over every other one.
class SourceGrain {
 public:
  /// How an attribute stands to the grain.
  enum class Standing {
    kToldApart,  ///< Each row is of one value.
    kBelow,      ///< The rows are summed up over it, and tell apart what is above it or beside it.
    kSummedUp,   ///< The grain does not have its dimension.
    kInNoLevel
  };

  /// The gateway is lent.
  SourceGrain(ARpGateway& gateway, const VoidID& sourceID);

  bool IsEmpty() const { return m_levelIDs.empty(); }
  bool HasDimension(const VoidID& dimensionID) const { return m_levelIDs.contains(dimensionID); }
  /// Whether it has a dimension whose members are rows of the logical table.
  bool HasDimensionOf(const VoidID& logicalTableID) const;
  /// Whether each row is of one member of the level: the dimension is there, at this level or below it.
  bool TellsApart(const VoidID& levelID) const;
  /// The same for every level of the other grain.
  bool TellsApart(const SourceGrain& other) const;
  bool IsFinerThan(const SourceGrain& other) const { return TellsApart(other) && !other.TellsApart(*this); }
  /// By the best of the levels that have the attribute.
  Standing StandingOf(const VoidID& attributeID) const;

 private:
  ARpGateway& m_gateway;
  std::map<VoidID, VoidID> m_levelIDs;  ///< By dimension.
};

/// The physical tables that the rows of a source lead to along foreign keys, each as a table of the business model.
///
/// Law: a row of the source has that row of a place which the details that it sums up have by the joins of the model.
///
/// What a foreign key of the source means is known by the grain alone: it counts where the grain has a dimension of the
/// table that it leads to. From there on, keys mean the joins of the model.
class SourceTables {
 public:
  struct Place {
    VoidID m_logicalTableID;
    VoidID m_sourceID;      ///< Of the logical table.
    VoidID m_tableID;       ///< Of the source.
    VoidID m_foreignKeyID;  ///< From the place before; null for the first place, and where that one has the same rows.
    std::size_t m_from;     ///< The place before.
    int m_distance;
    /// Whether the grain has no more than one row here for a row of the source. Else the row here is one of several, as
    /// a day that stands for its month, and only what is at or above the level of the grain has its value from it.
    bool m_bOneRow = true;
    bool m_bAmbiguous = false;  ///< The model does not tell which of several keys is the join.
  };

  enum class Joins {
    kOfModel,   ///< For the source of the details.
    kSummedUp,  ///< Those that the grain of the source leaves.
  };

  /// The gateway is lent.
  SourceTables(ARpGateway& gateway, const VoidID& logicalTableID, const VoidID& sourceID, Joins joins);

  /// The first is the source's own first table; the nearer ones come before those behind them.
  const std::vector<Place>& GetPlaces() const { return m_places; }
  const SourceGrain& GetGrain() const { return m_grain; }
  const VoidID& GetLogicalTableID() const { return m_places.front().m_logicalTableID; }
  const VoidID& GetSourceID() const { return m_places.front().m_sourceID; }
  /// Whether a row of the source may have no row there, since a key on the way may be null.
  bool MayBeMissing(std::size_t place) const;
  /// Whether a key leads to each place on the way, so that a join drops the rows that have no row there.
  bool HasKeys(std::size_t place) const;

 private:
  void AddPlacesBehind(std::size_t from);
  void Add(Place place);
  bool IsAtOneRow(const Place& place) const;
  VoidIDVector JoinedTablesFrom(const Place& place) const;

  ARpGateway& m_gateway;
  SourceGrain m_grain;
  Joins m_joins;
  std::vector<Place> m_places;
};

VoidIDVector SourcesOf(ARpGateway& gateway, const VoidID& logicalTableID);
VoidIDVector TablesOf(ARpGateway& gateway, const VoidID& sourceID);
/// The logical tables that a logical table joins, and all that these join.
VoidIDVector AllJoinedTables(ARpGateway& gateway, const VoidID& logicalTableID);
