#pragma once

#include <optional>
#include <string>
#include <vector>

#include "rq/Command.h"
#include "rq/QueryInput.h"

/// rq run: the rows of a query, from SQLite.
class CommandRun final : public Command {
 public:
  const char* GetName() const override { return "run"; }
  const char* GetDescription() const override { return "Run a query on SQLite and show its rows"; }
  void Define(CLI::App& app) override;
  int Run(CommandStreams& streams) override;

 private:
  QueryInput m_input;
  std::optional<std::string> m_db;
  std::string m_format = "table";
  std::vector<std::string> m_rewrites;
  std::vector<std::string> m_parameters;
};
