#pragma once

#include <string>

#include "rq/Command.h"
#include "rq/QueryInput.h"

/// rq explain: the request tree of a query over a business model.
class CommandExplain final : public Command {
 public:
  const char* GetName() const override { return "explain"; }
  const char* GetDescription() const override { return "Show the request tree of a query"; }
  void Define(CLI::App& app) override;
  int Run(CommandStreams& streams) override;

 private:
  QueryInput m_input;
  std::string m_format = "text";
  bool m_bIds = false;
  bool m_bOneLine = false;
  bool m_bStages = false;
};
