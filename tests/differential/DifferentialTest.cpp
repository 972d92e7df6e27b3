#include <gtest/gtest.h>

#include <iostream>

#include "differential/Differential.h"
#include "differential/RandomQuery.h"

namespace {

TEST(Rewritings, KeepTheRowsOfRandomQueries) {
  constexpr std::uint64_t kNumQueries = 520;
  Differential differential;
  const std::vector<ModelTable> tables = ReadTables(differential.GetGateway());
  FillSmallSample(differential.GetDatabase(), tables);
  int numWithRows = 0;
  for (std::uint64_t seed = 1; seed <= kNumQueries; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const RandomQuery query = MakeRandomQuery(seed, tables);
    const KnownQuery known{query.m_text, query.m_reference, query.m_bOrdered, query.m_inexact, {}};
    try {
      const SqliteRows rows = differential.CheckRewritings(known);
      if (query.m_bGroups) differential.CheckSplits(known, rows, query.m_bMayNotSplit);
      numWithRows += rows.m_rows.empty() ? 0 : 1;
    } catch (const std::exception& error) {
      ADD_FAILURE() << error.what() << " in\n" << query.m_text << "\nor\n" << query.m_reference;
    }
  }
  std::cout << numWithRows << " queries with rows\n";
  for (const auto& [name, count] : differential.GetCounts()) std::cout << count << ' ' << name << '\n';
  EXPECT_GT(numWithRows, kNumQueries / 2);
  EXPECT_GT(differential.GetCounts().at("split"), 1500);
}

}  // namespace
