#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "Host/KXDataType.h"
#include "Host/KXString.h"
#include "Host/Ref.h"
#include "Host/SUFeaturesTable.h"
#include "Host/ServerInfo.h"
#include "Host/VoidID.h"

class ARpGateway;
class Expr;

// The objects of the metadata repository, as far as the compiler asks them. A repository implements these interfaces;
// the compiler reaches its objects through the gateway and never owns one. Objects name each other by identifier, null
// for "none", and the caller looks the identifier up.

/// Numbers of the metadata interfaces, as they stand in a VoidID.
enum RpInterfaceType : TypeID {
  kTIDALogicalTable = 3001,
  kTIDAEntity = 3002,
  kTIDAAttribute = 3003,
  kTIDADimension = 3004,
  kTIDALevel = 3005,
  kTIDAPhysicalLevel = 3006,
  kTIDAAWLevel = 3007,
  kTIDAPresentationHierarchy = 3008,
  kTIDAPresentationLevel = 3009,
  kTIDALogicalTableSource = 3010,
  kTIDAHierarchy = 3011,
  kTIDADatabase = 3023,
  kTIDATable = 3024,
  kTIDAColumn = 3025,
  kTIDASchema = 3027,
  kTIDAForeignKey = 3028,
  kTIDAComplexJoin = 3029,
  kTIDARpVariable = 3031,
  kTIDASessionVariableBlock = 3032
};

/// A named object in the containment tree of the repository.
class ARpObject {
 public:
  virtual ~ARpObject() = default;

  virtual VoidID GetID() const = 0;
  virtual KXString GetName() const = 0;
  /// The object that contains this one; null at the top.
  virtual VoidID GetParentID() const = 0;

  /// The names from the outermost container down to this object. Containers that the gateway does not have, and a null
  /// gateway, end the way up. Raises ErrorMessage kMsgObjectContainsItself if there is no top.
  KXStringVector GetPath(ARpGateway* pRp) const;
  /// GetPath joined by ".".
  KXString GetQualifiedName(ARpGateway* pRp) const;

 protected:
  ARpObject() = default;
  ARpObject(const ARpObject&) = default;
  ARpObject& operator=(const ARpObject&) = default;
};

// The business model.

/// A table of the business model.
class AEntity : public ARpObject {
 public:
  /// Its AAttribute objects, in the order of their author.
  virtual void GetAttributeIDs(VoidIDVector& ids) const = 0;
};

/// A table of the business model that has sources: physical tables that its attributes are computed from.
class ALogicalTable : public AEntity {
 public:
  /// Its ALogicalTableSource objects.
  virtual void GetSourceIDs(VoidIDVector& ids) const = 0;
  /// The ALogicalTable objects of which each row of this one has one row at most.
  virtual void GetJoinedTableIDs(VoidIDVector& ids) const = 0;
};

/// Tables of a data source that give a logical table its rows, at one grain.
class ALogicalTableSource : public ARpObject {
 public:
  /// Its ATable objects. Each but the first has a foreign key to one before it, or is referenced by one of these.
  virtual void GetTableIDs(VoidIDVector& ids) const = 0;
  /// Its grain: for each dimension that its rows still tell apart the ALevel down to which they do.
  virtual void GetContentLevelIDs(VoidIDVector& ids) const = 0;
};

/// How the values of an attribute are summed up along a dimension.
struct RpAggregationRule {
  VoidID m_dimensionID;  ///< Null: along every dimension that has no rule of its own.
  KXString m_function;   ///< "SUM", "COUNT", "COUNT_DISTINCT", "AVG", "MIN", "MAX", "FIRST" or "LAST".
};

