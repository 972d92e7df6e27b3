#include "rq/sql/SqlTarget.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "Host/Expr.h"
#include "Query/Optimizer/Request/Features/SQORFeaturesMgr.h"

namespace {

SqlTarget::Dialect DialectOf(ServerInfo::TargetType target) {
  switch (target) {
    case ServerInfo::kSQLite:
      return SqlTarget::kSqlite;
    case ServerInfo::kPostgreSQL:
      return SqlTarget::kPostgresql;
    case ServerInfo::kDuckDB:
      return SqlTarget::kDuckdb;
    default:
      return SqlTarget::kStandard;
  }
}

/// Words that one of the dialects does not take as a name, in their order.
constexpr auto kReservedWords = std::to_array<std::string_view>({
    "abort",
    "add",
    "all",
    "alter",
    "analyse",
    "analyze",
    "and",
    "anti",
    "any",
    "array",
    "as",
    "asc",
    "asof",
    "asymmetric",
    "at",
    "authorization",
    "autoincrement",
    "before",
    "begin",
    "between",
    "binary",
    "both",
    "by",
    "case",
    "cast",
    "check",
    "collate",
    "collation",
    "column",
    "commit",
    "concurrently",
    "constraint",
    "create",
    "cross",
    "current",
    "current_catalog",
    "current_date",
    "current_role",
    "current_schema",
    "current_time",
    "current_timestamp",
    "current_user",
    "default",
    "deferrable",
    "delete",
    "desc",
    "describe",
    "distinct",
    "do",
    "drop",
    "else",
    "end",
    "escape",
    "except",
    "exists",
    "explain",
    "false",
    "fetch",
    "filter",
    "following",
    "for",
    "foreign",
    "freeze",
    "from",
    "full",
    "glob",
    "grant",
    "group",
    "having",
    "ilike",
    "in",
    "index",
    "indexed",
    "initially",
    "inner",
    "insert",
    "intersect",
    "interval",
    "into",
    "is",
    "isnull",
    "join",
    "lambda",
    "lateral",
    "leading",
    "left",
    "like",
    "limit",
    "localtime",
    "localtimestamp",
    "match",
    "natural",
    "not",
    "nothing",
    "notnull",
    "null",
    "offset",
    "on",
    "only",
    "or",
    "order",
    "outer",
    "over",
    "overlaps",
    "partition",
    "pivot",
    "pivot_longer",
    "pivot_wider",
    "placing",
    "positional",
    "preceding",
    "primary",
    "qualify",
    "raise",
    "range",
    "recursive",
    "references",
    "regexp",
    "release",
    "returning",
    "right",
    "rollback",
    "row",
    "rows",
    "savepoint",
    "select",
    "semi",
    "session_user",
    "set",
    "show",
    "similar",
    "some",
    "summarize",
    "symmetric",
    "system_user",
    "table",
    "tablesample",
    "then",
    "to",
    "trailing",
    "transaction",
    "true",
    "unbounded",
    "union",
    "unique",
    "unpack",
    "unpivot",
    "update",
    "user",
    "using",
    "values",
    "variadic",
    "verbose",
    "when",
    "where",
    "window",
    "with",
});
static_assert(std::ranges::is_sorted(kReservedWords));

bool IsPlainWord(std::string_view name) {
  const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || c == '_'; };
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  return !name.empty() && isLetter(name[0]) &&
         std::ranges::all_of(name, [&](char c) { return isLetter(c) || isDigit(c); }) &&
         !std::ranges::binary_search(kReservedWords, name);
}

}  // namespace

SqlTarget::SqlTarget(RefADatabase database, MemoryGateway& gateway)
    : m_database(std::move(database)),
      m_gateway(gateway),
      m_dialect(DialectOf(m_database->GetTargetType())),
      m_quote(FeaturesMgr::GetStringFeatureValue(m_database, SUFeaturesTable::kFeature_IdentifierQuoteChar, &gateway)
                  .ToUTF8()) {
  if (m_quote.empty()) m_quote = "\"";
}

std::string SqlTarget::GetName() const { return m_database->GetName().ToUTF8(); }

bool SqlTarget::Can(FeatureId id) const { return FeaturesMgr::IsSupportedFeature(m_database, id, &m_gateway); }

std::uint32_t SqlTarget::GetLimit(FeatureId id) const {
  return FeaturesMgr::GetIntegerFeatureValue(m_database, id, &m_gateway);
}

std::string SqlTarget::NameOf(FeatureId id) { return SUFeaturesTable::GetFeatureNameFromId(id).ToUTF8(); }

std::string SqlTarget::Quote(std::string_view name) const {
  if (IsPlainWord(name)) return std::string(name);
  std::string quoted = m_quote;
  for (const char c : name) {
    quoted += c;
    if (m_quote == std::string_view(&c, 1)) quoted += c;
  }
  return quoted + m_quote;
}

RefATable SqlTarget::FindBaseTable(const VoidID& tableID) const {
  const RefATable table(&m_gateway, tableID);
  const VoidID base = table->GetAliasedTableID();
  return base.IsNullID() ? table : RefATable(&m_gateway, base);
}

std::string SqlTarget::GetBareTableName(const VoidID& tableID) const {
  const RefATable table = FindBaseTable(tableID);
  KXString name = table->GetName();
  std::vector<std::pair<Expr, KXString>> names;
  table->GetDynamicNames(names);
  for (const auto& [where, dynamicName] : names) {
    std::vector<RefARpObject> objects;
    where.GetObjectsInExpr(&m_gateway, objects, false);
    if (!objects.empty() && objects.front()->GetID() == m_database->GetID()) name = dynamicName;
  }
  return name.ToUTF8();
}

std::string SqlTarget::GetTableName(const VoidID& tableID) const {
  const RefASchema schema(&m_gateway, FindBaseTable(tableID)->GetParentID());
  const std::string bare = Quote(GetBareTableName(tableID));
  return IsSqlite() || !schema ? bare : Quote(schema->GetName().ToUTF8()) + '.' + bare;
}
