#pragma once

#include <cstdint>
#include <deque>
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
  static constexpr TypeID kInterfaceTypeID = kInterfaceType;

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

using MemoryPhysicalLevel = MemoryRpObject<APhysicalLevel, kTIDAPhysicalLevel>;
using MemoryAWLevel = MemoryRpObject<AAWLevel, kTIDAAWLevel>;
using MemorySessionVariableBlock = MemoryRpObject<ASessionVariableBlock, kTIDASessionVariableBlock>;

// ---------------------------------------------------------------------------------------------------------------------
// The business model. An object does not learn by itself what is added to the gateway below it: the AddX and SetX say
// it.

/// A table of the business model, with or without sources.
template <class Interface, TypeID kInterfaceType>
class MemoryEntityObject : public MemoryRpObject<Interface, kInterfaceType> {
 public:
  using MemoryRpObject<Interface, kInterfaceType>::MemoryRpObject;
  void AddAttribute(const VoidID& attributeID) { m_attributeIDs.push_back(attributeID); }

  void GetAttributeIDs(VoidIDVector& ids) const override { ids = m_attributeIDs; }

 private:
  VoidIDVector m_attributeIDs;
};

using MemoryEntity = MemoryEntityObject<AEntity, kTIDAEntity>;

class MemoryLogicalTable final : public MemoryEntityObject<ALogicalTable, kTIDALogicalTable> {
 public:
  using MemoryEntityObject::MemoryEntityObject;
  void AddSource(const VoidID& sourceID) { m_sourceIDs.push_back(sourceID); }
  void AddJoinedTable(const VoidID& logicalTableID) { m_joinedTableIDs.push_back(logicalTableID); }

  void GetSourceIDs(VoidIDVector& ids) const override { ids = m_sourceIDs; }
  void GetJoinedTableIDs(VoidIDVector& ids) const override { ids = m_joinedTableIDs; }

 private:
  VoidIDVector m_sourceIDs;
  VoidIDVector m_joinedTableIDs;
};

/// A source of the logical table that contains it.
class MemoryLogicalTableSource final : public MemoryRpObject<ALogicalTableSource, kTIDALogicalTableSource> {
 public:
  using MemoryRpObject::MemoryRpObject;
  void AddTable(const VoidID& tableID) { m_tableIDs.push_back(tableID); }
  void AddContentLevel(const VoidID& levelID) { m_contentLevelIDs.push_back(levelID); }

  void GetTableIDs(VoidIDVector& ids) const override { ids = m_tableIDs; }
  void GetContentLevelIDs(VoidIDVector& ids) const override { ids = m_contentLevelIDs; }

 private:
  VoidIDVector m_tableIDs;
  VoidIDVector m_contentLevelIDs;
};

/// An expression of which the objects in it are known, and its text, if it was told.
class MemoryExpr final : public AExpr {
 public:
  explicit MemoryExpr(VoidIDVector objectIDs, const KXString& text = {})
      : m_objectIDs(std::move(objectIDs)), m_text(text) {}
  const VoidIDVector& GetObjectIDs() const { return m_objectIDs; }
  void AppendObjects(ARpGateway* pRp, std::vector<RefARpObject>& objects, bool bRecursive) const override;
  KXString GetText(ARpGateway*) const override { return m_text; }

 private:
  VoidIDVector m_objectIDs;
  KXString m_text;
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
  MemoryAttribute& SetExpr(VoidIDVector objectIDs, const KXString& text = {}) {
    m_expr.emplace(std::move(objectIDs), text);
    return *this;
  }
  /// The objects as they were set; none without an expression.
  void GetExprObjectIDs(VoidIDVector& ids) const { ids = m_expr ? m_expr->GetObjectIDs() : VoidIDVector(); }
  void AddSourceColumn(const VoidID& columnID) { m_sourceColumnIDs.push_back(columnID); }
  void SetTypeInfo(const KXTypeInfo& typeInfo) { m_typeInfo = typeInfo; }
  void SetAggregationRules(std::vector<RpAggregationRule> rules) { m_rules = std::move(rules); }

