#include <gtest/gtest.h>

#include "differential/Differential.h"
#include "differential/SmallSample.h"
#include "rq/sample/SampleData.h"

// Splits of groups, aggregate by aggregate.

namespace {

/// Groups of a plain kind, with nulls alone, of a single row, with and without a value, and of equal values, whose
/// variance as decimals is below zero by rounding.
constexpr const char* kSuppliers = R"sql(
INSERT INTO supplier VALUES
  (1, 'a', 'Norway', 'North', 4), (2, 'b', 'Norway', 'North', 1), (3, 'c', 'Poland', 'North', NULL),
  (4, 'd', 'Poland', 'North', 4), (5, 'e', 'Poland', 'North', 2), (6, 'f', 'Sweden', 'North', 3),
  (7, 'g', 'Spain', 'South', NULL), (8, 'h', 'Italy', 'South', NULL), (9, 'i', 'Italy', 'South', NULL),
  (10, 'j', 'France', 'West', 5), (11, 'k', 'China', 'East', NULL),
  (12, 'l', 'Peru', 'Andes', 4), (13, 'm', 'Peru', 'Andes', 4), (14, 'n', 'Chile', 'Andes', 4))sql";

struct Kind {
  const char* m_call;  ///< With # for a filter.
  bool m_bInexact = false;
  bool m_bSplits = true;
};

constexpr Kind kKinds[] = {
    {"SUM(rating)#"},
    {"COUNT(rating)#"},
    {"COUNT(*)#"},
    {"AVG(rating)#"},
    {"MIN(rating)#"},
    {"MAX(rating)#"},
    {"MAX(supplier_name)#"},
    {"STDDEV_POP(rating)#", true},
    {"STDDEV_SAMP(rating)#", true},
    {"STDDEV_POP(rating * 0.1)#", true},
    {"STDDEV_SAMP(rating * 0.1)#", true},
    {"AVG(rating * 0.1)#", true},
    {"SUM(rating * 2 + supplier_id)#"},
    {"COALESCE(SUM(rating)#, -1) + COUNT(*)#"},
    {"MIN(DISTINCT rating)#"},
    {"MAX(DISTINCT rating)#"},
    {"COUNT(DISTINCT rating)#", false, false},
    {"SUM(DISTINCT rating)#", false, false},
    {"AVG(DISTINCT rating)#", false, false},
};

TEST(Splits, KeepEachAggregateOverEachGroup) {
  static constexpr const char* kFilters[] = {"", " FILTER (WHERE rating > 1)", " FILTER (WHERE country <> 'Norway')",
                                             " FILTER (WHERE rating > 9)"};
  // Groups, all rows, and no rows in either way.
  static constexpr std::pair<const char*, const char*> kQueries[] = {
      {"SELECT region, ", " FROM supplier GROUP BY region"},
      {"SELECT region, ", " FROM supplier GROUP BY region HAVING COUNT(rating) < 2"},
      {"SELECT 1, ", " FROM supplier"},
      {"SELECT region, ", " FROM supplier WHERE rating > 9 GROUP BY region"},
      {"SELECT 1, ", " FROM supplier WHERE rating > 9"},
      // Regions without any.
      {"SELECT w.c1, ",
       " FROM (SELECT region AS c1 FROM supplier UNION SELECT 'Centre' FROM supplier) w "
       "LEFT JOIN supplier ON supplier.region = w.c1 GROUP BY w.c1"},
  };
  Differential differential;
  differential.GetDatabase().Execute(SampleData::GetTables() + kSuppliers);
  int numSplits = 0;
  for (const Kind& kind : kKinds) {
    for (const char* const filter : kFilters) {
      const std::string call = Replaced(kind.m_call, {{"#", filter}});
      for (const auto& [before, behind] : kQueries) {
        const std::string text = before + call + behind;
        const KnownQuery query{text, text, false, {false, kind.m_bInexact}, {}};
        const SqliteRows rows = differential.GetDatabase().Query(text);
        for (const char* const grain : {"country", "supplier_id", "rating, country"}) {
          EXPECT_EQ(differential.CheckSplit(query, rows, grain), kind.m_bSplits) << text << "\nat " << grain;
          numSplits += kind.m_bSplits ? 1 : 0;
        }
      }
    }
  }
  EXPECT_EQ(differential.GetCounts().at("split"), numSplits);
}

}  // namespace
