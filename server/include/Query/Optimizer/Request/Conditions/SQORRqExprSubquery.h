#pragma once

#include <cstdint>

#include "Host/AbstractListQuerySpec.h"
#include "Host/KXString.h"
#include "Host/ServerInfo.h"
#include "Host/VoidID.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"

class RqAbstractList;

// The three forms in which a subquery stands in an expression: not compiled yet, compiled, and with its rows written to
// a table.

/// A subquery as an operand of a condition.
class RqExprSubquery : public RqExpr {
 public:
  RqExprSubquery() = default;
  RqExprSubquery(const RqExprSubquery& rhs, bool bNewIDs, bool bDeepCopy) : RqExpr(rhs, bNewIDs, bDeepCopy) {}

  RqNodeType_e GetObjectType() const override { return kRqExprSubquery; }
};

/// What the three forms have in common: the text of the query stands for the query. Two subqueries are equivalent when
/// their texts are equal, and the order is that of the checksums, then of the texts: cheap, and without a meaning of
/// its own. What the query itself is made of is never looked at.
///
/// Derived names the checksum and the text by the member pointers kCRC and kText. Both travel and are copied; neither
/// is ever worked out afresh from the query.
template <class Derived, RqNodeType_e kKind>
class RqExprSubqueryByText : public RqNodeImpl<Derived, RqExprSubquery, kKind> {
 public:
  RqExprSubqueryByText() = default;
  RqExprSubqueryByText(const RqExprSubqueryByText& rhs, bool bNewIDs, bool bDeepCopy)
      : RqNodeImpl<Derived, RqExprSubquery, kKind>(rhs, bNewIDs, bDeepCopy) {}

  /// The CRC-32 of the text's characters, four bytes each.
  std::uint32_t GetCRC() const { return Self().*Derived::kCRC; }

  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  bool IsShallowLessThan(const RqExpr& rhs) const override;

 protected:
  void SetText(const KXString& text);
  /// The checksum, then the text.
  void TextToByteVector(ByteVector& bv) const;
  const_iterator TextFromByteVector(const_iterator start);

 private:
  Derived& Self() { return static_cast<Derived&>(*this); }
  const Derived& Self() const { return static_cast<const Derived&>(*this); }
};

/// A subquery that is not compiled yet: its parse tree, which it owns, and the statement that says it.
class RqExprLogicalSubquery final : public RqExprSubqueryByText<RqExprLogicalSubquery, kRqExprLogicalSubquery> {
 public:
  RqExprLogicalSubquery() = default;
  /// Takes the parse tree, which may be null, and renders its statement through pRp.
  RqExprLogicalSubquery(ARpGateway* pRp, AbstractListQuerySpec* pListQuerySpec);
  RqExprLogicalSubquery(const RqExprLogicalSubquery& rhs, bool bNewIDs, bool bDeepCopy);

  /// The name of the common table expression that the subquery stands for; empty if it stands for none.
  virtual const KXString& GetCommonExprName() const { return m_commonExprName; }
  virtual void SetCommonExprName(const KXString& commonExprName) { m_commonExprName = commonExprName; }

  /// Lends the parse tree; null when there is none.
  const AbstractListQuerySpec* GetLogicalSubqueryParseTree() const { return m_pListQuerySpec.Get(); }
  const KXString& GetSubquerySQLString() const { return m_subquerySQL; }

  bool IsExprLogicalSubquery() const override { return true; }
  int GetMySize() const override;
  /// The common expression name is left out.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  friend class RqExprSubqueryByText;
  Heap<AbstractListQuerySpec> m_pListQuerySpec;
  std::uint32_t m_CRCforSQL = 0;
  KXString m_subquerySQL;
  KXString m_commonExprName;

  static constexpr auto kCRC = &RqExprLogicalSubquery::m_CRCforSQL;
  static constexpr auto kText = &RqExprLogicalSubquery::m_subquerySQL;
};

/// A compiled subquery: its query block, which it owns, and the text form by which it is known. The text outlives the
/// block: one that was read back from bytes has the text alone.
class RqExprPhysicalSubquery final : public RqExprSubqueryByText<RqExprPhysicalSubquery, kRqExprPhysicalSubquery> {
 public:
  RqExprPhysicalSubquery();
  /// SetSubquery on a new one.
  RqExprPhysicalSubquery(RqAbstractList* pSubquery, ARpGateway* pRp);
  /// The copy's block is self-contained; the text is not rendered anew.
  RqExprPhysicalSubquery(const RqExprPhysicalSubquery& rhs, bool bNewIDs, bool bDeepCopy);
  ~RqExprPhysicalSubquery() override;

