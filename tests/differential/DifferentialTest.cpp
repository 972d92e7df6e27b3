#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

#include "differential/Differential.h"
#include "differential/RandomQuery.h"

namespace {

TEST(Rewritings, KeepTheRowsOfRandomQueries) {
  const char* const pSeeds = std::getenv("DIFF_SEEDS");
  const char* const pFirst = std::getenv("DIFF_FIRST");
  const int numQueries = pSeeds ? std::atoi(pSeeds) : 600;
  const int first = pFirst ? std::atoi(pFirst) : 1;
  Differential differential;
  const std::vector<ModelTable> tables = ReadTables(differential.GetGateway());
  FillSmallSample(differential.GetDatabase(), tables);
  for (int seed = first; seed < first + numQueries; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const RandomQuery query = MakeRandomQuery(static_cast<std::uint64_t>(seed), tables);
    const KnownQuery known{query.m_text, query.m_reference, query.m_bOrdered, query.m_inexact, {}};
    try {
      const SqliteRows rows = differential.CheckRewritings(known);
      if (query.m_bGroups) differential.CheckSplits(known, rows, query.m_bMayNotSplit);
    } catch (const std::exception& error) {
      ADD_FAILURE() << error.what() << " in\n" << query.m_text << "\nor\n" << query.m_reference;
    }
  }
  for (const auto& [name, count] : differential.GetCounts()) std::cout << count << ' ' << name << '\n';
}

}  // namespace
