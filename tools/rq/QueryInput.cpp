#include "rq/QueryInput.h"

#include <CLI/CLI.hpp>
#include <ostream>

#include "HostMemory/RepositoryNames.h"
#include "rq/Command.h"
#include "rq/ModelOption.h"
#include "rq/io/Files.h"
#include "rq/sql/SqlParser.h"
#include "rq/sql/SqlText.h"

void QueryInput::Define(CLI::App& app) {
  app.add_option("QUERY", CLI::callback_t(), "The query, or \"-\"")->type_name("");
  app.add_option("--file", m_file, "Read the query from a file; \"-\" is the standard input")->type_name("FILE");
  app.add_option("--model", m_model, "The model of the tables, a file of JSON")->type_name("FILE");
}

std::optional<BuiltList> QueryInput::Build(const std::vector<std::string>& texts, MemoryGateway& gateway,
                                           CommandStreams& streams, QueryObserver* pObserver) {
  if (texts.empty() && !m_file) throw UsageError("nothing to do: give a query, --file FILE or -");
  if (!texts.empty() && m_file) throw UsageError("--file goes with no query");
  ReadModel(m_model, gateway);
  const RepositoryNames names(gateway);
  if (!texts.empty() && texts[0] == "-") m_file = "-";
  const std::string text = m_file ? ReadText(*m_file, streams.m_in) : texts[0];
  try {
    const SqlQuery query(text);
    return QueryBuilder(text, gateway, names, pObserver).Build(query.GetSelect());
  } catch (const SqlError& error) {
    streams.m_err << MessageText(m_file && *m_file != "-" ? *m_file + ", " : "", error, text);
    return {};
  }
}
