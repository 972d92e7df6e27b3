#include "rq/rewrite/Grain.h"

#include <algorithm>

#include "rq/sql/ConditionBuilder.h"
#include "rq/sql/SqlNodeUtil.h"
#include "rq/sql/SqlParser.h"

namespace {

/// Makes a query of expressions; what breaks out of a row by its brackets is a syntax error here.
constexpr std::string_view kSelect = "SELECT ALL ";
/// Makes a row of them, where nothing but expressions and the commas between them can be. The line feeds keep a comment
/// from eating the bracket.
constexpr std::string_view kRowBegin = "ROW(\n";
constexpr std::string_view kRowEnd = "\n)";

/// Calls something that reads a text with a prefix in front. What it raises gets its place in the text alone.
template <class Function>
auto WithoutPrefix(std::string_view prefix, const Function& read) {
  try {
    return read();
  } catch (const SqlError& error) {
    throw SqlError(error.GetOffset() - std::min(error.GetOffset(), prefix.size()), error.what());
  }
}

/// The names of a block, which a grain has no subqueries over.
class GrainScope final : public SqlScope {
 public:
  explicit GrainScope(SqlScope& block) : m_block(block) {}

  OwnedRqExprPtr MakeColumn(const std::vector<std::string>& names, SqlNode node) override {
    return m_block.MakeColumn(names, node);
  }
  Heap<RqExprSubquery> MakeSubquery(SqlNode select, std::size_t) override {
    RaiseUnsupported(select, "a subquery in a grain");
  }
  ColumnUses GetColumnUses() const override { return m_block.GetColumnUses(); }

 private:
  SqlScope& m_block;
};

}  // namespace

std::vector<OwnedRqExprPtr> GrainReader::Read(QueryScope& block) const {
  const std::string select = std::string(kSelect) + m_text;
  WithoutPrefix(kSelect, [&select] { static_cast<void>(SqlQuery(select)); });
  const std::string row = std::string(kRowBegin).append(m_text).append(kRowEnd);
  return WithoutPrefix(kRowBegin, [&] {
    const SqlCondition parsed(row);
    GrainScope scope(block);
    SqlContext context;
    context.m_pScope = &scope;
    ConditionBuilder builder(row, context);
    std::vector<OwnedRqExprPtr> columns;
    for (const SqlNode column : parsed.GetExpression().Get("args").GetElements()) {
      columns.push_back(builder.BuildValue(column));
    }
    return columns;
  });
}

void GrainReader::OnScope(QueryScope& scope) {
  // The outermost block has none around it, and is the last of those.
  if (scope.HasOuter()) return;
  try {
    m_outcome = Read(scope);
  } catch (const SqlError& error) {
    m_outcome = error;
  }
}

std::vector<OwnedRqExprPtr> GrainReader::Take(const std::string& option) {
  if (const auto* const pError = std::get_if<SqlError>(&m_outcome)) {
    // As a message without the program's name and the line feed, which come with every error.
    const std::string message = MessageText(option + ", ", *pError, m_text);
    const std::size_t begin = message.find(' ') + 1;
    throw std::runtime_error(message.substr(begin, message.size() - begin - 1));
  }
  return std::move(std::get<std::vector<OwnedRqExprPtr>>(m_outcome));
}
