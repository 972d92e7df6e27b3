#include "BusinessModel.h"

#include <algorithm>
#include <deque>
#include <iterator>

#include "Host/BaseStringUtil.h"
#include "HostMemory/NearestNames.h"
#include "PhysicalModel.h"
#include "SqlWords.h"

namespace {

// ---------------------------------------------------------------------------------------------------------------------
// Ways from object to object

/// What can be reached from an object over one step or more, with the object that each was first reached from.
/// Cost: the number of objects and steps, times the logarithm.
template <class Successors>
std::map<VoidID, VoidID> ReachableFrom(const VoidID& start, Successors successors) {
  std::map<VoidID, VoidID> reachedFrom;
  std::deque<VoidID> waiting{start};
  while (!waiting.empty()) {
    const VoidID id = waiting.front();
    waiting.pop_front();
    for (const VoidID& next : successors(id)) {
      if (reachedFrom.emplace(next, id).second) waiting.push_back(next);
    }
  }
  return reachedFrom;
}

/// The shortest way from an object back to it, which is its first and its last stop; empty if there is none.
template <class Successors>
VoidIDVector FindCycle(const VoidID& start, Successors successors) {
  const std::map<VoidID, VoidID> reachedFrom = ReachableFrom(start, successors);
  if (!reachedFrom.contains(start)) return {};
  VoidIDVector way{start};
  do {
    way.push_back(reachedFrom.at(way.back()));
  } while (way.back() != start);
  std::ranges::reverse(way);
  return way;
}

// ---------------------------------------------------------------------------------------------------------------------

constexpr const wchar_t* kAggregations[] = {L"SUM", L"COUNT", L"COUNT_DISTINCT", L"AVG",
                                            L"MIN", L"MAX",   L"FIRST",          L"LAST"};

KXString ReadFunction(const JsonCursor& cursor) {
  const KXString name = cursor.AsText();
  const KXStringVector names(std::begin(kAggregations), std::end(kAggregations));
  for (const KXString& known : names) {
    if (BaseStringUtil::IsCaseInsensitiveMatch(known, name)) return known;
  }
  cursor.Throw(L"there is no aggregation " + name + DidYouMean(name, names));
}

/// Calls function(cursor) for a text, or for each element of an array of them.
template <class Function>
void ForOneOrEach(const JsonCursor& cursor, Function function) {
  if (cursor.IsArray()) {
    cursor.ForEachElement(function);
  } else {
    function(cursor);
  }
}

}  // namespace

void BusinessModel::Read(const JsonCursor& document) {
  document.Member("logicalTables", [this](const JsonCursor& tables) {
    m_tables.resize(tables.GetJson().size());
    m_attributes.resize(m_tables.size());
    tables.ForEachElement([this](const JsonCursor& table) {
      m_tables[table.GetIndex()] = MakeTable(table, m_attributes[table.GetIndex()]);
    });
  });
  document.Member("dimensions", [this](const JsonCursor& dimensions) {
    dimensions.ForEachElement([this](const JsonCursor& dimension) { ReadDimension(dimension); });
  });
  document.Member("logicalTables", [this](const JsonCursor& tables) {
    if (!tables.IsArray()) return;  // is known already
    ForEachMade(tables, m_tables, [this](const JsonCursor& table, MemoryLogicalTable& made) {
      table.Member("joins", [&](const JsonCursor& joins) { ReadJoins(joins, made); });
      table.RequiredMember("sources", [&](const JsonCursor& sources) {
        sources.ForEachElement([&](const JsonCursor& source) { ReadSource(source, made); });
      });
      table.Member("columns", [&](const JsonCursor& columns) {
        if (!columns.IsArray()) return;
        ForEachMade(columns, m_attributes[table.GetIndex()],
                    [this](const JsonCursor& column, MemoryAttribute& attribute) { ReadColumn(column, attribute); });
      });
    });
    ForEachMade(tables, m_tables, [this](const JsonCursor& table, MemoryLogicalTable& made) {
      CheckTable(table, made, m_attributes[table.GetIndex()]);
    });
  });
  document.Member("presentationHierarchies", [this](const JsonCursor& hierarchies) {
    hierarchies.ForEachElement([this](const JsonCursor& hierarchy) { ReadPresentationHierarchy(hierarchy); });
  });
}

// ---------------------------------------------------------------------------------------------------------------------
// Logical tables

