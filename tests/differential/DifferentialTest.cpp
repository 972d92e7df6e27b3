#include <gtest/gtest.h>

#include <iostream>

#include "differential/Differential.h"
#include "differential/RandomQuery.h"

namespace {

TEST(Rewritings, KeepTheRowsOfShapesThatRandomQueriesSeldomHave) {
  static constexpr const char* kQueries[] = {
      // A condition of an inner join that goes to WHERE, beside a disjunction.
      "SELECT p.product_id FROM product p JOIN (supplier s LEFT JOIN promotion o ON o.discount_percent > 2) "
      "ON o.promotion_id = p.supplier_id WHERE p.color IS NULL OR p.brand = 'Nova'",
      // The same on one side of a full join.
      "SELECT p.product_id, w.capacity FROM product p JOIN (supplier s LEFT JOIN promotion o "
      "ON o.promotion_id = s.rating) ON o.promotion_id = p.supplier_id FULL JOIN warehouse w "
      "ON w.warehouse_id = p.product_id",
      "SELECT w.capacity, p.product_id FROM warehouse w FULL JOIN (product p LEFT JOIN supplier s "
      "ON s.rating = p.supplier_id JOIN promotion o ON o.promotion_id = p.product_id AND s.region <> 'East') "
      "ON w.warehouse_id = p.product_id",
      // Inner columns with names and expressions that end like a name.
      "SELECT d.c1, d.c2 FROM (SELECT -p.c1 AS c1, p.c2 || p.c1 AS c2 FROM (SELECT rating + 1 AS c1, UPPER(region) AS "
      "c2 "
      "FROM supplier) p) d",
      // Readers of one list in each other's reach.
      "WITH w AS (SELECT rating AS c1 FROM supplier) SELECT product_id FROM product WHERE supplier_id IN "
      "(SELECT c1 FROM w) AND brand IS NULL OR product_id IN (SELECT c1 + 1 FROM w WHERE c1 > 2)",
      "WITH w AS (SELECT rating AS c1, region AS c2 FROM supplier) SELECT w.c1, COUNT(*) FROM w GROUP BY w.c1 "
      "HAVING w.c1 IN (SELECT c1 + 1 FROM w) OR COUNT(*) > 1",
      // A row over a subquery that a negation reaches.
      "SELECT product_id FROM product WHERE NOT (color IS NULL OR (product_id, supplier_id) IN "
      "(SELECT supplier_id, rating FROM supplier WHERE rating IS NOT NULL))",
      // A subquery behind the grouping that depends on the group.
      "SELECT supplier_id, SUM(unit_cost) FROM product p GROUP BY supplier_id HAVING EXISTS "
      "(SELECT 1 FROM supplier s WHERE s.supplier_id = p.supplier_id AND s.rating > 1)",
  };
  Differential differential;
  FillSmallSample(differential.GetDatabase(), ReadTables(differential.GetGateway()));
  for (const char* const text : kQueries) {
    const KnownQuery query{text, text, false, {}, {}};
    const SqliteRows rows = differential.CheckRewritings(query);
    EXPECT_FALSE(rows.m_rows.empty()) << text;
    differential.CheckSplits(query, rows, true);
  }
  EXPECT_EQ(differential.GetCounts().at(
                "not split: a subquery in the select list or in HAVING refers to columns of the query"),
            1);
}

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
