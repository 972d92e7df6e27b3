#pragma once

#include <string>

#include "rq/Command.h"
#include "rq/QueryInput.h"

/// rq sql: a query as SQL for one database.
class CommandSql final : public Command {
 public:
  const char* GetName() const override { return "sql"; }
  const char* GetDescription() const override { return "Write a query as SQL for a database"; }
  void Define(CLI::App& app) override;
  int Run(CommandStreams& streams) override;

 private:
  QueryInput m_input;
  std::string m_target;
};