MemoryLogicalTable* BusinessModel::MakeTable(const JsonCursor& table, std::vector<MemoryAttribute*>& attributes) {
  table.CheckKeys({"name", "sources", "columns", "joins"});
  KXString name;
  table.RequiredMember(
      "name", [&](const JsonCursor& cursor) { name = m_objects.NewName(cursor, VoidID::NullID, kTIDALogicalTable); });
  if (name.empty()) return nullptr;
  auto& made = m_objects.Make<MemoryLogicalTable>(name);
  table.RequiredMember("columns", [&](const JsonCursor& columns) {
    attributes.resize(columns.GetJson().size());
    columns.ForEachElement([&](const JsonCursor& column) {
      column.CheckKeys({"name", "from", "expression", "type", "aggregation", "sortBy"});
      column.RequiredMember("name", [&](const JsonCursor& cursor) {
        const KXString columnName = m_objects.NewName(cursor, made.GetID(), kTIDAAttribute);
        auto& attribute = m_objects.Make<MemoryAttribute>(columnName, made.GetID());
        made.AddAttribute(attribute.GetID());
        attributes[column.GetIndex()] = &attribute;
      });
    });
  });
  return &made;
}

void BusinessModel::ReadJoins(const JsonCursor& joins, MemoryLogicalTable& table) {
  ReadReferences(
      joins, [&](const JsonCursor& element) { return m_objects.Refer(element, kTIDALogicalTable); },
      [&](const VoidID& id) { table.AddJoinedTable(id); });
}

void BusinessModel::ReadSource(const JsonCursor& source, MemoryLogicalTable& table) {
  source.CheckKeys({"name", "tables", "content"});
  VoidIDVector tableIDs;
  const bool bTables = source.RequiredMember("tables", [&](const JsonCursor& tables) {
    if (!ReadSourceTables(tables, table, tableIDs)) tableIDs.clear();
  });
  if (!bTables || tableIDs.empty()) return;
  KXString name = m_objects.GetNames().GetName(tableIDs.front());
  source.Member("name", [&](const JsonCursor& cursor) { name = cursor.AsName(); });
  m_objects.CheckNew(source, table.GetID(), kTIDALogicalTableSource, name);
  auto& made = m_objects.Make<MemoryLogicalTableSource>(name, table.GetID());
  table.AddSource(made.GetID());
  for (const VoidID& id : tableIDs) made.AddTable(id);
  source.Member("content", [&](const JsonCursor& content) { ReadContent(content, made); });
}

/// False if a table has a fault. A physical table stands in one source of a logical table alone: by its table it is
/// known which source a column belongs to.
bool BusinessModel::ReadSourceTables(const JsonCursor& tables, const MemoryLogicalTable& table, VoidIDVector& ids) {
  const VoidIDVector taken = SourceTablesOf(table.GetID());
  const auto refer = [&](const JsonCursor& element) {
    const VoidID id = m_objects.Refer(element, kTIDATable);
    if (std::ranges::find(taken, id) != taken.end()) {
      element.Throw(element.AsText() + L" stands in another source of " + table.GetName() + L" already");
    }
    const auto isJoined = [&](const VoidID& other) { return PhysicalModel::AreJoined(m_objects, id, other); };
    if (element.GetIndex() > 0 && !std::ranges::any_of(ids, isJoined)) {
      element.Throw(L"no foreign key joins " + element.AsText() + L" to a table before it");
    }
    return id;
  };
  ReadReferences(tables, refer, [&](const VoidID& id) { ids.push_back(id); });
  if (tables.GetJson().empty()) tables.Throw(L"a source must have tables");
  return ids.size() == tables.GetJson().size();
}

void BusinessModel::ReadContent(const JsonCursor& content, MemoryLogicalTableSource& source) {
  content.ForEachMember([&](const std::string& key, const JsonCursor& level) {
    const NameLookup dimension = m_objects.GetNames().FindIn(VoidID::NullID, kTIDADimension, KXString::FromUTF8(key));
    if (!dimension) level.Throw(dimension.m_cause);
    source.AddContentLevel(m_objects.ReferIn(level, dimension.m_id, kTIDALevel));
  });
}

