#pragma once

#include <string>

#include "rq/sql/QueryBuilder.h"

namespace CLI {
class App;
}

/// How a command shows a request: the options, and the text of a request by them.
class RequestFormat {
 public:
  void Define(CLI::App& app);
  /// Raises std::runtime_error for a database that is not known, and SqlWriteError for what it cannot do.
  std::string Write(const BuiltList& built, MemoryGateway& gateway) const;

 private:
  std::string m_format = "text";
  std::string m_target = "sqlite";
};
