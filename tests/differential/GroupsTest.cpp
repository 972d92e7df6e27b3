#include <gtest/gtest.h>

#include "differential/Differential.h"
#include "differential/SmallSample.h"
#include "rq/rewrite/RewriteRefusal.h"
#include "rq/rewrite/SplitBlock.h"
#include "rq/rewrite/SummaryAnswer.h"
#include "rq/sample/SampleData.h"

// Splits of groups, aggregate by aggregate, and answers from a summary.

namespace {

/// Groups of a plain kind, with nulls alone, and of a single row, with and without a value.
constexpr const char* kSuppliers = R"sql(
INSERT INTO supplier VALUES
  (1, 'a', 'Norway', 'North', 4), (2, 'b', 'Norway', 'North', 1), (3, 'c', 'Poland', 'North', NULL),
  (4, 'd', 'Poland', 'North', 4), (5, 'e', 'Poland', 'North', 2), (6, 'f', 'Sweden', 'North', 3),
  (7, 'g', 'Spain', 'South', NULL), (8, 'h', 'Italy', 'South', NULL), (9, 'i', 'Italy', 'South', NULL),
  (10, 'j', 'France', 'West', 5), (11, 'k', 'China', 'East', NULL))sql";

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

struct LogicalQuery {
  const char* m_text;
  /// The same over the detailed rows.
  const char* m_reference;
};

constexpr LogicalQuery kAnswered[] = {
    {R"(SELECT "Times"."YearKey", SUM("Turnover"."Amount"), COUNT(*) FROM "Turnover", "Times" GROUP BY "Times"."YearKey")",
     "SELECT year_id, sum(amount), count(*) FROM sales JOIN calendar USING (date_id) GROUP BY year_id"},
    {R"(SELECT "Products"."Department", SUM("Turnover"."Quantity"), SUM("Turnover"."Discount"), COUNT("Turnover"."Lines")
        FROM "Turnover", "Products" GROUP BY 1)",
     "SELECT department, sum(quantity), sum(discount), count(line_no) FROM sales JOIN product USING (product_id) "
     "GROUP BY department"},
    {R"(SELECT "Products"."Category", "Times"."YearKey", AVG("Turnover"."Amount"), SUM("Turnover"."Cost")
        FROM "Turnover", "Products", "Times" WHERE "Products"."Department" = 'Food' AND "Times"."YearKey" > 2022
        GROUP BY "Products"."Category", "Times"."YearKey")",
     "SELECT category_name, year_id, avg(amount), sum(cost) FROM sales JOIN product USING (product_id) "
     "JOIN calendar USING (date_id) WHERE department = 'Food' AND year_id > 2022 GROUP BY category_name, year_id"},
    {R"(SELECT SUM("Turnover"."Amount"), AVG("Turnover"."Quantity"), COUNT(*) FROM "Turnover")",
     "SELECT sum(amount), avg(quantity), count(*) FROM sales"},
    {R"(SELECT "Times"."MonthName", SUM("Turnover"."Amount" * 2) FROM "Turnover", "Times"
        WHERE "Times"."QuarterKey" IN (20231, 20244) GROUP BY 1 HAVING SUM("Turnover"."Amount") > 1000 ORDER BY 2 DESC)",
     "SELECT month_name, sum(amount * 2) FROM sales JOIN calendar USING (date_id) WHERE quarter_id IN (20231, 20244) "
     "GROUP BY 1 HAVING sum(amount) > 1000 ORDER BY 2 DESC"},
    {R"(SELECT "Products"."Department", SUM("Turnover"."Amount") - SUM("Turnover"."Cost") FROM "Turnover", "Products"
        WHERE "Products"."Category" LIKE 'T%' OR "Products"."CategoryKey" = 2 GROUP BY 1)",
     "SELECT department, sum(amount) - sum(cost) FROM sales JOIN product USING (product_id) "
     "WHERE category_name LIKE 'T%' OR category_id = 2 GROUP BY 1"},
};

TEST(Answers, FromASummaryAreThoseOfTheDetails) {
  Differential differential;
  SampleData::Fill(differential.GetDatabase());
  const RepositoryNames names(differential.GetGateway());
  const NameLookup summary = names.FindPhysicalTable({L"sales_month_category"});
  ASSERT_TRUE(summary);
  for (const auto& [text, reference] : kAnswered) {
    const SqliteRows rows = differential.GetDatabase().Query(reference);
    EXPECT_FALSE(rows.m_rows.empty());
    // An average of the sample's exact sums is itself exact.
    const KnownQuery query{text, reference, false, {}, {}};
    BuiltList built = differential.Build(text);
    try {
      SummaryAnswer(differential.GetGateway(), summary.m_id)
          .Answer(static_cast<RqList&>(*built.m_list), NextTableNumber(*built.m_list));
      differential.CheckRequest(query, rows, "answer", built);
    } catch (const RewriteRefusal& refusal) {
      ADD_FAILURE() << refusal.what() << " in\n" << text;
    }
  }
}

}  // namespace