void BusinessModel::ReadColumn(const JsonCursor& column, MemoryAttribute& attribute) {
  if (column.Has("from") == column.Has("expression")) {
    column.Report(L"a column has its values from sources or by an expression: one of these keys must be there");
  }
  column.Member("from", [&](const JsonCursor& from) { ReadSourceColumns(from, attribute); });
  column.Member("expression", [&](const JsonCursor& expression) { ReadExpression(expression, attribute); });
  column.Member("type", [&](const JsonCursor& type) {
    if (!column.Has("expression")) type.Throw(L"a column from sources has their type");
    attribute.SetTypeInfo(ReadType(type));
  });
  column.Member("aggregation", [&](const JsonCursor& aggregation) { ReadAggregation(aggregation, attribute); });
  column.Member("sortBy", [&](const JsonCursor& sortBy) {
    const VoidID id = m_objects.ReferIn(sortBy, attribute.GetEntityID(), kTIDAAttribute);
    if (id == attribute.GetID()) sortBy.Throw(L"a column is sorted by itself anyway");
    attribute.SetAlternateSortOrder(id);
  });
}

void BusinessModel::ReadSourceColumns(const JsonCursor& from, MemoryAttribute& attribute) {
  const VoidIDVector sourceTables = SourceTablesOf(attribute.GetEntityID());
  VoidIDSet used;
  KXTypeInfo type;
  ForOneOrEach(from, [&](const JsonCursor& element) {
    const auto& column = m_objects.Get<AColumn>(m_objects.ReferToColumn(element));
    const VoidID tableID = column.GetTableID();
    if (std::ranges::find(sourceTables, tableID) == sourceTables.end()) {
      element.Throw(L"the table " + m_objects.GetNames().GetName(tableID) + L" stands in no source of " +
                    m_objects.GetNames().GetName(attribute.GetEntityID()));
    }
    if (!used.insert(tableID).second) element.Throw(L"the column has its values from this table already");
    if (!AreComparable(type, column.GetTypeInfo())) {
      element.Throw(column.GetName() + L" is " + column.GetTypeInfo().Describe() + L", but the column is " +
                    type.Describe());
    }
    if (type.type_ == KXUnknown) type = column.GetTypeInfo();
    // One source without a value is enough.
    type.nullable_ = type.nullable_ || column.GetTypeInfo().nullable_ ? 1 : 0;
    attribute.AddSourceColumn(column.GetID());
  });
  attribute.SetTypeInfo(type);
}

void BusinessModel::ReadExpression(const JsonCursor& expression, MemoryAttribute& attribute) {
  const KXString text = expression.AsName();
  const SqlNames found = FindSqlNames(text);
  if (!found.m_cause.empty()) expression.Throw(found.m_cause);
  const RepositoryNames& names = m_objects.GetNames();
  VoidIDVector ids;
  for (const SqlName& name : found.m_names) {
    NameLookup lookup{attribute.GetEntityID(), {}};
    if (name.m_bVariable) {
      lookup = names.FindVariable(name.m_path);
    } else {
      KXStringVector path = name.m_path;
      const KXString column = path.back();
      path.pop_back();
      if (!path.empty()) lookup = names.FindLogicalTable(path);
      if (lookup) lookup = names.FindColumn(lookup.m_id, column);
    }
    if (lookup) {
      ids.push_back(lookup.m_id);
    } else {
      expression.Report(lookup.m_cause);
    }
  }
  attribute.SetExpr(std::move(ids), text);
}

void BusinessModel::ReadAggregation(const JsonCursor& aggregation, MemoryAttribute& attribute) {
  std::vector<RpAggregationRule> rules;
  if (!aggregation.IsObject()) {
    rules.push_back({VoidID::NullID, ReadFunction(aggregation)});
    attribute.SetAggregationRules(std::move(rules));
    return;
  }
  aggregation.CheckKeys({"function", "along"});
  aggregation.Member("along", [&](const JsonCursor& along) {
    along.ForEachMember([&](const std::string& key, const JsonCursor& function) {
      const NameLookup dimension = m_objects.GetNames().FindIn(VoidID::NullID, kTIDADimension, KXString::FromUTF8(key));
      if (!dimension) function.Throw(dimension.m_cause);
      rules.push_back({dimension.m_id, ReadFunction(function)});
    });
  });
  aggregation.RequiredMember("function", [&](const JsonCursor& function) {
    rules.push_back({VoidID::NullID, ReadFunction(function)});
  });
  attribute.SetAggregationRules(std::move(rules));
}

// ---------------------------------------------------------------------------------------------------------------------
// What can only be seen when all logical tables are there

