#include <algorithm>

#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqWrapperList.h"
#include "rq/sql/SqlWriter.h"
#include "rq/sql/SqlWriterScopes.h"

// Names of tables and columns.

namespace {

std::string LowerCase(std::string text) {
  std::ranges::transform(text, text.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
  return text;
}

}  // namespace

void SqlWriter::TakeTableNames() {
  for (const RefATable& table : m_target.GetGateway().GetObjects<ATable>()) {
    m_takenNames.insert(LowerCase(m_target.GetBareTableName(table->GetID())));
  }
}

std::string SqlWriter::TableAlias(const RqIdentifiedTable& table) const {
  const int number = table.GetTableNumber();
  return (table.IsDerivedTable() ? 'D' : 'T') + std::to_string(number) +
         (m_tablesAgain.contains(number) ? "_again" : "");
}

std::string SqlWriter::QualifiedName(char letter, int tableNumber, const std::string& name) const {
  const std::string again = m_tablesAgain.contains(tableNumber) ? "_again." : ".";
  return letter + std::to_string(tableNumber) + again + m_target.Quote(name);
}

/// The indexes of the columns that users see: all but those that are there for a sort alone.
std::vector<int> SqlWriter::VisibleColumns(const RqAbstractList& list) {
  const RqProjection* const pProjection = list.GetProjection();
  const int numColumns = pProjection ? pProjection->GetNumColumns() : 0;
  std::vector<bool> hidden(static_cast<std::size_t>(numColumns));
  const auto* const pBlock = dynamic_cast<const RqList*>(&list);
  if (const RqOrderBy* const pOrderBy = pBlock ? pBlock->GetOrderBy() : nullptr) {
    for (int i = 0; i < pOrderBy->GetNumSortSpecs(); ++i) {
      const RqSortSpec& spec = *pOrderBy->GetIthSortSpec(i);
      const int index = pProjection->FindColumnIndex(spec.GetColumnNumber());
      if (spec.GetLogicalSelectListStatus() && index >= 0 && index < numColumns) {
        hidden[static_cast<std::size_t>(index)] = true;
      }
    }
  }
  std::vector<int> visible;
  for (int i = 0; i < numColumns; ++i) {
    if (!hidden[static_cast<std::size_t>(i)]) visible.push_back(i);
  }
  return visible;
}

SqlWriter::Names SqlWriter::VisibleNames(const RqAbstractList& list) {
  const Names& all = ColumnNames(list);
  Names visible;
  for (const int index : VisibleColumns(list)) visible.push_back(all[static_cast<std::size_t>(index)]);
  return visible;
}

const SqlWriter::Names& SqlWriter::ColumnNames(const RqAbstractList& list) {
  const auto it = m_columnNames.find(&list);
  if (it != m_columnNames.end()) return it->second;
  Names names = MakeColumnNames(list);
  return m_columnNames[&list] = std::move(names);
}

/// A column that is nothing but another column has its name, if no column in front of it has that.
SqlWriter::Names SqlWriter::MakeColumnNames(const RqAbstractList& list) {
  const RqProjection* const pProjection = list.GetProjection();
  if (!pProjection) Refuse("a list without columns", &list);
  // Of a set operator it is the first branch's.
  if (const RqNode* const pOwner = pProjection->GetParent(); pOwner && pOwner != &list) {
    return ColumnNames(static_cast<const RqAbstractList&>(*pOwner));
  }
  Names names;
  for (int i = 0; i < pProjection->GetNumColumns(); ++i) {
    const RqDerivedColumn& column = *pProjection->GetIthColumn(i);
    const RqExpr& expr = *column.GetExpr();
    std::string name;
    if (expr.GetObjectType() == kRqTargetColumn) {
      name = LowerCase(static_cast<const RqTargetColumn&>(expr).GetColumnName(&m_target.GetGateway()).ToUTF8());
    } else if (expr.GetObjectType() == kRqDerivedColumnReference) {
      const auto& reference = static_cast<const RqDerivedColumnReference&>(expr);
      if (reference.IsValidDerivedColumnReference()) name = ColumnName(*reference.GetDerivedColumn());
    }
    const auto isTaken = [&names](const std::string& n) { return std::ranges::find(names, n) != names.end(); };
    if (name.empty() || (isTaken(name) && !list.IsRqSharedList())) name = 'c' + std::to_string(column.GetColumnNum());
    while (isTaken(name) && !list.IsRqSharedList()) name += '_';
    names.push_back(std::move(name));
  }
  return names;
}

std::string SqlWriter::ColumnName(const RqDerivedColumn& column) {
  const RqAbstractList* const pList = column.GetRqAbstractListContainer();
  if (!pList) Refuse("a reference to a column of no list", &column);
  const int index = pList->GetProjection()->FindColumnIndex(&column);
  return ColumnNames(*pList).at(static_cast<std::size_t>(index));
}

/// The name under which a list stands in front of the statement; it is written there when it is first asked for.
std::string SqlWriter::NameCommonExpr(const RqAbstractList& list, const std::string& wanted) {
  if (const auto it = m_commonNames.find(&list); it != m_commonNames.end()) return it->second;
  std::string name = wanted.empty() ? "common" : wanted;
  for (int i = 2; m_takenNames.contains(LowerCase(name)); ++i) name = wanted + '_' + std::to_string(i);
  m_takenNames.insert(LowerCase(name));
  m_commonNames[&list] = name;
  const PlaceScope place(*this, "the common table expression " + name);
  const ValueScope indent(m_indent, 2);
  const ValueScope depth(m_depth, std::uint32_t{1});
  const ValueScope caseDepth(m_caseDepth, 0);
  const ValueScope nulls(m_nulls, {});
  const ValueScope kept(m_kept, {});
  const ValueScope again(m_tablesAgain, {});
  std::string text = List(list, VisibleNames(list));
  m_commonExprs.push_back({name, std::move(text)});
  return name;
}
