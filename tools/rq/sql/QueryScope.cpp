#include "rq/sql/QueryScope.h"

#include <algorithm>

#include "HostMemory/MemoryObjects.h"
#include "HostMemory/NearestNames.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"
#include "rq/sql/QueryBuilder.h"
#include "rq/sql/SqlNodeUtil.h"
#include "rq/sql/SqlText.h"

namespace {

std::string Lower(std::string_view written) {
  std::string text(written);
  std::ranges::transform(text, text.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
  return text;
}

/// The parser cuts names that stand for something at this length, and not those that columns are looked up by.
constexpr std::size_t kMaxNameBytes = 63;

std::string_view Cut(std::string_view name) {
  if (name.size() <= kMaxNameBytes) return name;
  std::size_t length = kMaxNameBytes;
  while (length > 0 && (static_cast<unsigned char>(name[length]) & 0xC0) == 0x80) --length;
  return name.substr(0, length);
}

/// The last names of a path, letter case apart.
bool EndsWith(const std::vector<std::string>& path, const std::vector<std::string>& end) {
  return end.size() <= path.size() && std::equal(end.rbegin(), end.rend(), path.rbegin(),
                                                 [](const auto& a, const auto& b) { return Lower(a) == b; });
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// TableSource

TableSource::TableSource(MemoryGateway& gateway, const RepositoryNames& names, const VoidID& tableID, int number,
                         const std::string& alias)
    : m_pGateway(&gateway), m_tableID(tableID), m_number(number), m_name(alias) {
  const RefATable table(&gateway, tableID);
  const RefAEntity entity(&gateway, tableID);
  if (table) {
    table->GetColumnIDs(m_columnIDs);
  } else if (entity) {
    entity->GetAttributeIDs(m_columnIDs);
  }
  for (const VoidID& columnID : m_columnIDs) m_columnNames.push_back(Lower(names.GetName(columnID).ToUTF8()));
  if (!alias.empty()) return;
  for (const KXString& name : SplitQualifiedName(names.GetQualifiedName(tableID)))
    m_path.push_back(Lower(name.ToUTF8()));
  m_name = m_path.back();
}

TableSource::TableSource(int number, const std::string& alias, RqProjection& projection, std::vector<std::string> names)
    : m_number(number), m_name(alias), m_pProjection(&projection), m_columnNames(std::move(names)) {}

bool TableSource::IsCalled(const std::vector<std::string>& qualifier) const {
  if (!m_path.empty()) return EndsWith(m_path, qualifier);
  return qualifier.size() == 1 && Cut(qualifier[0]) == m_name;
}

OwnedRqExprPtr TableSource::MakeColumn(std::size_t i) const {
  if (m_pProjection) {
    return OwnedRqExprPtr(new RqDerivedColumnReference(m_pProjection->GetIthColumn(static_cast<int>(i))));
  }
  if (m_number == 0) return OwnedRqExprPtr(new RqAttribute(m_pGateway, m_columnIDs[i]));
  return OwnedRqExprPtr(new RqTargetColumn(m_pGateway, m_columnIDs[i], m_number));
}

bool TableSource::RenameColumns(const std::vector<std::string>& names) {
  if (names.size() > m_columnNames.size()) return false;
  std::ranges::copy(names, m_columnNames.begin());
  return true;
}

std::vector<std::size_t> FindNames(const std::vector<std::string_view>& names, std::string_view sought) {
  const auto find = [&](auto isSought) {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (isSought(names[i])) found.push_back(i);
    }
    return found;
  };
  if (sought.empty()) return {};
  std::vector<std::size_t> found = find([&](std::string_view name) { return name == sought; });
  if (!found.empty()) return found;
  return find([lower = Lower(Cut(sought))](std::string_view name) { return Lower(Cut(name)) == lower; });
}

std::vector<std::string_view> NamesOf(const NamedColumns& columns) {
  std::vector<std::string_view> names;
  for (const NamedColumn& column : columns) names.push_back(column.m_name);
  return names;
}

// ---------------------------------------------------------------------------------------------------------------------
// QueryScope

void QueryScope::AddSource(TableSource source, SqlNode node) {
  for (const TableSource& other : m_sources) {
    if (!source.GetName().empty() && other.GetName() == source.GetName()) {
      throw SqlError(PlaceOfNode(node), "the table name " + ForMessage(source.GetName(), kMaxQuotedCharacters) +
                                            " stands for another table already; give it an alias");
    }
    if (source.IsSameLogicalTable(other)) {
      throw SqlError(PlaceOfNode(node), "this logical table stands in the FROM already: their columns are the same");
    }
  }
  m_sources.push_back(std::move(source));
}

std::set<int> QueryScope::GetNumbers() const {
  std::set<int> numbers;
  for (const TableSource& source : m_sources) {
    if (source.GetNumber() != 0) numbers.insert(source.GetNumber());
  }
  return numbers;
}

NamedColumns QueryScope::GetColumnsOf(std::size_t source) const {
  NamedColumns columns;
  for (std::size_t i = 0; i < m_sources[source].GetNumColumns(); ++i) {
    columns.push_back({m_sources[source].GetColumnName(i), {{source, i}}});
  }
  return columns;
}

void QueryScope::Show(std::size_t firstSource, NamedColumns columns) {
  m_firstVisible = firstSource;
  m_columns = std::move(columns);
}

OwnedRqExprPtr QueryScope::MakeColumn(const NamedColumn& column) const {
  const auto make = [this](const SourceColumn& part) { return m_sources[part.m_source].MakeColumn(part.m_column); };
  if (column.m_values.size() == 1) return make(column.m_values.front());
  RqExprVector operands;
  for (const SourceColumn& part : column.m_values) operands.push_back(make(part).Release());
  return OwnedRqExprPtr(new RqExprCoalesce(operands, false));
}

bool QueryScope::HasColumn(std::string_view name) const { return !FindNames(NamesOf(m_columns), name).empty(); }

std::vector<SourceColumn> QueryScope::FindUnqualified(const std::string& name, SqlNode node) const {
  const std::vector<std::size_t> found = FindNames(NamesOf(m_columns), name);
  if (found.empty()) return {};
  if (found.size() > 1) {
    throw SqlError(PlaceOfNode(node), "several columns are called " + ForMessage(name, kMaxQuotedCharacters) +
                                          "; write the table in front of it");
  }
  return m_columns[found.front()].m_values;
}

std::vector<SourceColumn> QueryScope::FindColumn(const std::vector<std::string>& names, SqlNode node,
                                                 bool& bTableFound) const {
  if (names.size() == 1) return FindUnqualified(names.front(), node);
  const std::vector<std::string> qualifier(names.begin(), names.end() - 1);
  for (std::size_t source = m_firstVisible; source < m_sources.size(); ++source) {
    const TableSource& table = m_sources[source];
    if (!table.IsCalled(qualifier)) continue;
    bTableFound = true;
    std::vector<std::string_view> columnNames;
    for (std::size_t i = 0; i < table.GetNumColumns(); ++i) columnNames.push_back(table.GetColumnName(i));
    const std::vector<std::size_t> found = FindNames(columnNames, names.back());
    if (found.size() > 1) {
      throw SqlError(PlaceOfNode(node), "the table " + ForMessage(table.GetName(), kMaxQuotedCharacters) +
                                            " has several columns of this name");
    }
    if (!found.empty()) return {{source, found.front()}};
  }
  return {};
}

OwnedRqExprPtr QueryScope::MakeColumn(const std::vector<std::string>& names, SqlNode node) {
  bool bTableFound = false;
  for (const QueryScope* pScope = this; pScope; pScope = pScope->m_pOuter) {
    std::vector<SourceColumn> values = pScope->FindColumn(names, node, bTableFound);
    for (const SourceColumn& value : values) RequireReachable(*pScope, value, node);
    if (!values.empty()) {
      ++pScope->m_numUses;
      return pScope->MakeColumn({names.back(), std::move(values)});
    }
    if (bTableFound) break;
  }
  RaiseNoColumn(names, node, bTableFound);
}

/// An attribute means the innermost block that has its table.
void QueryScope::RequireReachable(const QueryScope& owner, const SourceColumn& column, SqlNode node) const {
  const TableSource& source = owner.m_sources[column.m_source];
  for (const QueryScope* pScope = this; pScope != &owner; pScope = pScope->m_pOuter) {
    for (const TableSource& other : pScope->m_sources) {
      if (!source.IsSameLogicalTable(other)) continue;
      throw SqlError(PlaceOfNode(node),
                     "the logical table of this column stands in an inner query too, which hides it");
    }
  }
}

void QueryScope::RaiseNoColumn(const std::vector<std::string>& names, SqlNode node, bool bTableFound) const {
  const bool bNoTable = names.size() > 1 && !bTableFound;
  const std::vector<std::string> qualifier(names.begin(), names.end() - 1);
  KXStringVector candidates;
  for (const QueryScope* pScope = this; pScope; pScope = pScope->m_pOuter) {
    for (std::size_t i = pScope->m_firstVisible; i < pScope->m_sources.size(); ++i) {
      const TableSource& source = pScope->m_sources[i];
      if (bNoTable) {
        if (!source.GetName().empty()) candidates.push_back(ToText(source.GetName()));
      } else if (names.size() == 1 || source.IsCalled(qualifier)) {
        for (std::size_t c = 0; c < source.GetNumColumns(); ++c) candidates.push_back(ToText(source.GetColumnName(c)));
      }
    }
  }
  const std::string& sought = bNoTable ? qualifier.back() : names.back();
  const std::string what = bNoTable ? "there is no table " : "there is no column ";
  throw SqlError(PlaceOfNode(node), what + ForMessage(sought, kMaxQuotedCharacters) +
                                        (bNoTable ? " in this FROM" : "") +
                                        DidYouMean(ToText(sought), candidates).ToUTF8());
}

SqlScope::ColumnUses QueryScope::GetColumnUses() const {
  ColumnUses uses{.m_own = m_numUses};
  for (const QueryScope* pScope = m_pOuter; pScope; pScope = pScope->m_pOuter) uses.m_outer += pScope->m_numUses;
  return uses;
}

Heap<RqExprSubquery> QueryScope::MakeSubquery(SqlNode select, std::size_t nColumns) {
  return m_builder.BuildSubquery(select, *this, nColumns);
}