  VoidID GetEntityID() const override { return GetParentID(); }
  VoidID GetAlternateSortOrderID() const override { return m_alternateSortOrderID; }
  Expr GetExpr() const override { return m_expr ? Expr(&*m_expr) : Expr(); }
  void GetSourceColumnIDs(VoidIDVector& ids) const override { ids = m_sourceColumnIDs; }
  KXTypeInfo GetTypeInfo() const override { return m_typeInfo; }
  void GetAggregationRules(std::vector<RpAggregationRule>& rules) const override { rules = m_rules; }

 private:
  VoidID m_alternateSortOrderID;
  std::optional<MemoryExpr> m_expr;
  VoidIDVector m_sourceColumnIDs;
  KXTypeInfo m_typeInfo;
  std::vector<RpAggregationRule> m_rules;
};

class MemoryDimension final : public MemoryRpObject<ADimension, kTIDADimension> {
 public:
  using MemoryRpObject::MemoryRpObject;
  void SetTimeDimension(bool bValue) { m_bTimeDimension = bValue; }
  /// Behind its parents.
  void AddLevel(const VoidID& levelID) { m_levelIDs.push_back(levelID); }
  void AddHierarchy(const VoidID& hierarchyID) { m_hierarchyIDs.push_back(hierarchyID); }

  bool IsTimeDimension() const override { return m_bTimeDimension; }
  void GetLevelIDs(VoidIDVector& ids) const override { ids = m_levelIDs; }
  void GetHierarchyIDs(VoidIDVector& ids) const override { ids = m_hierarchyIDs; }

 private:
  bool m_bTimeDimension = false;
  VoidIDVector m_levelIDs;
  VoidIDVector m_hierarchyIDs;
};

/// A hierarchy of the dimension that contains it.
class MemoryHierarchy final : public MemoryRpObject<AHierarchy, kTIDAHierarchy> {
 public:
  using MemoryRpObject::MemoryRpObject;
  /// Below those that are there.
  void AddLevel(const VoidID& levelID) { m_levelIDs.push_back(levelID); }

  VoidID GetDimensionID() const override { return GetParentID(); }
  void GetLevelIDs(VoidIDVector& ids) const override { ids = m_levelIDs; }

 private:
  VoidIDVector m_levelIDs;
};

/// A level of the dimension that contains it.
class MemoryLevel final : public MemoryRpObject<ALevel, kTIDALevel> {
 public:
  using MemoryRpObject::MemoryRpObject;
  void AddParentLevel(const VoidID& levelID) { m_parentLevelIDs.push_back(levelID); }
  void AddChildLevel(const VoidID& levelID) { m_childLevelIDs.push_back(levelID); }
  /// An attribute of the key is to be added as an attribute, too.
  void AddKeyAttribute(const VoidID& attributeID) { m_keyAttributeIDs.push_back(attributeID); }
  void AddAttribute(const VoidID& attributeID) { m_attributeIDs.push_back(attributeID); }
  void SetGrandTotal(bool bValue) { m_bGrandTotal = bValue; }

  VoidID GetDimensionID() const override { return GetParentID(); }
  void GetParentLevelIDs(VoidIDVector& ids) const override { ids = m_parentLevelIDs; }
  void GetChildLevelIDs(VoidIDVector& ids) const override { ids = m_childLevelIDs; }
  void GetKeyAttributeIDs(VoidIDVector& ids) const override { ids = m_keyAttributeIDs; }
  void GetAttributeIDs(VoidIDVector& ids) const override { ids = m_attributeIDs; }
  bool IsGrandTotal() const override { return m_bGrandTotal; }

 private:
  VoidIDVector m_parentLevelIDs;
  VoidIDVector m_childLevelIDs;
  VoidIDVector m_keyAttributeIDs;
  VoidIDVector m_attributeIDs;
  bool m_bGrandTotal = false;
};

