#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "Host/Expr.h"
#include "Host/RpObjects.h"

// Metadata objects that hold what they answer.

/// An object of one interface: its number, name and container.
template <class Interface, TypeID kInterfaceType>
class MemoryRpObject : public Interface {
 public:
  MemoryRpObject(std::uint32_t uniqueNum, const KXString& name, const VoidID& parentID = VoidID::NullID)
      : m_id(kInterfaceType, uniqueNum), m_name(name), m_parentID(parentID) {}

  VoidID GetID() const override { return m_id; }
  KXString GetName() const override { return m_name; }
  VoidID GetParentID() const override { return m_parentID; }

 private:
  VoidID m_id;
  KXString m_name;
  VoidID m_parentID;
};

using MemoryEntity = MemoryRpObject<AEntity, kTIDAEntity>;
using MemoryLogicalTable = MemoryRpObject<ALogicalTable, kTIDALogicalTable>;
using MemoryDimension = MemoryRpObject<ADimension, kTIDADimension>;
using MemorySchema = MemoryRpObject<ASchema, kTIDASchema>;
using MemoryPhysicalLevel = MemoryRpObject<APhysicalLevel, kTIDAPhysicalLevel>;
using MemoryAWLevel = MemoryRpObject<AAWLevel, kTIDAAWLevel>;
using MemorySessionVariableBlock = MemoryRpObject<ASessionVariableBlock, kTIDASessionVariableBlock>;

/// An expression of which the objects in it are known.
class MemoryExpr final : public AExpr {
 public:
  explicit MemoryExpr(VoidIDVector objectIDs) : m_objectIDs(std::move(objectIDs)) {}
  void AppendObjects(ARpGateway* pRp, std::vector<RefARpObject>& objects, bool bRecursive) const override;

 private:
  VoidIDVector m_objectIDs;
};

/// An attribute of the entity that contains it.
class MemoryAttribute final : public MemoryRpObject<AAttribute, kTIDAAttribute> {
 public:
  using MemoryRpObject::MemoryRpObject;
  MemoryAttribute& SetAlternateSortOrder(const VoidID& attributeID) {
    m_alternateSortOrderID = attributeID;
    return *this;
  }

  /// Computes the attribute from these objects.
  MemoryAttribute& SetExpr(VoidIDVector objectIDs) {
    m_expr.emplace(std::move(objectIDs));
    return *this;
  }

  VoidID GetEntityID() const override { return GetParentID(); }
  VoidID GetAlternateSortOrderID() const override { return m_alternateSortOrderID; }
  Expr GetExpr() const override { return m_expr ? Expr(&*m_expr) : Expr(); }

 private:
  VoidID m_alternateSortOrderID;
  std::optional<MemoryExpr> m_expr;
};

/// A level of the dimension that contains it.
class MemoryLevel final : public MemoryRpObject<ALevel, kTIDALevel> {
 public:
  using MemoryRpObject::MemoryRpObject;
  VoidID GetDimensionID() const override { return GetParentID(); }
};

class MemoryPresentationHierarchy final : public MemoryRpObject<APresentationHierarchy, kTIDAPresentationHierarchy> {
 public:
  using MemoryRpObject::MemoryRpObject;
  /// Below those that are there.
  MemoryPresentationHierarchy& AddPresentationLevel(const VoidID& levelID) {
    m_levelIDs.push_back(levelID);
    return *this;
  }

  void GetPresentationLevelIDs(VoidIDVector& ids) const override { ids = m_levelIDs; }

 private:
  VoidIDVector m_levelIDs;
};

class MemoryPresentationLevel final : public MemoryRpObject<APresentationLevel, kTIDAPresentationLevel> {
 public:
  MemoryPresentationLevel(std::uint32_t uniqueNum, const KXString& name, const VoidID& parentID, const VoidID& levelID)
      : MemoryRpObject(uniqueNum, name, parentID), m_levelID(levelID) {}