void BusinessModel::CheckTable(const JsonCursor& table, const MemoryLogicalTable& made,
                               const std::vector<MemoryAttribute*>& attributes) {
  const auto joinedTables = [this](const VoidID& id) {
    VoidIDVector ids;
    m_objects.Get<ALogicalTable>(id).GetJoinedTableIDs(ids);
    return ids;
  };
  table.Member("joins", [&](const JsonCursor& joins) {
    if (!joins.IsArray()) return;
    joins.ForEachElement([&](const JsonCursor& join) { CheckJoin(join, made); });
    if (const VoidIDVector cycle = FindCycle(made.GetID(), joinedTables); !cycle.empty()) {
      joins.Throw(L"the joins lead in a circle: " + NamesOf(cycle));
    }
  });

  VoidIDSet reachableIDs{made.GetID()};
  for (const auto& [id, from] : ReachableFrom(made.GetID(), joinedTables)) reachableIDs.insert(id);
  table.Member("sources", [&](const JsonCursor& sources) {
    if (!sources.IsArray()) return;
    sources.ForEachElement([&](const JsonCursor& source) {
      source.Member("content", [&](const JsonCursor& content) {
        if (content.IsObject()) CheckContent(content, made, reachableIDs);
      });
    });
  });

  const auto operands = [this](const VoidID& id) {
    VoidIDVector ids;
    if (id.GetInterfaceTypeID() != kTIDAAttribute) return ids;
    m_objects.Get<MemoryAttribute>(id).GetExprObjectIDs(ids);
    return ids;
  };
  table.Member("columns", [&](const JsonCursor& columns) {
    if (!columns.IsArray()) return;
    ForEachMade(columns, attributes, [&](const JsonCursor& column, const MemoryAttribute& attribute) {
      column.Member("expression", [&](const JsonCursor& expression) {
        const VoidIDVector cycle = FindCycle(attribute.GetID(), operands);
        if (!cycle.empty()) expression.Throw(L"the column is computed from itself: " + NamesOf(cycle));
      });
    });
  });
}

/// Some source must be able to carry the join out.
void BusinessModel::CheckJoin(const JsonCursor& join, const MemoryLogicalTable& table) {
  if (!join.GetJson().is_string()) return;
  const NameLookup joined = m_objects.GetNames().FindLogicalTable(SplitQualifiedName(join.AsText()));
  if (!joined) return;  // is known already
  const VoidIDVector fromIDs = SourceTablesOf(table.GetID());
  const VoidIDVector toIDs = SourceTablesOf(joined.m_id);
  if (fromIDs.empty() || toIDs.empty() || joined.m_id == table.GetID()) return;
  const bool bCan = std::ranges::any_of(fromIDs, [&](const VoidID& from) {
    return std::ranges::any_of(
        toIDs, [&](const VoidID& to) { return from == to || PhysicalModel::RefersTo(m_objects, from, to); });
  });
  if (!bCan) {
    join.Throw(L"no foreign key leads from a source of " + table.GetName() + L" to one of " +
               m_objects.GetNames().GetName(joined.m_id));
  }
}

void BusinessModel::CheckContent(const JsonCursor& content, const MemoryLogicalTable& table,
                                 const VoidIDSet& reachableIDs) {
  content.ForEachMember([&](const std::string& key, const JsonCursor& level) {
    const NameLookup dimension = m_objects.GetNames().FindIn(VoidID::NullID, kTIDADimension, KXString::FromUTF8(key));
    const auto found = m_tableOfDimension.find(dimension.m_id);
    if (found == m_tableOfDimension.end() || reachableIDs.contains(found->second)) return;
    level.Throw(table.GetName() + L" has no join to " + m_objects.GetNames().GetName(found->second) +
                L", the table of this dimension");
  });
}

VoidIDVector BusinessModel::SourceTablesOf(const VoidID& logicalTableID) const {
  VoidIDVector sourceIDs;
  m_objects.Get<ALogicalTable>(logicalTableID).GetSourceIDs(sourceIDs);
  VoidIDVector all;
  for (const VoidID& sourceID : sourceIDs) {
    VoidIDVector tableIDs;
    m_objects.Get<ALogicalTableSource>(sourceID).GetTableIDs(tableIDs);
    all.insert(all.end(), tableIDs.begin(), tableIDs.end());
  }
  return all;
}

KXString BusinessModel::NamesOf(const VoidIDVector& ids) const {
  KXString names;
  for (const VoidID& id : ids) {
    if (!names.empty()) names.append(L", ");
    names.append(m_objects.GetNames().GetName(id));
  }
  return names;
}

