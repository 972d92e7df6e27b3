#pragma once

#include <cstdint>

#include "Host/ARpGateway.h"
#include "Host/RpObjects.h"
#include "Host/VoidID.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeImpl.h"

/// Whatever can stand where a table stands.
class RqAbstractTable : public RqNode {
 public:
  using RqNode::RqNode;

  /// Whether it is evaluated in one place: nothing under it has to be planned apart.
  virtual bool IsLeafTable() const = 0;
  virtual bool IsDerivedTable() const { return false; }
  virtual bool IsAtomicTable() const { return false; }
  virtual bool IsRqOpaqueTable() const { return false; }
  virtual bool IsIdentifiedTable() const { return false; }
  virtual bool IsTableReference() const { return false; }
  virtual bool IsDataTypeProvidingTransientTable() const { return false; }
  virtual bool IsTELMNativeTable() const { return false; }
  /// Whether both stand for the same rows, as far as a class can tell; here: whether they are of one kind.
  virtual bool IsEquivalent(const RqAbstractTable& rhs) const { return GetObjectType() == rhs.GetObjectType(); }

  /// Whether it is a reference to joined tables. References that hold one table alone are looked through.
  bool IsTableReferenceJoinTree() const;

  bool IsAbstractTable() const override { return true; }
  RqNodeType_e GetObjectType() const override { return kRqAbstractTable; }
};

/// A table that columns are resolved against: they know it by its number in the block.
class RqIdentifiedTable : public RqAbstractTable {
 public:
  explicit RqIdentifiedTable(int tableNumber = 0) : m_correlationNumber(tableNumber) {}
  RqIdentifiedTable(const RqIdentifiedTable& rhs, bool bNewIDs, bool bDeepCopy)
      : RqAbstractTable(rhs, bNewIDs, bDeepCopy), m_correlationNumber(rhs.m_correlationNumber) {}

  virtual int GetTableNumber() const { return m_correlationNumber; }
  virtual void SetTableNumber(int tableNumber) { m_correlationNumber = tableNumber; }

  bool IsIdentifiedTable() const override { return true; }
  /// Kind and number.
  bool IsEquivalent(const RqAbstractTable& rhs) const override;
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;
  RqNodeType_e GetObjectType() const override { return kRqIdentifiedTable; }

 private:
  std::int32_t m_correlationNumber;
};

/// A table of the business model.
class RqEntity final : public RqNodeImpl<RqEntity, RqIdentifiedTable, kRqEntity> {
 public:
  RqEntity() = default;
  /// The table of that identifier in the repository of pRp.
  RqEntity(ARpGateway* pRp, const VoidID& objID);
  RqEntity(const RqEntity& rhs, bool bNewIDs, bool bDeepCopy);

  RefAEntity GetRpEntity(ARpGateway* pRp) const { return RefAEntity(pRp, m_objID); }
  const VoidID& GetID() const { return m_objID; }
  /// What GetTableID of its attributes answers.
  const VoidID& GetTableID() const { return m_objID; }
  std::uint32_t GetRepositoryUniqueID32() const { return m_repositoryUniqueID; }

  bool IsEntity() const override { return true; }
  bool IsLeafTable() const override { return true; }
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  VoidID m_objID;
  std::uint32_t m_repositoryUniqueID = ARpGateway::INVALID_UNIQUE_ID_32;
};
