#pragma once

#include <memory>
#include <string>
#include <vector>

#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractList.h"
#include "rq/sql/QueryBuilder.h"

// Rewritings of whole requests that leave their rows as they are, by name.

/// The rewritings that a command line asks for, in their order.
class Rewrites {
 public:
  /// Each is "name" or, if the rewriting takes one, "name:argument". Raises UsageError for all else.
  explicit Rewrites(const std::vector<std::string>& texts);
  ~Rewrites();

  /// To be the observer of the query's builder; lent.
  QueryObserver& GetObserver();
  /// Takes the request and gives the rewritten one, which may be another list. Raises what the rewritings do, among it
  /// RewriteRefusal, and std::runtime_error for an argument that the query has not.
  Heap<RqAbstractList> Apply(Heap<RqAbstractList> request, MemoryGateway& gateway);

 private:
  class Steps;
  std::unique_ptr<Steps> m_steps;
};

/// One rewriting that takes no argument.
Heap<RqAbstractList> ApplyRewrite(const std::string& rewrite, Heap<RqAbstractList> request, MemoryGateway& gateway);

/// A line for each rewriting.
std::string RewriteHelp();
