#include "rq/sql/QueryScope.h"

#include <algorithm>

#include "HostMemory/MemoryObjects.h"
#include "HostMemory/NearestNames.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"
#include "rq/sql/QueryBuilder.h"
#include "rq/sql/SqlNodeUtil.h"
#include "rq/sql/SqlText.h"

namespace {

std::string Lower(std::string text) {
  std::ranges::transform(text, text.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
  return text;
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
  return qualifier.size() == 1 && qualifier[0] == m_name;
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

void TableSource::FindColumns(std::string_view name, std::vector<std::size_t>& columns) const {
  const std::string sought = m_pProjection ? std::string(name) : Lower(std::string(name));
  for (std::size_t i = 0; i < m_columnNames.size(); ++i) {
    if (m_columnNames[i] == sought) columns.push_back(i);
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// QueryScope

void QueryScope::AddSource(TableSource source, SqlNode node) {
  const auto isSameName = [&source](const TableSource& other) {
    return !source.GetName().empty() && other.GetName() == source.GetName();
  };
  if (std::any_of(m_sources.begin() + static_cast<std::ptrdiff_t>(m_firstVisible), m_sources.end(), isSameName)) {
    throw SqlError(PlaceOfNode(node), "the table name " + ForMessage(source.GetName(), kMaxQuotedCharacters) +
                                          " stands for another table already; give it an alias");
  }
  m_sources.push_back(std::move(source));
}

bool QueryScope::IsMerged(const SourceColumn& column) const {
  return std::ranges::any_of(m_merged, [&](const MergedColumn& merged) {
    return std::ranges::any_of(merged.m_parts, [&](const SourceColumn& part) {
      return part.m_source == column.m_source && part.m_column == column.m_column;
    });
  });
}

OwnedRqExprPtr QueryScope::MakeMergedColumn(const MergedColumn& column) const {
  const auto make = [this](const SourceColumn& part) { return m_sources[part.m_source].MakeColumn(part.m_column); };
  if (!column.m_bCoalesced) return make(column.m_parts.front());
  RqExprVector operands;
  for (const SourceColumn& part : column.m_parts) operands.push_back(make(part).Release());
  return OwnedRqExprPtr(new RqExprCoalesce(operands, false));
}

std::vector<SourceColumn> QueryScope::FindColumns(std::string_view name, std::size_t begin, std::size_t end) const {
  std::vector<SourceColumn> found;
  const auto isPartOf = [](const MergedColumn& merged, const SourceColumn& column) {
    return std::ranges::any_of(merged.m_parts, [&](const SourceColumn& part) {
      return part.m_source == column.m_source && part.m_column == column.m_column;
    });
  };
  for (std::size_t source = begin; source < end; ++source) {
    std::vector<std::size_t> columns;
    m_sources[source].FindColumns(name, columns);
    for (const std::size_t column : columns) {
      const SourceColumn candidate{source, column};
      // Of the parts of a merged column the first one stands for all.
      const bool bSeen = std::ranges::any_of(m_merged, [&](const MergedColumn& merged) {
        return isPartOf(merged, candidate) &&
               std::ranges::any_of(found, [&](const SourceColumn& other) { return isPartOf(merged, other); });
      });
      if (!bSeen) found.push_back(candidate);
    }
  }
  return found;
}

OwnedRqExprPtr QueryScope::FindUnqualified(const std::string& name, SqlNode node) {
  const std::vector<SourceColumn> found = FindColumns(name, m_firstVisible, m_sources.size());
  if (found.empty()) return {};
  if (found.size() > 1) {
    throw SqlError(PlaceOfNode(node), "the column " + ForMessage(name, kMaxQuotedCharacters) +
                                          " is one of several tables; write the table in front of it");
  }
  for (const MergedColumn& merged : m_merged) {
    if (merged.m_name == name && IsMerged(found.front())) return MakeMergedColumn(merged);
  }
  return m_sources[found.front().m_source].MakeColumn(found.front().m_column);
}

OwnedRqExprPtr QueryScope::FindColumn(const std::vector<std::string>& names, SqlNode node, bool& bTableFound) {
  if (names.size() == 1) return FindUnqualified(names.front(), node);
  const std::vector<std::string> qualifier(names.begin(), names.end() - 1);
  for (std::size_t i = m_firstVisible; i < m_sources.size(); ++i) {
    if (!m_sources[i].IsCalled(qualifier)) continue;
    bTableFound = true;
    std::vector<std::size_t> columns;
    m_sources[i].FindColumns(names.back(), columns);
    if (columns.size() > 1) {
      throw SqlError(PlaceOfNode(node), "the table " + ForMessage(m_sources[i].GetName(), kMaxQuotedCharacters) +
                                            " has several columns of this name");
    }
    if (!columns.empty()) return m_sources[i].MakeColumn(columns.front());
  }
  return {};
}

OwnedRqExprPtr QueryScope::MakeColumn(const std::vector<std::string>& names, SqlNode node) {
  bool bTableFound = false;
  for (QueryScope* pScope = this; pScope; pScope = pScope->m_pOuter) {
    OwnedRqExprPtr column = pScope->FindColumn(names, node, bTableFound);
    if (column) return column;
    if (bTableFound) break;
  }
  RaiseNoColumn(names, node, bTableFound);
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

Heap<RqExprSubquery> QueryScope::MakeSubquery(SqlNode select, std::size_t nColumns) {
  return m_builder.BuildSubquery(select, *this, nColumns);
}
