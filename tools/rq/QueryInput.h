#pragma once

#include <optional>
#include <string>
#include <vector>

#include "HostMemory/MemoryGateway.h"
#include "rq/CommandLine.h"
#include "rq/sql/QueryBuilder.h"

namespace CLI {
class App;
}

/// What the commands take that make the request of a query.
class QueryInput {
 public:
  void Define(CLI::App& app);
  /// Reads the model into the gateway and builds the request of the line's text or, without one, of the file; the
  /// observer is lent and may be null. Without a result it has told the error stream what is wrong with the text.
  /// Raises UsageError.
  std::optional<BuiltList> Build(const std::vector<std::string>& texts, MemoryGateway& gateway, CommandStreams& streams,
                                 QueryObserver* pObserver = nullptr);

 private:
  std::optional<std::string> m_file;
  std::optional<std::string> m_model;
};