  virtual const KXString& GetCommonExprName() const { return m_commonExprName; }
  virtual void SetCommonExprName(const KXString& commonExprName) { m_commonExprName = commonExprName; }
  /// Takes the block and renders its text through pRp; null clears the text. Wanted: the block that stood there is not
  /// deleted, as its other users may still hold it; it is the caller's from here on.
  virtual void SetSubquery(RqAbstractList* pSubquery, ARpGateway* pRp);

  /// The text by which a block is known.
  static KXString RenderBlock(const RqAbstractList& block, ARpGateway* pRp);
  /// Lends the block; null after a read-back.
  RqAbstractList* GetSubqueryRqAbstractList() { return m_pSubquery.Get(); }
  const RqAbstractList* GetSubqueryRqAbstractList() const { return m_pSubquery.Get(); }
  const KXString& GetSubqueryDumpout() const { return m_subqueryDumpout; }
  /// The databases that the subquery may be sent to together with the condition it stands in.
  const VoidIDSet& GetShippableTargets() const { return m_shippableTargets; }
  void SetShippableTargets(const VoidIDSet& shippableTargets) { m_shippableTargets = shippableTargets; }
  /// Whether many rows are expected of it.
  bool IsHighVolume() const { return m_bIsHighVolume; }
  void SetHighVolume(bool bIsHighVolume) { m_bIsHighVolume = bIsHighVolume; }

  bool IsExprPhysicalSubquery() const override { return true; }
  bool IsNavigationConstant() const override { return true; }
  /// The block, the common expression name and the targets are left out.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  friend class RqExprSubqueryByText;
  Heap<RqAbstractList> m_pSubquery;
  std::uint32_t m_CRCforDumpout = 0;
  KXString m_subqueryDumpout;
  KXString m_commonExprName;
  VoidIDSet m_shippableTargets;
  bool m_bIsHighVolume = false;

  static constexpr auto kCRC = &RqExprPhysicalSubquery::m_CRCforDumpout;
  static constexpr auto kText = &RqExprPhysicalSubquery::m_subqueryDumpout;
};

/// A subquery whose rows have been written to a table: the column that holds them.
class RqExprPersistSubquery final : public RqExprSubqueryByText<RqExprPersistSubquery, kRqExprPersistSubquery> {
 public:
  RqExprPersistSubquery() = default;
  /// The text is that of the block whose rows were written.
  RqExprPersistSubquery(const KXString& subqueryDumpout, const VoidID& databaseID, ServerInfo::TargetType targetType,
                        const KXString& tableName, const KXString& columnName);
  RqExprPersistSubquery(const RqExprPersistSubquery& rhs, bool bNewIDs, bool bDeepCopy);

  virtual bool IsExprPersistSubquery() const { return true; }
  /// The database that holds the table.
  virtual const VoidID& GetDatabaseID() const { return m_databaseID; }
  /// The kind of that database. It hides the target mark of the node, which is another matter.
  virtual ServerInfo::TargetType GetTargetType() const { return m_targetType; }
  virtual const KXString& GetTableName() const { return m_tableName; }
  virtual const KXString& GetColumnName() const { return m_columnName; }

  const KXString& GetSubqueryDumpout() const { return m_subqueryDumpout; }

  /// Wanted: the table is left out, since it is gone when the bytes are read.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  friend class RqExprSubqueryByText;
  KXString m_tableName;
  KXString m_columnName;
  VoidID m_databaseID;
  ServerInfo::TargetType m_targetType = ServerInfo::kUnknown;
  std::uint32_t m_CRCforDumpout = 0;
  KXString m_subqueryDumpout;

  static constexpr auto kCRC = &RqExprPersistSubquery::m_CRCforDumpout;
  static constexpr auto kText = &RqExprPersistSubquery::m_subqueryDumpout;
};

extern template class RqExprSubqueryByText<RqExprLogicalSubquery, kRqExprLogicalSubquery>;
extern template class RqExprSubqueryByText<RqExprPhysicalSubquery, kRqExprPhysicalSubquery>;
extern template class RqExprSubqueryByText<RqExprPersistSubquery, kRqExprPersistSubquery>;
