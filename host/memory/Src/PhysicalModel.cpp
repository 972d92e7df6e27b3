#include "PhysicalModel.h"

#include <algorithm>
#include <map>

#include "FeatureModel.h"
#include "Host/BaseStringUtil.h"
#include "HostMemory/NearestNames.h"
#include "SqlWords.h"

namespace {

// ---------------------------------------------------------------------------------------------------------------------
// Types

constexpr int kMaxDigits = 40;
constexpr int kMaxFractionDigits = 9;

/// What may stand in the parentheses of a type.
struct TypeDimensions {
  std::size_t m_min = 0;
  std::size_t m_max = 0;
  int m_maxPrecision = INT32_MAX;
};

TypeDimensions DimensionsOf(KXDataType type) {
  switch (SUKXDataTypeUtility::GetKXTypeClass(type)) {
    case KXTypeClass::kText:
    case KXTypeClass::kBinary:
      if (type == KXLongVarCharData || type == KXLongVarBinaryData) return {};
      return {.m_min = 1, .m_max = 1};
    case KXTypeClass::kDecimal:
      return {.m_min = 1, .m_max = 2, .m_maxPrecision = kMaxDigits};
    case KXTypeClass::kTime:
    case KXTypeClass::kDateTime:
      return {.m_min = 0, .m_max = 1, .m_maxPrecision = kMaxFractionDigits};
    case KXTypeClass::kBit:
    case KXTypeClass::kInteger:
    case KXTypeClass::kFloat:
    case KXTypeClass::kMoney:
    case KXTypeClass::kDate:
    case KXTypeClass::kInterval:
    case KXTypeClass::kObject:
    case KXTypeClass::kBoolean:
    case KXTypeClass::kUnknown:
      return {};
  }
  return {};
}

KXStringVector TypeNames() {
  KXStringVector names;
  for (int type = 0; type < KXUnknown; ++type) {
    names.emplace_back();
    SUKXDataTypeUtility::GetSingleWordKXDataTypeName(static_cast<KXDataType>(type), names.back());
  }
  return names;
}

/// The numbers in the parentheses behind a type's name; empty if there are no parentheses.
std::vector<int> ReadDimensions(const JsonCursor& cursor, std::wstring_view text) {
  std::vector<int> numbers;
  if (text.empty()) return numbers;
  const KXString expected = L"a type as in INTEGER, VARCHAR(30) or DECIMAL(12,2)";
  if (!text.ends_with(L')')) cursor.ThrowUnless(expected);
  text = text.substr(1, text.size() - 2);
  while (true) {
    const std::size_t comma = std::min(text.find(L','), text.size());
    std::wstring_view number = text.substr(0, comma);
    while (number.starts_with(L' ')) number.remove_prefix(1);
    const auto value = BaseStringUtil::UIntFrom(BaseStringUtil::TrimTrailingBlanks(number));
    if (!value || *value > INT32_MAX) cursor.ThrowUnless(expected);
    numbers.push_back(static_cast<int>(*value));
    if (comma == text.size()) return numbers;
    text.remove_prefix(comma + 1);
  }
}

void CheckDimensions(const JsonCursor& cursor, KXDataType type, const std::vector<int>& numbers) {
  const TypeDimensions allowed = DimensionsOf(type);
  KXString name;
  SUKXDataTypeUtility::GetSingleWordKXDataTypeName(type, name);
  if (numbers.size() < allowed.m_min) cursor.Throw(name + L" must say how long it is, as in " + name + L"(30)");
  if (numbers.size() > allowed.m_max) {
    cursor.Throw(allowed.m_max == 0 ? name + L" has no length" : name + L" has too many numbers behind it");
  }
  if (numbers.empty()) return;
  if (numbers[0] > allowed.m_maxPrecision || (allowed.m_min > 0 && numbers[0] == 0)) {
    cursor.Throw(L"the length of " + name + L" goes from " + (allowed.m_min > 0 ? L"1" : L"0") + L" to " +
                 BaseStringUtil::StringFrom(allowed.m_maxPrecision));
  }
  if (numbers.size() > 1 && numbers[1] > numbers[0]) {
    cursor.Throw(L"a number cannot have more digits behind the point than it has in all");
  }
}

bool AreOfOneDatabase(const VoidID& databaseA, const VoidID& databaseB) {
  return databaseA.IsNullID() || databaseB.IsNullID() || databaseA == databaseB;
}

// ---------------------------------------------------------------------------------------------------------------------

VoidIDVector KeyOf(const ModelObjects& objects, const VoidID& tableID) {
  VoidIDVector ids;
  objects.Get<ATable>(tableID).GetKeyColumnIDs(ids);
  return ids;
}

}  // namespace

