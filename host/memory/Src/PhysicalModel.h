#pragma once

#include <vector>

#include "ModelObjects.h"

/// The data sources of a model: the keys "databases", "tables" and "joins".
class PhysicalModel {
 public:
  explicit PhysicalModel(ModelObjects& objects) : m_objects(objects) {}

  /// Makes the objects. Faults are reported.
  void Read(const JsonCursor& document);

  /// Whether a foreign key leads from one of the tables to the other.
  static bool AreJoined(const ModelObjects& objects, const VoidID& a, const VoidID& b);
  static bool RefersTo(const ModelObjects& objects, const VoidID& tableID, const VoidID& referencedTableID);

 private:
  void ReadDatabase(const JsonCursor& database);
  MemoryTable* MakeTable(const JsonCursor& table);
  MemoryTable* MakeAlias(const JsonCursor& table);
  void PutIntoContainer(const MemoryTable& table);
  void ReadColumn(const JsonCursor& column, MemoryTable& table);
  void ReadKey(const JsonCursor& key, MemoryTable& table);
  void ReadForeignKey(const JsonCursor& foreignKey, MemoryTable& table);
  void ReadDynamicNames(const JsonCursor& names, MemoryTable& table);
  void ReadJoin(const JsonCursor& join);
  void CheckCondition(const JsonCursor& condition, const VoidIDVector& tableIDs);

  ModelObjects& m_objects;
  /// By their places in the array; null where none could be made.
  std::vector<MemoryTable*> m_tables;
};

/// A data type as SQL writes it: "INTEGER", "VARCHAR(30)", "DECIMAL(12,2)". Values are not null.
KXTypeInfo ReadType(const JsonCursor& text);
/// Whether values of the types are of one class. A type that is not known is the fault of another place.
bool AreComparable(const KXTypeInfo& a, const KXTypeInfo& b);
