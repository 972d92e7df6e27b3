#pragma once

#include <optional>
#include <string>

#include "rq/Command.h"

/// rq bytes: the byte form of a condition or a query, written and read.
///
/// Reading trusts nothing: damage of any kind is an error with its offset, and nothing is printed of a damaged tree.
class CommandBytes final : public Command {
 public:
  const char* GetName() const override { return "bytes"; }
  const char* GetDescription() const override { return "Write a condition or a query in its byte form, or read one"; }
  void Define(CLI::App& app) override;
  int Run(CommandStreams& streams) override;

 private:
  int Write(CommandStreams& streams) const;
  int Read(CommandStreams& streams) const;

  std::string m_out;
  std::string m_in;
  std::optional<std::string> m_model;
};
