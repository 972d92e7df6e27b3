#pragma once

#include <cstdint>

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
  kTIDADatabase = 3023,
  kTIDATable = 3024,
  kTIDAColumn = 3025,
  kTIDASchema = 3027,
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
class AEntity : public ARpObject {};

/// A table of the business model that has sources: physical tables that its attributes are computed from.
class ALogicalTable : public AEntity {};

/// A column of the business model.
class AAttribute : public ARpObject {
 public:
  /// The AEntity that the attribute belongs to.
  virtual VoidID GetEntityID() const = 0;
  /// The attribute whose values order this one's; null if it is ordered by its own.
  virtual VoidID GetAlternateSortOrderID() const = 0;
  /// By what it is computed from other objects of the business model; null if sources give its values.
  virtual Expr GetExpr() const = 0;
};

/// A tree of levels along which measures are summed up.
class ADimension : public ARpObject {};

/// A level of a dimension.
class ALevel : public ARpObject {
 public:
  virtual VoidID GetDimensionID() const = 0;
};

/// A dimension as users see it, level by level.
class APresentationHierarchy : public ARpObject {
 public:
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
};

/// A schema of a database.
class ASchema : public ARpObject {};

/// A table of a database.
class ATable : public ARpObject {
 public:
  virtual VoidID GetDatabaseID() const = 0;
  /// The table that this one is an alias of; null if it is a table itself.
  virtual VoidID GetAliasedTableID() const = 0;
  /// Whether the server made the alias, and not the author of the repository.
  virtual bool IsSystemGenerated() const = 0;
};

/// A column of a table.
class AColumn : public ARpObject {
 public:
  virtual VoidID GetTableID() const = 0;
  virtual KXTypeInfo GetTypeInfo() const = 0;
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
  /// The value of a variable of the repository as a text of SQL; empty for one of the session, which the gateway knows.
  virtual KXString GetValueText() const = 0;
};

/// The variables that one initialisation fills.
class ASessionVariableBlock : public ARpObject {};

using RefARpObject = Ref<ARpObject>;
using RefAEntity = Ref<AEntity>;
using RefALogicalTable = Ref<ALogicalTable>;
using RefAAttribute = Ref<AAttribute>;
using RefADimension = Ref<ADimension>;
using RefALevel = Ref<ALevel>;
using RefAPresentationHierarchy = Ref<APresentationHierarchy>;
using RefAPresentationLevel = Ref<APresentationLevel>;
using RefADatabase = Ref<ADatabase>;
using RefASchema = Ref<ASchema>;
using RefATable = Ref<ATable>;
using RefAColumn = Ref<AColumn>;
using RefAPhysicalLevel = Ref<APhysicalLevel>;
using RefAAWLevel = Ref<AAWLevel>;
using RefARpVariable = Ref<ARpVariable>;
using RefASessionVariableBlock = Ref<ASessionVariableBlock>;
