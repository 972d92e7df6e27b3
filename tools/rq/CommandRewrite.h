#pragma once

#include <optional>
#include <string>

#include "rq/Command.h"
#include "rq/QueryInput.h"
#include "rq/RequestFormat.h"
#include "rq/rewrite/Grain.h"

/// What rq split and rq answer have in common: the outermost block of a query is rewritten and shown.
class CommandRewrite : public Command {
 public:
  void Define(CLI::App& app) override;
  int Run(CommandStreams& streams) override;

 protected:
  /// Lent while the query is built; null for nobody.
  virtual QueryObserver* GetObserver() { return nullptr; }
  virtual void DefineOwn(CLI::App& app) = 0;
  /// Raises RewriteRefusal, and std::runtime_error for an option that is wrong.
  virtual void Rewrite(RqList& block, MemoryGateway& gateway) = 0;

 private:
  QueryInput m_input;
  RequestFormat m_format;
};

/// rq split: a grouped block in two.
class CommandSplit final : public CommandRewrite {
 public:
  const char* GetName() const override { return "split"; }
  const char* GetDescription() const override { return "Group a query in two steps, at a finer grain first"; }

 protected:
  QueryObserver* GetObserver() override;
  void DefineOwn(CLI::App& app) override;
  void Rewrite(RqList& block, MemoryGateway& gateway) override;

 private:
  std::string m_grain;
  std::optional<GrainReader> m_reader;
};

/// rq answer: a query over the business model from a summary table.
class CommandAnswer final : public CommandRewrite {
 public:
  const char* GetName() const override { return "answer"; }
  const char* GetDescription() const override { return "Answer a query over the business model from a summary table"; }

 protected:
  void DefineOwn(CLI::App& app) override;
  void Rewrite(RqList& block, MemoryGateway& gateway) override;

 private:
  std::string m_from;
};
