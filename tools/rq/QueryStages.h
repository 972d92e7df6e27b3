#pragma once

#include <string>
#include <vector>

#include "HostMemory/MemoryGateway.h"
#include "rq/sql/QueryBuilder.h"

/// Notes for each block of a query what stands between its text and its tree: the block as parsed, the conjuncts of its
/// filter, its join graph, and the trees that all joins fold to.
class QueryStages final : public QueryObserver {
 public:
  /// The gateway gives the names, and is lent.
  explicit QueryStages(MemoryGateway& gateway) : m_gateway(gateway) {}

  void OnBlock(RqList& list) override;

  /// The notes, each under a heading.
  const std::string& GetText() const { return m_text; }

 private:
  void AppendHeading(const std::string& title);
  void AppendTree(const RqNode& node);
  void AppendConjuncts(RqList& list);
  void AppendGraph(RqList& list);
  void AppendCollapsed(RqList& list);

  MemoryGateway& m_gateway;
  int m_numBlocks = 0;
  std::string m_text;
};
