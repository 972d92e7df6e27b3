#include "rq/rewrite/Grain.h"

#include "rq/sql/ConditionBuilder.h"
#include "rq/sql/SqlParser.h"

namespace {

/// Makes a query of expressions.
constexpr std::string_view kPrefix = "SELECT ";

}  // namespace

std::vector<OwnedRqExprPtr> GrainReader::Read(QueryScope& scope) const {
  const std::string text = std::string(kPrefix) + m_text;
  try {
    const SqlQuery query(text);
    SqlContext context;
    context.m_pScope = &scope;
    ConditionBuilder builder(text, context);
    std::vector<OwnedRqExprPtr> columns;
    for (const SqlNode target : query.GetSelect().Get("targetList").GetElements()) {
      columns.push_back(builder.BuildValue(target.Get("val")));
    }
    return columns;
  } catch (const SqlError& error) {
    throw SqlError(error.GetOffset() - std::min(error.GetOffset(), kPrefix.size()), error.what());
  }
}

void GrainReader::OnScope(QueryScope& scope) {
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
