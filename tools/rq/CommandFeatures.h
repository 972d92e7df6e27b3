#pragma once

#include <optional>
#include <string>
#include <vector>

#include "rq/Command.h"

/// rq features: what a database can do, with what request properties make of it.
class CommandFeatures final : public Command {
 public:
  const char* GetName() const override { return "features"; }
  const char* GetDescription() const override { return "Tell what a database can do, feature by feature"; }
  void Define(CLI::App& app) override;
  int Run(CommandStreams& streams) override;

 private:
  std::string m_database;
  std::optional<std::string> m_model;
  std::vector<std::string> m_settings;
  std::optional<std::string> m_feature;
  std::string m_format = "text";
};
