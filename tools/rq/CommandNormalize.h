#pragma once

#include <optional>
#include <string>

#include "rq/Command.h"
#include "rq/NormalForm.h"

/// rq normalize: conditions in, their normal forms out.
///
/// Conditions given as arguments are all parsed before anything is written: an error in one of them shows where it is
/// and leaves the output empty. In a file or a stream each line is for itself: an error takes the place of its result,
/// the other lines go on, and the exit status tells that there was one. A stream is worked on line by line, so memory
/// does not grow with it.
class CommandNormalize final : public Command {
 public:
  const char* GetName() const override { return "normalize"; }
  const char* GetDescription() const override {
    return "Give conditions of SQL in conjunctive or disjunctive normal form";
  }
  void Define(CLI::App& app) override;
  int Run(CommandStreams& streams) override;

  /// What the options that were parsed say.
  NormalizeOptions GetOptions() const;

 private:
  int RunArguments(const NormalizeOptions& options, CommandStreams& streams) const;

  std::string m_form = "cnf";
  std::string m_format = "text";
  std::optional<std::string> m_file;
  bool m_bKeepIn = false;
  bool m_bForce = false;
  int m_limit = -1;
};