bool AreComparable(const KXTypeInfo& a, const KXTypeInfo& b) {
  return a.type_ == KXUnknown || b.type_ == KXUnknown ||
         SUKXDataTypeUtility::GetKXTypeClass(a.type_) == SUKXDataTypeUtility::GetKXTypeClass(b.type_);
}

KXTypeInfo ReadType(const JsonCursor& text) {
  const KXString whole = text.AsText();
  const std::size_t parenthesis = std::min(whole.find(L'('), whole.size());
  const KXString name(BaseStringUtil::TrimTrailingBlanks(whole.view().substr(0, parenthesis)));
  const KXDataType type = SUKXDataTypeUtility::GetKXDataTypeFromSingleWordName(name);
  if (type == KXUnknown) text.Throw(L"there is no type " + name + DidYouMean(name, TypeNames()));
  const std::vector<int> numbers = ReadDimensions(text, whole.view().substr(parenthesis));
  CheckDimensions(text, type, numbers);
  const int precision = numbers.empty() ? 0 : numbers[0];
  return KXTypeInfo(type, precision, static_cast<short>(numbers.size() > 1 ? numbers[1] : 0), 0);
}

bool PhysicalModel::RefersTo(const ModelObjects& objects, const VoidID& tableID, const VoidID& referencedTableID) {
  VoidIDVector foreignKeyIDs;
  objects.Get<ATable>(tableID).GetForeignKeyIDs(foreignKeyIDs);
  return std::ranges::any_of(foreignKeyIDs, [&](const VoidID& id) {
    return objects.Get<AForeignKey>(id).GetReferencedTableID() == referencedTableID;
  });
}

bool PhysicalModel::AreJoined(const ModelObjects& objects, const VoidID& a, const VoidID& b) {
  return RefersTo(objects, a, b) || RefersTo(objects, b, a);
}

void PhysicalModel::Read(const JsonCursor& document) {
  document.Member("databases", [this](const JsonCursor& databases) {
    databases.ForEachElement([this](const JsonCursor& database) { ReadDatabase(database); });
  });
  document.Member("tables", [this](const JsonCursor& tables) {
    m_tables.resize(tables.GetJson().size());
    // An alias has the columns of a table that may stand behind it, and keys refer to both.
    tables.ForEachElement([this](const JsonCursor& table) {
      table.CheckKeys({"name", "schema", "database", "columns", "key", "foreignKeys", "names", "cacheable",
                       "cacheSeconds", "aliasOf", "systemGenerated"});
      if (!table.Has("aliasOf")) m_tables[table.GetIndex()] = MakeTable(table);
    });
    tables.ForEachElement([this](const JsonCursor& table) {
      if (table.Has("aliasOf")) m_tables[table.GetIndex()] = MakeAlias(table);
    });
    ForEachMade(tables, m_tables, [this](const JsonCursor& table, MemoryTable& made) {
      table.Member("foreignKeys", [&](const JsonCursor& foreignKeys) {
        foreignKeys.ForEachElement([&](const JsonCursor& foreignKey) { ReadForeignKey(foreignKey, made); });
      });
    });
  });
  document.Member("joins", [this](const JsonCursor& joins) {
    joins.ForEachElement([this](const JsonCursor& join) { ReadJoin(join); });
  });
}

void PhysicalModel::ReadDatabase(const JsonCursor& database) {
  database.CheckKeys({"name", "preset", "target", "features", "rowSecured", "schemas"});
  KXString name;
  database.RequiredMember(
      "name", [&](const JsonCursor& cursor) { name = m_objects.NewName(cursor, VoidID::NullID, kTIDADatabase); });
  const FeaturePreset described = ReadFeaturePreset(database, name);
  if (name.empty()) return;
  auto& made = m_objects.Make<MemoryDatabase>(name, described.m_targetType);
  made.SetFeatures(described.m_features);
  database.Member("rowSecured", [&](const JsonCursor& cursor) { made.SetRowSecured(cursor.AsBoolean()); });
  database.Member("schemas", [&](const JsonCursor& schemas) {
    schemas.ForEachElement([&](const JsonCursor& schema) {
      const KXString schemaName = m_objects.NewName(schema, made.GetID(), kTIDASchema);
      made.AddSchema(m_objects.Make<MemorySchema>(schemaName, made.GetID()).GetID());
    });
  });
}

