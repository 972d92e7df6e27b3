#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "HostMemory/MemoryGateway.h"
#include "rq/Command.h"
#include "rq/Implication.h"

/// rq implies: whether a condition implies another.
///
/// A pair comes as two arguments, or one a line from a file or a stream. Both conditions of a pair are about the same
/// tables. An error on a line takes the place of its answer, and the other lines go on.
class CommandImplies final : public Command {
 public:
  const char* GetName() const override { return "implies"; }
  const char* GetDescription() const override { return "Tell whether one condition of SQL implies another"; }
  void Define(CLI::App& app) override;
  int Run(CommandStreams& streams) override;

 private:
  using Texts = std::array<std::string_view, 2>;  ///< Of A and B.

  bool IsJson() const;
  int RunArguments(CommandStreams& streams);
  int RunLines(CommandStreams& streams);
  ImplicationAnswer AnswerLine(std::string_view line);
  /// Raises SqlError with its place in the text that current then numbers.
  ImplicationAnswer Answer(const Texts& texts, std::size_t& current);

  std::optional<std::string> m_format;
  std::optional<std::string> m_file;
  std::vector<std::string> m_settings;
  MemoryGateway m_gateway;
};