// ---------------------------------------------------------------------------------------------------------------------
// Dimensions

void BusinessModel::ReadDimension(const JsonCursor& dimension) {
  dimension.CheckKeys({"name", "table", "time", "levels", "hierarchies"});
  KXString name;
  dimension.RequiredMember(
      "name", [&](const JsonCursor& cursor) { name = m_objects.NewName(cursor, VoidID::NullID, kTIDADimension); });
  VoidID tableID;
  dimension.RequiredMember("table",
                           [&](const JsonCursor& cursor) { tableID = m_objects.Refer(cursor, kTIDALogicalTable); });
  if (name.empty()) return;
  auto& made = m_objects.Make<MemoryDimension>(name);
  if (!tableID.IsNullID()) m_tableOfDimension.emplace(made.GetID(), tableID);
  dimension.Member("time", [&](const JsonCursor& cursor) { made.SetTimeDimension(cursor.AsBoolean()); });
  std::vector<MemoryLevel*> levels;
  dimension.RequiredMember("levels", [&](const JsonCursor& cursor) {
    cursor.ForEachElement([&](const JsonCursor& level) {
      if (MemoryLevel* const pLevel = MakeLevel(level, made.GetID(), tableID)) levels.push_back(pLevel);
    });
    if (cursor.GetJson().empty()) cursor.Throw(L"a dimension must have levels");
  });
  if (dimension.Has("hierarchies")) {
    dimension.Member("hierarchies", [&](const JsonCursor& hierarchies) { ReadHierarchies(hierarchies, made); });
  } else {
    VoidIDVector ids;
    for (const MemoryLevel* const pLevel : levels) ids.push_back(pLevel->GetID());
    MakeHierarchy(name, ids, made);
  }
  LinkLevels(dimension, made, levels);
}

MemoryLevel* BusinessModel::MakeLevel(const JsonCursor& level, const VoidID& dimensionID, const VoidID& tableID) {
  level.CheckKeys({"name", "key", "columns", "grandTotal"});
  KXString name;
  level.RequiredMember("name",
                       [&](const JsonCursor& cursor) { name = m_objects.NewName(cursor, dimensionID, kTIDALevel); });
  if (name.empty()) return nullptr;
  auto& made = m_objects.Make<MemoryLevel>(name, dimensionID);
  level.Member("grandTotal", [&](const JsonCursor& cursor) { made.SetGrandTotal(cursor.AsBoolean()); });
  if (made.IsGrandTotal() == level.Has("key")) {
    level.Report(made.IsGrandTotal() ? L"a grand total has no key" : L"the key key is missing");
  }
  if (tableID.IsNullID()) return &made;
  VoidIDSet attributeIDs;
  const auto readColumns = [&](const JsonCursor& columns, bool bKey) {
    const auto refer = [&](const JsonCursor& element) { return m_objects.ReferIn(element, tableID, kTIDAAttribute); };
    ReadReferences(columns, refer, [&](const VoidID& id) {
      if (bKey) made.AddKeyAttribute(id);
      if (attributeIDs.insert(id).second) made.AddAttribute(id);
    });
    if (columns.GetJson().empty()) columns.Throw(L"names of columns must stand here");
  };
  level.Member("key", [&](const JsonCursor& key) { readColumns(key, true); });
  level.Member("columns", [&](const JsonCursor& columns) { readColumns(columns, false); });
  return &made;
}

void BusinessModel::ReadHierarchies(const JsonCursor& hierarchies, MemoryDimension& dimension) {
  hierarchies.ForEachElement([&](const JsonCursor& hierarchy) {
    hierarchy.CheckKeys({"name", "levels"});
    KXString name;
    hierarchy.RequiredMember(
        "name", [&](const JsonCursor& cursor) { name = m_objects.NewName(cursor, dimension.GetID(), kTIDAHierarchy); });
    VoidIDVector ids;
    hierarchy.RequiredMember("levels", [&](const JsonCursor& levels) {
      const auto refer = [&](const JsonCursor& element) {
        return m_objects.ReferIn(element, dimension.GetID(), kTIDALevel);
      };
      ReadReferences(levels, refer, [&](const VoidID& id) { ids.push_back(id); });
    });
    if (!name.empty()) MakeHierarchy(name, ids, dimension);
  });
}

