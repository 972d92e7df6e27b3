#include "rq/CommandBytes.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <list>
#include <ostream>
#include <stdexcept>

#include "Host/ErrorMessage.h"
#include "HostMemory/RepositoryNames.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "rq/CommandLine.h"
#include "rq/ModelOption.h"
#include "rq/RequestBytes.h"
#include "rq/io/BlockWriter.h"
#include "rq/io/Files.h"
#include "rq/sql/ConditionBuilder.h"
#include "rq/sql/QueryBuilder.h"
#include "rq/sql/SqlLexer.h"
#include "rq/sql/SqlText.h"

namespace {

constexpr const char* kFooter =
    R"help(A file is read whole and must hold one tree and nothing else. The exit status is
0, or 2 if there was an error.

Examples:
  rq bytes --out filter.rq "region = 'EMEA' AND year = 2024"
  rq bytes --in filter.rq
  rq bytes --out query.rq "SELECT brand FROM product WHERE list_price > 100"

A query is over the tables of the model, as for rq explain; its objects travel by
number.)help";

void Print(CommandStreams& streams, const std::string& text) {
  BlockWriter writer(streams.m_out);
  writer.Append(text);
  writer.Flush();
}

/// Whether a text begins as a query does.
bool IsQuery(const std::string& text) {
  SqlLexer lexer(text);
  SqlToken token = lexer.Next();
  while (token.m_end == token.m_begin + 1 && text[token.m_begin] == '(') token = lexer.Next();
  std::string word = text.substr(token.m_begin, token.m_end - token.m_begin);
  std::ranges::transform(word, word.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
  return word == "select" || word == "with" || word == "values";
}

}  // namespace

void CommandBytes::Define(CLI::App& app) {
  app.add_option("TEXT", CLI::callback_t(), "The condition or the query to write")->type_name("");
  app.add_option("--out", m_out, "Write the bytes to a file")->type_name("FILE");
  app.add_option("--in", m_in, "Read the bytes of a file and print the text form")->type_name("FILE");
  app.add_option("--model", m_model, "The model of a query's tables, a file of JSON")->type_name("FILE");
  app.footer(kFooter);
}

int CommandBytes::Run(CommandStreams& streams) {
  if (m_in.empty()) {
    if (GetTexts().empty()) throw UsageError("nothing to do: give a condition or a query, or --in FILE");
    return Write(streams);
  }
  if (!GetTexts().empty() || !m_out.empty() || m_model) {
    throw UsageError("--in goes with no text, with no --out and with no --model");
  }
  return Read(streams);
}

int CommandBytes::Write(CommandStreams& streams) const {
  const std::string& text = GetTexts()[0];
  MemoryGateway gateway;  // outlives the tree
  Heap<RqNode> tree;
  try {
    if (IsQuery(text)) {
      ReadModel(m_model, gateway);
      const RepositoryNames names(gateway);
      const SqlQuery query(text);
      tree = QueryBuilder(text, gateway, names).Build(query.GetSelect()).m_list;
    } else {
      tree = ParseCondition(text);
    }
  } catch (const SqlError& error) {
    streams.m_err << MessageText("", error, text);
    return kExitError;
  }
  const ByteVector bytes = WriteRequest(*tree);
  if (!m_out.empty()) WriteBytes(m_out, bytes);

  std::list<RqNode*> nodes;
  tree->GetObjects(nodes);
  char line[96];
  std::snprintf(line, sizeof line, "%zu bytes, %zu nodes, %.1f bytes a node\n", bytes.size(), nodes.size(),
                static_cast<double>(bytes.size()) / static_cast<double>(nodes.size()));
  Print(streams, line);
  return kExitSuccess;
}

int CommandBytes::Read(CommandStreams& streams) const {
  const ByteVector bytes = ReadBytes(m_in);
  std::string text;
  try {
    const Heap<RqNode> tree = ReadRequest(bytes);
    const std::string whole = RqDumpout::StringFrom(tree.Get()).ToUTF8();
    text = whole.substr(whole.starts_with(' ') ? 1 : 0) + '\n';
  } catch (const ErrorMessage& error) {
    throw std::runtime_error(m_in + ": " + error.GetText().ToUTF8());
  }
  Print(streams, text);
  return kExitSuccess;
}
