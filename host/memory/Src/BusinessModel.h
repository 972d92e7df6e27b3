#pragma once

#include <vector>

#include "ModelObjects.h"

/// The business model: the keys "logicalTables", "dimensions" and "presentationHierarchies". What its sources, columns
/// and expressions refer to in data sources and variables must have been read before.
class BusinessModel {
 public:
  explicit BusinessModel(ModelObjects& objects) : m_objects(objects) {}

  /// Makes the objects. Faults are reported.
  void Read(const JsonCursor& document);

 private:
  // Everything is made before what refers to it is read, so that a model may refer to what stands further down.
  MemoryLogicalTable* MakeTable(const JsonCursor& table, std::vector<MemoryAttribute*>& attributes);
  void ReadDimension(const JsonCursor& dimension);
  MemoryLevel* MakeLevel(const JsonCursor& level, const VoidID& dimensionID, const VoidID& tableID);
  void ReadHierarchies(const JsonCursor& hierarchies, MemoryDimension& dimension);
  void MakeHierarchy(const KXString& name, const VoidIDVector& levelIDs, MemoryDimension& dimension);
  void LinkLevels(const JsonCursor& dimension, MemoryDimension& made, const std::vector<MemoryLevel*>& levels);

  void ReadJoins(const JsonCursor& joins, MemoryLogicalTable& table);
  void ReadSource(const JsonCursor& source, MemoryLogicalTable& table);
  bool ReadSourceTables(const JsonCursor& tables, const MemoryLogicalTable& table, VoidIDVector& ids);
  void ReadContent(const JsonCursor& content, MemoryLogicalTableSource& source);
  void ReadColumn(const JsonCursor& column, MemoryAttribute& attribute);
  void ReadSourceColumns(const JsonCursor& from, MemoryAttribute& attribute);
  void ReadExpression(const JsonCursor& expression, MemoryAttribute& attribute);
  void ReadAggregation(const JsonCursor& aggregation, MemoryAttribute& attribute);

  void CheckTable(const JsonCursor& table, const MemoryLogicalTable& made,
                  const std::vector<MemoryAttribute*>& attributes);
  void CheckJoin(const JsonCursor& join, const MemoryLogicalTable& table);
  void CheckContent(const JsonCursor& content, const MemoryLogicalTable& table, const VoidIDSet& sourceTableIDs);

  void ReadPresentationHierarchy(const JsonCursor& hierarchy);

  /// The tables of all sources of a logical table.
  VoidIDVector SourceTablesOf(const VoidID& logicalTableID) const;
  KXString NamesOf(const VoidIDVector& ids) const;

  ModelObjects& m_objects;
  // By their places in the array; null where none could be made.
  std::vector<MemoryLogicalTable*> m_tables;
  std::vector<std::vector<MemoryAttribute*>> m_attributes;  ///< of each table
  /// The logical table that a dimension of this model takes its columns from.
  std::map<VoidID, VoidID> m_tableOfDimension;
};