class MemoryPresentationHierarchy final : public MemoryRpObject<APresentationHierarchy, kTIDAPresentationHierarchy> {
 public:
  using MemoryRpObject::MemoryRpObject;
  /// Below those that are there.
  MemoryPresentationHierarchy& AddPresentationLevel(const VoidID& levelID) {
    m_levelIDs.push_back(levelID);
    return *this;
  }

  void SetDimension(const VoidID& dimensionID) { m_dimensionID = dimensionID; }

  VoidID GetDimensionID() const override { return m_dimensionID; }
  void GetPresentationLevelIDs(VoidIDVector& ids) const override { ids = m_levelIDs; }

 private:
  VoidID m_dimensionID;
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

// ---------------------------------------------------------------------------------------------------------------------
// The data sources.

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

  void SetRowSecured(bool bValue) { m_bRowSecured = bValue; }
  void AddSchema(const VoidID& schemaID) { m_schemaIDs.push_back(schemaID); }
  void AddTable(const VoidID& tableID) { m_tableIDs.push_back(tableID); }

  ServerInfo::TargetType GetTargetType() const override { return m_targetType; }
  bool GetBooleanFeatureValue(SUFeaturesTable::FeatureId id) const override { return m_features.GetBoolean(id); }
  std::uint32_t GetIntegerFeatureValue(SUFeaturesTable::FeatureId id) const override {
    return m_features.GetUInt32(id);
  }
  KXString GetStringFeatureValue(SUFeaturesTable::FeatureId id) const override { return m_features.GetString(id); }
  bool IsRowSecured() const override { return m_bRowSecured; }
  void GetSchemaIDs(VoidIDVector& ids) const override { ids = m_schemaIDs; }
  void GetTableIDs(VoidIDVector& ids) const override { ids = m_tableIDs; }

 private:
  ServerInfo::TargetType m_targetType;
  SUFeaturesTable m_features;
  bool m_bRowSecured = false;
  VoidIDVector m_schemaIDs;
  VoidIDVector m_tableIDs;
};

/// A schema of the database that contains it.
class MemorySchema final : public MemoryRpObject<ASchema, kTIDASchema> {
 public:
  using MemoryRpObject::MemoryRpObject;
  void AddTable(const VoidID& tableID) { m_tableIDs.push_back(tableID); }

  void GetTableIDs(VoidIDVector& ids) const override { ids = m_tableIDs; }

 private:
  VoidIDVector m_tableIDs;
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

  void AddColumn(const VoidID& columnID) { m_columnIDs.push_back(columnID); }
  void AddKeyColumn(const VoidID& columnID) { m_keyColumnIDs.push_back(columnID); }
  void AddForeignKey(const VoidID& foreignKeyID) { m_foreignKeyIDs.push_back(foreignKeyID); }
  void AddComplexJoin(const VoidID& joinID) { m_complexJoinIDs.push_back(joinID); }
  /// Behind those that are there; the objects are those of the expression that says where the name holds.
  void AddDynamicName(VoidIDVector objectIDs, const KXString& name) {
    m_dynamicNames.emplace_back(MemoryExpr(std::move(objectIDs)), name);
  }
  /// Default true.
  void SetCacheable(bool bValue) { m_bCacheable = bValue; }
  void SetCachePersistenceTime(std::uint32_t seconds) { m_cacheSeconds = seconds; }