/// Tells the schema or database, which may be one of the gateway, that it contains the table.
void PhysicalModel::PutIntoContainer(const MemoryTable& table) {
  m_objects.AtHandOver([parentID = table.GetParentID(), tableID = table.GetID()](MemoryGateway& gateway) {
    ARpObject* const pParent = gateway.LookupObject(parentID);
    if (auto* const pSchema = dynamic_cast<MemorySchema*>(pParent)) pSchema->AddTable(tableID);
    if (auto* const pDatabase = dynamic_cast<MemoryDatabase*>(pParent)) pDatabase->AddTable(tableID);
  });
}

MemoryTable* PhysicalModel::MakeTable(const JsonCursor& table) {
  if (table.Has("systemGenerated")) table.Report(L"only an alias is systemGenerated");
  if (table.Has("schema") == table.Has("database")) {
    table.Report(L"a table stands in a schema or in a database: one of these keys must be there");
  }
  VoidID parentID;
  table.Member("schema", [&](const JsonCursor& schema) { parentID = m_objects.Refer(schema, kTIDASchema); });
  table.Member("database", [&](const JsonCursor& database) { parentID = m_objects.Refer(database, kTIDADatabase); });
  KXString name;
  table.RequiredMember("name",
                       [&](const JsonCursor& cursor) { name = m_objects.NewName(cursor, parentID, kTIDATable); });
  if (name.empty()) return nullptr;
  // One whose container is not known is made even so, at the top: what refers to it is no further fault.
  const bool bInSchema = parentID.GetInterfaceTypeID() == kTIDASchema;
  const VoidID databaseID = bInSchema ? m_objects.Get<ASchema>(parentID).GetParentID() : parentID;
  auto& made = m_objects.Make<MemoryTable>(name, parentID, databaseID);
  PutIntoContainer(made);
  table.RequiredMember("columns", [&](const JsonCursor& columns) {
    columns.ForEachElement([&](const JsonCursor& column) { ReadColumn(column, made); });
    if (columns.GetJson().empty()) columns.Throw(L"a table must have columns");
  });
  table.Member("key", [&](const JsonCursor& key) { ReadKey(key, made); });
  table.Member("names", [&](const JsonCursor& names) { ReadDynamicNames(names, made); });
  table.Member("cacheable", [&](const JsonCursor& cursor) { made.SetCacheable(cursor.AsBoolean()); });
  table.Member("cacheSeconds", [&](const JsonCursor& cursor) { made.SetCachePersistenceTime(cursor.AsUInt32()); });
  return &made;
}

MemoryTable* PhysicalModel::MakeAlias(const JsonCursor& table) {
  for (const char* const pKey : {"schema", "database", "columns", "key", "names", "cacheable", "cacheSeconds"}) {
    table.Member(pKey, [](const JsonCursor& member) { member.Throw(L"an alias has this from its table"); });
  }
  VoidID baseID;
  table.Member("aliasOf", [&](const JsonCursor& cursor) {
    baseID = m_objects.Refer(cursor, kTIDATable);
    if (!m_objects.Get<ATable>(baseID).GetAliasedTableID().IsNullID()) {
      baseID = VoidID::NullID;
      cursor.Throw(cursor.AsText() + L" is an alias itself; the table behind it must stand here");
    }
  });
  const VoidID parentID = baseID.IsNullID() ? baseID : m_objects.Get<ATable>(baseID).GetParentID();
  KXString name;
  table.RequiredMember("name",
                       [&](const JsonCursor& cursor) { name = m_objects.NewName(cursor, parentID, kTIDATable); });
  if (name.empty() || baseID.IsNullID()) return nullptr;

  const auto& base = m_objects.Get<ATable>(baseID);
  auto& made = m_objects.Make<MemoryTable>(name, parentID, base.GetDatabaseID());
  PutIntoContainer(made);
  made.SetAliasOf(baseID).SetCacheable(base.IsCacheable());
  made.SetCachePersistenceTime(base.GetCachePersistenceTime());
  table.Member("systemGenerated", [&](const JsonCursor& cursor) { made.SetSystemGenerated(cursor.AsBoolean()); });
  const VoidIDVector keyIDs = KeyOf(m_objects, baseID);
  VoidIDVector columnIDs;
  base.GetColumnIDs(columnIDs);
  for (const VoidID& id : columnIDs) {
    const auto& column = m_objects.Get<AColumn>(id);
    const VoidID copyID = m_objects.Make<MemoryColumn>(column.GetName(), made.GetID(), column.GetTypeInfo()).GetID();
    made.AddColumn(copyID);
    if (std::ranges::find(keyIDs, id) != keyIDs.end()) made.AddKeyColumn(copyID);
  }
  return &made;
}