/// A column of the business model.
class AAttribute : public ARpObject {
 public:
  /// The AEntity that the attribute belongs to.
  virtual VoidID GetEntityID() const = 0;
  /// The attribute whose values order this one's; null if it is ordered by its own.
  virtual VoidID GetAlternateSortOrderID() const = 0;
  /// By what it is computed from other objects of the business model; null if sources give its values.
  virtual Expr GetExpr() const = 0;
  /// The AColumn objects that give its values, one at most for each source of its entity; none if it is computed.
  virtual void GetSourceColumnIDs(VoidIDVector& ids) const = 0;
  virtual KXTypeInfo GetTypeInfo() const = 0;
  /// None if it is no measure. The rule without a dimension is the last.
  virtual void GetAggregationRules(std::vector<RpAggregationRule>& rules) const = 0;
};

/// A tree of levels along which measures are summed up.
class ADimension : public ARpObject {
 public:
  /// Whether its members follow each other in time: the keys of a level then sort its members by time.
  virtual bool IsTimeDimension() const = 0;
  /// Its ALevel objects: no level stands before one of its parents.
  virtual void GetLevelIDs(VoidIDVector& ids) const = 0;
  /// Its AHierarchy objects.
  virtual void GetHierarchyIDs(VoidIDVector& ids) const = 0;
};

/// One way from the top of a dimension to the bottom.
class AHierarchy : public ARpObject {
 public:
  virtual VoidID GetDimensionID() const = 0;
  /// Its ALevel objects, from the top.
  virtual void GetLevelIDs(VoidIDVector& ids) const = 0;
};

/// A level of a dimension.
class ALevel : public ARpObject {
 public:
  virtual VoidID GetDimensionID() const = 0;
  /// The levels directly above and below, in any hierarchy of the dimension.
  virtual void GetParentLevelIDs(VoidIDVector& ids) const = 0;
  virtual void GetChildLevelIDs(VoidIDVector& ids) const = 0;
  /// The AAttribute objects whose values together tell its members apart; none for the one member of a grand total.
  virtual void GetKeyAttributeIDs(VoidIDVector& ids) const = 0;
  /// The AAttribute objects that have one value for each member, those of the key in front.
  virtual void GetAttributeIDs(VoidIDVector& ids) const = 0;
  /// Whether it has one member alone, which stands for all.
  virtual bool IsGrandTotal() const = 0;
};

/// A dimension as users see it, level by level.
class APresentationHierarchy : public ARpObject {
 public:
  virtual VoidID GetDimensionID() const = 0;
  /// Its APresentationLevel objects, from the top.
  virtual void GetPresentationLevelIDs(VoidIDVector& ids) const = 0;
};

/// A level as users see it.
class APresentationLevel : public ARpObject {
 public:
  /// The ALevel behind it.
  virtual VoidID GetLevelID() const = 0;
};

// The data sources.

/// A database.
class ADatabase : public ARpObject {
 public:
  virtual ServerInfo::TargetType GetTargetType() const = 0;
  // What the database can do, without any override by a request.
  virtual bool GetBooleanFeatureValue(SUFeaturesTable::FeatureId id) const = 0;
  virtual std::uint32_t GetIntegerFeatureValue(SUFeaturesTable::FeatureId id) const = 0;
  virtual KXString GetStringFeatureValue(SUFeaturesTable::FeatureId id) const = 0;
  /// Whether it shows each user rows of his own, by security of its own.
  virtual bool IsRowSecured() const = 0;
  /// Its ASchema objects.
  virtual void GetSchemaIDs(VoidIDVector& ids) const = 0;
  /// The ATable objects that it contains outside any schema.
  virtual void GetTableIDs(VoidIDVector& ids) const = 0;
};

/// A schema of a database.
class ASchema : public ARpObject {
 public:
  /// Its ATable objects.
  virtual void GetTableIDs(VoidIDVector& ids) const = 0;
};