  VoidID GetDatabaseID() const override { return m_databaseID; }
  VoidID GetAliasedTableID() const override { return m_aliasedTableID; }
  bool IsSystemGenerated() const override { return m_bSystemGenerated; }
  void GetColumnIDs(VoidIDVector& ids) const override { ids = m_columnIDs; }
  void GetKeyColumnIDs(VoidIDVector& ids) const override { ids = m_keyColumnIDs; }
  void GetForeignKeyIDs(VoidIDVector& ids) const override { ids = m_foreignKeyIDs; }
  void GetComplexJoinIDs(VoidIDVector& ids) const override { ids = m_complexJoinIDs; }
  void GetDynamicNames(std::vector<std::pair<Expr, KXString>>& names) const override {
    names.clear();
    for (const auto& [expr, name] : m_dynamicNames) names.emplace_back(Expr(&expr), name);
  }
  bool IsCacheable() const override { return m_bCacheable; }
  std::uint32_t GetCachePersistenceTime() const override { return m_cacheSeconds; }

 private:
  VoidID m_databaseID;
  VoidID m_aliasedTableID;
  bool m_bSystemGenerated = false;
  VoidIDVector m_columnIDs;
  VoidIDVector m_keyColumnIDs;
  VoidIDVector m_foreignKeyIDs;
  VoidIDVector m_complexJoinIDs;
  std::deque<std::pair<MemoryExpr, KXString>> m_dynamicNames;  ///< lends its expressions
  bool m_bCacheable = true;
  std::uint32_t m_cacheSeconds = 0;
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

/// A foreign key of the table that contains it.
class MemoryForeignKey final : public MemoryRpObject<AForeignKey, kTIDAForeignKey> {
 public:
  MemoryForeignKey(std::uint32_t uniqueNum, const KXString& name, const VoidID& tableID,
                   const VoidID& referencedTableID)
      : MemoryRpObject(uniqueNum, name, tableID), m_referencedTableID(referencedTableID) {}
  void AddColumns(const VoidID& columnID, const VoidID& referencedColumnID) {
    m_columnIDs.push_back(columnID);
    m_referencedColumnIDs.push_back(referencedColumnID);
  }

  VoidID GetTableID() const override { return GetParentID(); }
  VoidID GetReferencedTableID() const override { return m_referencedTableID; }
  void GetColumnIDs(VoidIDVector& ids) const override { ids = m_columnIDs; }
  void GetReferencedColumnIDs(VoidIDVector& ids) const override { ids = m_referencedColumnIDs; }

 private:
  VoidID m_referencedTableID;
  VoidIDVector m_columnIDs;
  VoidIDVector m_referencedColumnIDs;
};

class MemoryComplexJoin final : public MemoryRpObject<AComplexJoin, kTIDAComplexJoin> {
 public:
  MemoryComplexJoin(std::uint32_t uniqueNum, const KXString& name, const VoidID& parentID, VoidIDVector tableIDs)
      : MemoryRpObject(uniqueNum, name, parentID), m_tableIDs(std::move(tableIDs)) {}

  void SetConditionText(const KXString& text) { m_conditionText = text; }

  void GetJoinedTableIDs(VoidIDVector& ids) const override { ids = m_tableIDs; }
  KXString GetConditionText() const override { return m_conditionText; }

 private:
  VoidIDVector m_tableIDs;
  KXString m_conditionText;
};

// ---------------------------------------------------------------------------------------------------------------------
// Variables.

class MemoryRpVariable final : public MemoryRpObject<ARpVariable, kTIDARpVariable> {
 public:
  MemoryRpVariable(std::uint32_t uniqueNum, const KXString& name, const VoidID& blockID, bool bSessionVariable)
      : MemoryRpObject(uniqueNum, name, blockID), m_bSessionVariable(bSessionVariable) {}
  MemoryRpVariable& SetValueText(const KXString& text) {
    m_valueText = text;
    return *this;
  }

  void SetSecurityVariable(bool bValue) { m_bSecurityVariable = bValue; }

  bool IsSessionVariable() const override { return m_bSessionVariable; }
  bool IsSecurityVariable() const override { return m_bSecurityVariable; }
  KXString GetValueText() const override { return m_valueText; }

 private:
  bool m_bSessionVariable;
  bool m_bSecurityVariable = false;
  KXString m_valueText;
};