void PhysicalModel::ReadColumn(const JsonCursor& column, MemoryTable& table) {
  column.CheckKeys({"name", "type", "nullable"});
  KXString name;
  column.RequiredMember(
      "name", [&](const JsonCursor& cursor) { name = m_objects.NewName(cursor, table.GetID(), kTIDAColumn); });
  KXTypeInfo type;
  column.RequiredMember("type", [&](const JsonCursor& cursor) { type = ReadType(cursor); });
  column.Member("nullable", [&](const JsonCursor& cursor) { type.nullable_ = cursor.AsBoolean() ? 1 : 0; });
  if (!name.empty()) table.AddColumn(m_objects.Make<MemoryColumn>(name, table.GetID(), type).GetID());
}

void PhysicalModel::ReadKey(const JsonCursor& key, MemoryTable& table) {
  const auto refer = [&](const JsonCursor& element) {
    const VoidID id = m_objects.ReferIn(element, table.GetID(), kTIDAColumn);
    const KXTypeInfo type = m_objects.Get<AColumn>(id).GetTypeInfo();
    if (type.type_ != KXUnknown && type.nullable_) element.Throw(L"a column of a key cannot be nullable");
    return id;
  };
  ReadReferences(key, refer, [&table](const VoidID& id) { table.AddKeyColumn(id); });
}

void PhysicalModel::ReadForeignKey(const JsonCursor& foreignKey, MemoryTable& table) {
  foreignKey.CheckKeys({"name", "columns", "table", "references"});
  VoidID referencedID;
  foreignKey.RequiredMember("table", [&](const JsonCursor& cursor) {
    referencedID = m_objects.Refer(cursor, kTIDATable);
    if (AreOfOneDatabase(m_objects.Get<ATable>(referencedID).GetDatabaseID(), table.GetDatabaseID())) return;
    referencedID = VoidID::NullID;
    cursor.Throw(L"a foreign key cannot lead to a table of another database");
  });
  VoidIDVector columnIDs;
  const bool bColumns = foreignKey.RequiredMember("columns", [&](const JsonCursor& columns) {
    ReadReferences(
        columns, [&](const JsonCursor& element) { return m_objects.ReferIn(element, table.GetID(), kTIDAColumn); },
        [&](const VoidID& id) { columnIDs.push_back(id); });
    if (columns.GetJson().empty()) columns.Throw(L"a foreign key must have columns");
    if (columnIDs.size() != columns.GetJson().size()) columnIDs.clear();  // has faults
  });
  if (!bColumns || columnIDs.empty() || referencedID.IsNullID()) return;

  VoidIDVector referencedIDs;
  if (!foreignKey.Has("references")) {
    referencedIDs = KeyOf(m_objects, referencedID);
    if (referencedIDs.empty()) {
      foreignKey.Throw(L"the table " + m_objects.GetNames().GetName(referencedID) +
                       L" has no key: the key references is missing");
    }
  }
  foreignKey.Member("references", [&](const JsonCursor& references) {
    ReadReferences(
        references, [&](const JsonCursor& element) { return m_objects.ReferIn(element, referencedID, kTIDAColumn); },
        [&](const VoidID& id) { referencedIDs.push_back(id); });
  });
  if (referencedIDs.size() != columnIDs.size()) {
    foreignKey.Throw(BaseStringUtil::StringFrom(columnIDs.size()) + L" columns cannot refer to " +
                     BaseStringUtil::StringFrom(referencedIDs.size()));
  }
  KXString name = L"to_" + m_objects.GetNames().GetName(referencedID);
  foreignKey.Member("name", [&](const JsonCursor& cursor) { name = cursor.AsName(); });
  m_objects.CheckNew(foreignKey, table.GetID(), kTIDAForeignKey, name);
  auto& made = m_objects.Make<MemoryForeignKey>(name, table.GetID(), referencedID);
  table.AddForeignKey(made.GetID());
  for (std::size_t i = 0; i < columnIDs.size(); ++i) {
    const auto& from = m_objects.Get<AColumn>(columnIDs[i]);
    const auto& to = m_objects.Get<AColumn>(referencedIDs[i]);
    made.AddColumns(from.GetID(), to.GetID());
    if (AreComparable(from.GetTypeInfo(), to.GetTypeInfo())) continue;
    foreignKey.Report(from.GetName() + L" is " + from.GetTypeInfo().Describe() + L", but " + to.GetName() + L" is " +
                      to.GetTypeInfo().Describe());
  }
}