/// A table of a database.
class ATable : public ARpObject {
 public:
  virtual VoidID GetDatabaseID() const = 0;
  /// The table that this one is an alias of; null if it is a table itself.
  virtual VoidID GetAliasedTableID() const = 0;
  /// Whether the server made the alias, and not the author of the repository.
  virtual bool IsSystemGenerated() const = 0;
  /// Its AColumn objects, in the order of the table.
  virtual void GetColumnIDs(VoidIDVector& ids) const = 0;
  /// The AColumn objects of its primary key; none if it has no such key.
  virtual void GetKeyColumnIDs(VoidIDVector& ids) const = 0;
  /// The AForeignKey objects that lead from this table to others.
  virtual void GetForeignKeyIDs(VoidIDVector& ids) const = 0;
  /// The AComplexJoin objects that the table takes part in.
  virtual void GetComplexJoinIDs(VoidIDVector& ids) const = 0;
  /// The names that the table goes by in place of its own: the first object of each expression says where it does. None
  /// for an alias, which goes by those of its table.
  virtual void GetDynamicNames(std::vector<std::pair<Expr, KXString>>& names) const = 0;
  /// Whether results over the table may be kept.
  virtual bool IsCacheable() const = 0;
  /// How many seconds results over the table may be kept; 0 for no limit.
  virtual std::uint32_t GetCachePersistenceTime() const = 0;
};

/// A column of a table.
class AColumn : public ARpObject {
 public:
  virtual VoidID GetTableID() const = 0;
  virtual KXTypeInfo GetTypeInfo() const = 0;
};

/// A join by keys, which a table contains: each of its rows refers to one row of another table at most.
class AForeignKey : public ARpObject {
 public:
  virtual VoidID GetTableID() const = 0;
  virtual VoidID GetReferencedTableID() const = 0;
  /// AColumn objects of the table, and as many of the referenced table that they are equal to, pair by pair.
  virtual void GetColumnIDs(VoidIDVector& ids) const = 0;
  virtual void GetReferencedColumnIDs(VoidIDVector& ids) const = 0;
};

/// A join of tables by any condition, of which no key is known.
class AComplexJoin : public ARpObject {
 public:
  /// Its ATable objects. One that is joined with itself stands twice.
  virtual void GetJoinedTableIDs(VoidIDVector& ids) const = 0;
  /// When rows belong together, as a text of SQL that names columns with their tables.
  virtual KXString GetConditionText() const = 0;
};

/// A level that a data source has itself.
class APhysicalLevel : public ARpObject {};

/// A level of an analytic workspace.
class AAWLevel : public ARpObject {};

// Variables.

/// A variable of the repository or of its sessions.
class ARpVariable : public ARpObject {
 public:
  virtual bool IsSessionVariable() const = 0;
  /// Whether what a user may see depends on it.
  virtual bool IsSecurityVariable() const = 0;
  /// The value of a variable of the repository as a text of SQL; empty for one of the session, which the gateway knows.
  virtual KXString GetValueText() const = 0;
};

/// The variables that one initialisation fills.
class ASessionVariableBlock : public ARpObject {};

using RefARpObject = Ref<ARpObject>;
using RefAEntity = Ref<AEntity>;
using RefALogicalTable = Ref<ALogicalTable>;
using RefALogicalTableSource = Ref<ALogicalTableSource>;
using RefAAttribute = Ref<AAttribute>;
using RefADimension = Ref<ADimension>;
using RefAHierarchy = Ref<AHierarchy>;
using RefALevel = Ref<ALevel>;
using RefAPresentationHierarchy = Ref<APresentationHierarchy>;
using RefAPresentationLevel = Ref<APresentationLevel>;
using RefADatabase = Ref<ADatabase>;
using RefASchema = Ref<ASchema>;
using RefATable = Ref<ATable>;
using RefAColumn = Ref<AColumn>;
using RefAForeignKey = Ref<AForeignKey>;
using RefAComplexJoin = Ref<AComplexJoin>;
using RefAPhysicalLevel = Ref<APhysicalLevel>;
using RefAAWLevel = Ref<AAWLevel>;
using RefARpVariable = Ref<ARpVariable>;
using RefASessionVariableBlock = Ref<ASessionVariableBlock>;