void BusinessModel::MakeHierarchy(const KXString& name, const VoidIDVector& levelIDs, MemoryDimension& dimension) {
  auto& made = m_objects.Make<MemoryHierarchy>(name, dimension.GetID());
  dimension.AddHierarchy(made.GetID());
  for (const VoidID& id : levelIDs) made.AddLevel(id);
}

/// Tells each level its neighbours, and the dimension its levels, those of the upper ones first.
void BusinessModel::LinkLevels(const JsonCursor& dimension, MemoryDimension& made,
                               const std::vector<MemoryLevel*>& levels) {
  std::map<VoidID, VoidIDVector> parents, children;
  VoidIDSet used;
  VoidIDVector hierarchyIDs;
  made.GetHierarchyIDs(hierarchyIDs);
  const auto addNew = [](VoidIDVector& ids, const VoidID& id) {
    if (std::ranges::find(ids, id) == ids.end()) ids.push_back(id);
  };
  for (const VoidID& hierarchyID : hierarchyIDs) {
    VoidIDVector ids;
    m_objects.Get<AHierarchy>(hierarchyID).GetLevelIDs(ids);
    used.insert(ids.begin(), ids.end());
    for (std::size_t i = 1; i < ids.size(); ++i) {
      addNew(parents[ids[i]], ids[i - 1]);
      addNew(children[ids[i - 1]], ids[i]);
    }
  }
  for (MemoryLevel* const pLevel : levels) {
    const VoidID id = pLevel->GetID();
    for (const VoidID& parentID : parents[id]) pLevel->AddParentLevel(parentID);
    for (const VoidID& childID : children[id]) pLevel->AddChildLevel(childID);
    if (!used.contains(id)) dimension.Report(L"the level " + pLevel->GetName() + L" stands in no hierarchy");
    if (pLevel->IsGrandTotal() && !parents[id].empty()) {
      dimension.Report(L"the grand total " + pLevel->GetName() + L" stands below another level");
    }
  }
  VoidIDSet placed;
  while (placed.size() < levels.size()) {
    const auto next = std::ranges::find_if(levels, [&](const MemoryLevel* pLevel) {
      const auto isPlaced = [&](const VoidID& id) { return placed.contains(id); };
      return !isPlaced(pLevel->GetID()) && std::ranges::all_of(parents[pLevel->GetID()], isPlaced);
    });
    if (next == levels.end()) break;  // the rest are above and below each other
    placed.insert((*next)->GetID());
    made.AddLevel((*next)->GetID());
  }
  for (MemoryLevel* const pLevel : levels) {
    const auto childrenOf = [&](const VoidID& id) { return children[id]; };
    const VoidIDVector cycle = FindCycle(pLevel->GetID(), childrenOf);
    if (cycle.empty()) continue;
    dimension.Report(L"the hierarchies lead in a circle: " + NamesOf(cycle));
    return;
  }
}

void BusinessModel::ReadPresentationHierarchy(const JsonCursor& hierarchy) {
  hierarchy.CheckKeys({"name", "dimension", "levels"});
  KXString name;
  hierarchy.RequiredMember("name", [&](const JsonCursor& cursor) {
    name = m_objects.NewName(cursor, VoidID::NullID, kTIDAPresentationHierarchy);
  });
  VoidID dimensionID;
  hierarchy.RequiredMember("dimension",
                           [&](const JsonCursor& cursor) { dimensionID = m_objects.Refer(cursor, kTIDADimension); });
  if (name.empty() || dimensionID.IsNullID()) return;
  auto& made = m_objects.Make<MemoryPresentationHierarchy>(name);
  made.SetDimension(dimensionID);
  hierarchy.RequiredMember("levels", [&](const JsonCursor& levels) {
    levels.ForEachElement([&](const JsonCursor& level) {
      level.CheckKeys({"name", "level"});
      VoidID levelID;
      level.RequiredMember(
          "level", [&](const JsonCursor& cursor) { levelID = m_objects.ReferIn(cursor, dimensionID, kTIDALevel); });
      KXString levelName = m_objects.GetNames().GetName(levelID);
      level.Member("name", [&](const JsonCursor& cursor) { levelName = cursor.AsName(); });
      if (levelID.IsNullID()) return;
      m_objects.CheckNew(level, made.GetID(), kTIDAPresentationLevel, levelName);
      auto& madeLevel = m_objects.Make<MemoryPresentationLevel>(levelName, made.GetID(), levelID);
      made.AddPresentationLevel(madeLevel.GetID());
    });
  });
}