void PhysicalModel::ReadDynamicNames(const JsonCursor& names, MemoryTable& table) {
  names.ForEachMember([&](const std::string& key, const JsonCursor& member) {
    const NameLookup lookup = m_objects.GetNames().FindIn(VoidID::NullID, kTIDADatabase, KXString::FromUTF8(key));
    if (!lookup) member.Throw(lookup.m_cause);
    table.AddDynamicName({lookup.m_id}, member.AsText());
  });
}

void PhysicalModel::ReadJoin(const JsonCursor& join) {
  join.CheckKeys({"name", "tables", "condition"});
  KXString name;
  join.RequiredMember(
      "name", [&](const JsonCursor& cursor) { name = m_objects.NewName(cursor, VoidID::NullID, kTIDAComplexJoin); });
  VoidIDVector tableIDs;
  bool bAllTables = false;
  join.RequiredMember("tables", [&](const JsonCursor& tables) {
    ReadReferences(
        tables, [&](const JsonCursor& element) { return m_objects.Refer(element, kTIDATable); },
        [&](const VoidID& id) { tableIDs.push_back(id); });
    if (tables.GetJson().size() < 2) tables.Throw(L"a join must have two tables or more");
    bAllTables = tableIDs.size() == tables.GetJson().size();
  });
  KXString condition;
  join.RequiredMember("condition", [&](const JsonCursor& cursor) {
    condition = cursor.AsName();
    if (bAllTables) CheckCondition(cursor, tableIDs);
  });
  if (name.empty() || !bAllTables) return;
  auto& made = m_objects.Make<MemoryComplexJoin>(name, VoidID::NullID, tableIDs);
  made.SetConditionText(condition);
  m_objects.AtHandOver([tableIDs, joinID = made.GetID()](MemoryGateway& gateway) {
    for (const VoidID& id : tableIDs) dynamic_cast<MemoryTable&>(*gateway.LookupObject(id)).AddComplexJoin(joinID);
  });
}

void PhysicalModel::CheckCondition(const JsonCursor& condition, const VoidIDVector& tableIDs) {
  const SqlNames found = FindSqlNames(condition.AsText());
  if (!found.m_cause.empty()) condition.Throw(found.m_cause);
  VoidIDSet unused(tableIDs.begin(), tableIDs.end());
  for (const SqlName& name : found.m_names) {
    if (name.m_bVariable) {
      if (const NameLookup lookup = m_objects.GetNames().FindVariable(name.m_path); !lookup) {
        condition.Report(lookup.m_cause);
      }
      continue;
    }
    KXStringVector path = name.m_path;
    const KXString column = path.back();
    path.pop_back();
    if (path.empty()) {
      condition.Report(L"the column " + column + L" must have its table in front");
      continue;
    }
    NameLookup lookup = m_objects.GetNames().FindPhysicalTable(path);
    if (lookup && std::ranges::find(tableIDs, lookup.m_id) == tableIDs.end()) {
      condition.Report(L"the table " + JoinQualifiedName(path) + L" does not take part in the join");
      continue;
    }
    unused.erase(lookup.m_id);
    if (lookup) lookup = m_objects.GetNames().FindColumn(lookup.m_id, column);
    if (!lookup) condition.Report(lookup.m_cause);
  }
  for (const VoidID& id : unused) {
    condition.Report(L"the condition names no column of " + m_objects.GetNames().GetName(id));
  }
}
