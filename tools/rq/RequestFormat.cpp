#include "rq/RequestFormat.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "Host/BaseStringUtil.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "rq/TargetDatabase.h"
#include "rq/TreeDot.h"
#include "rq/TreeJson.h"
#include "rq/sql/SqlWriter.h"

void RequestFormat::Define(CLI::App& app) {
  app.add_option("--format", m_format, "text: the text form; json: nested objects; dot: a graph for Graphviz; sql")
      ->check(CLI::IsMember({"text", "json", "dot", "sql"}))
      ->type_name("FORMAT")
      ->capture_default_str();
  app.add_option("--target", m_target, "The database, or a preset, that SQL is written for")
      ->type_name("NAME")
      ->capture_default_str();
}

std::string RequestFormat::Write(const BuiltList& built, MemoryGateway& gateway) const {
  if (m_format == "json") return WriteTreeJson(*built.m_list, &gateway, {});
  if (m_format == "dot") return WriteTreeDot(*built.m_list, &gateway, {});
  if (m_format == "sql") {
    const SqlTarget target(FindTargetDatabase(BaseStringUtil::StdStringToString(m_target), gateway), gateway);
    return SqlWriter(target).Write(*built.m_list, built.m_names) + '\n';
  }
  const std::string tree = RqDumpout::StringFrom(*built.m_list, false, true, &gateway).ToUTF8();
  return tree.substr(std::min(tree.find_first_not_of(" \n"), tree.size())) + '\n';
}
