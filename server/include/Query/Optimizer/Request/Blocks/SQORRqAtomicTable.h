#pragma once

#include <cstdint>

#include "Host/ARpGateway.h"
#include "Host/CachePhysicalSeedEntry.h"
#include "Host/KXString.h"
#include "Host/RpObjects.h"
#include "Host/UniversallyUniqueID.h"
#include "Host/VoidID.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractTable.h"
#include "Query/Optimizer/Request/Node/SQORHeap.h"
#include "Query/Optimizer/Request/Node/SQORRqFieldBytes.h"

/// A table that is read as it is: one of the repository, by its identifier, or one of the result cache, which has the
/// null identifier and an identity of its own.
class RqAtomicTable : public RqNodeImpl<RqAtomicTable, RqIdentifiedTable, kRqAtomicTable> {
 public:
  static const KXString kTablePrefix;  ///< "T", in front of the table's number in the text form.

  RqAtomicTable() = default;
  /// The table of that identifier in the repository of pRp; without a gateway the repository is unknown.
  RqAtomicTable(ARpGateway* pRp, int tableNumber, const VoidID& tableID);
  /// A table of the result cache, whose rows the engine reads from its own storage.
  RqAtomicTable(const UniversallyUniqueID& cacheTableID, const RefCntCachePhysicalSeedEntry& cacheEntry,
                int tableNumber);
  /// The copy shares the cache entry and has a record description of its own.
  RqAtomicTable(const RqAtomicTable& rhs, bool bNewIDs, bool bDeepCopy);

  /// Whether the repository says that the table is an alias; false without a gateway.
  virtual bool IsAliasedTable(ARpGateway* pRp) const;

  /// The name that the table goes by. Without an identifier it is "CacheTable", or the query of a transient table;
  /// without a gateway it is the identifier's text. Else bTargetSpecific asks first for a name that the table has in
  /// the database that this node is marked for; failing that it is the table's own name, or, unless bBareName, that
  /// with the names of all that contains it in front. An identifier that the repository does not have is a logic error.
  KXString GetTableName(ARpGateway* pRp, bool bBareName, bool bTargetSpecific) const;
  /// The name of an alias; empty for all else.
  KXString GetAliasName(ARpGateway* pRp) const;
  /// Whether the server made the table as an alias; false without a gateway.
  bool IsSystemGenerated(ARpGateway* pRp) const;
  void GetTableID(VoidID& tableID) const { tableID = m_tableID; }
  std::uint32_t GetRepositoryUniqueID32() const { return m_repositoryUniqueID; }
  /// The first join in the repository, among those of this table, that joins it by a condition with the other table and
  /// no third one; an empty handle if there is none, and for two nodes of one table. Both must be in the repository.
  RefAComplexJoin GetCommonComplexJoin(ARpGateway* pRp, const RqAtomicTable* pOtherTable) const;

  const UniversallyUniqueID& GetCacheTableID() const { return m_cacheTableID; }
  const RefCntCachePhysicalSeedEntry& GetRefCntCachePhysicalEntry() const { return m_refCntCachePhysicalEntry; }
  /// Whether it is a table of the cache whose entry is in place.
  bool ValidCacheTable() const { return !m_refCntCachePhysicalEntry.IsNull(); }
  /// Lends the record description, which the cache entry gives on the first call; null without an entry.
  KXRecordMetaData* GetMetaData();

  /// How many rows stand for the whole table; 0 for all.
  std::uint32_t GetSampleSize() const { return m_sampleSize; }
  void SetSampleSize(std::uint32_t sampleSize) { m_sampleSize = sampleSize; }

  /// Whether both name one table, whatever their numbers. The identity in the cache counts only if both have an entry;
  /// an entry on one side alone makes them differ.
  bool operator==(const RqAtomicTable& rhs) const;
  /// By repository, identifier, presence of an entry and identity in the cache. Wanted: the identity counts here
  /// without an entry too, so two tables may be equal and yet ordered.
  bool operator<(const RqAtomicTable& rhs) const;

  bool IsAtomicTable() const override { return true; }
  bool IsLeafTable() const override { return true; }
  bool IsDerivedTable() const override { return false; }
  /// The database that owns the table; an empty handle if the repository does not have the table. Asserts a gateway.
  RefADatabase GetRpDatabaseObj(ARpGateway* pRp) const override;
  /// Kind, table and target marks, and one record description if both have one. Wanted: the number takes no part.
  bool IsEquivalent(const RqAbstractTable& rhs) const override;
  /// The cache entry and the record description are left out.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  std::uint32_t m_repositoryUniqueID = ARpGateway::INVALID_UNIQUE_ID_32;
  VoidID m_tableID;
  UniversallyUniqueID m_cacheTableID;
  RefCntCachePhysicalSeedEntry m_refCntCachePhysicalEntry;
  Heap<KXRecordMetaData> m_pMetaData;
  std::uint32_t m_sampleSize = 0;

  static constexpr std::tuple kWrittenFields{&RqAtomicTable::m_repositoryUniqueID, &RqAtomicTable::m_tableID,
                                             &RqAtomicTable::m_cacheTableID, &RqAtomicTable::m_sampleSize};
};

/// Answers whether a node is a table that a database or the engine's own storage holds and the repository knows.
struct IsDatabaseTable {
  bool operator()(const RqNode& node) const;
};