  VoidID GetLevelID() const override { return m_levelID; }

 private:
  VoidID m_levelID;
};

/// A database, with its features as a table.
class MemoryDatabase final : public MemoryRpObject<ADatabase, kTIDADatabase> {
 public:
  MemoryDatabase(std::uint32_t uniqueNum, const KXString& name, ServerInfo::TargetType targetType)
      : MemoryRpObject(uniqueNum, name), m_targetType(targetType) {}

  MemoryDatabase& SetFeatures(const SUFeaturesTable& features) {
    m_features = features;
    return *this;
  }
  MemoryDatabase& SetBooleanFeature(SUFeaturesTable::FeatureId id, bool bValue) {
    m_features.SetBoolean(id, bValue);
    return *this;
  }
  MemoryDatabase& SetIntegerFeature(SUFeaturesTable::FeatureId id, std::uint32_t value) {
    m_features.SetUInt32(id, value);
    return *this;
  }
  MemoryDatabase& SetStringFeature(SUFeaturesTable::FeatureId id, const KXString& value) {
    m_features.SetString(id, value);
    return *this;
  }

  ServerInfo::TargetType GetTargetType() const override { return m_targetType; }
  bool GetBooleanFeatureValue(SUFeaturesTable::FeatureId id) const override { return m_features.GetBoolean(id); }
  std::uint32_t GetIntegerFeatureValue(SUFeaturesTable::FeatureId id) const override {
    return m_features.GetUInt32(id);
  }
  KXString GetStringFeatureValue(SUFeaturesTable::FeatureId id) const override { return m_features.GetString(id); }

 private:
  ServerInfo::TargetType m_targetType;
  SUFeaturesTable m_features;
};

/// A table. Its container is a schema or the database itself.
class MemoryTable final : public MemoryRpObject<ATable, kTIDATable> {
 public:
  MemoryTable(std::uint32_t uniqueNum, const KXString& name, const VoidID& parentID, const VoidID& databaseID)
      : MemoryRpObject(uniqueNum, name, parentID), m_databaseID(databaseID) {}

  MemoryTable& SetAliasOf(const VoidID& tableID) {
    m_aliasedTableID = tableID;
    return *this;
  }
  MemoryTable& SetSystemGenerated(bool bValue) {
    m_bSystemGenerated = bValue;
    return *this;
  }

  VoidID GetDatabaseID() const override { return m_databaseID; }
  VoidID GetAliasedTableID() const override { return m_aliasedTableID; }
  bool IsSystemGenerated() const override { return m_bSystemGenerated; }

 private:
  VoidID m_databaseID;
  VoidID m_aliasedTableID;
  bool m_bSystemGenerated = false;
};

/// A column of the table that contains it.
class MemoryColumn final : public MemoryRpObject<AColumn, kTIDAColumn> {
 public:
  MemoryColumn(std::uint32_t uniqueNum, const KXString& name, const VoidID& tableID, const KXTypeInfo& typeInfo)
      : MemoryRpObject(uniqueNum, name, tableID), m_typeInfo(typeInfo) {}

  VoidID GetTableID() const override { return GetParentID(); }
  KXTypeInfo GetTypeInfo() const override { return m_typeInfo; }

 private:
  KXTypeInfo m_typeInfo;
};

class MemoryRpVariable final : public MemoryRpObject<ARpVariable, kTIDARpVariable> {
 public:
  MemoryRpVariable(std::uint32_t uniqueNum, const KXString& name, const VoidID& blockID, bool bSessionVariable)
      : MemoryRpObject(uniqueNum, name, blockID), m_bSessionVariable(bSessionVariable) {}
  MemoryRpVariable& SetValueText(const KXString& text) {
    m_valueText = text;
    return *this;
  }

  bool IsSessionVariable() const override { return m_bSessionVariable; }
  KXString GetValueText() const override { return m_valueText; }

 private:
  bool m_bSessionVariable;
  KXString m_valueText;
};
