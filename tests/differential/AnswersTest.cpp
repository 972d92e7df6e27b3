#include <gtest/gtest.h>

#include "Host/BaseStringUtil.h"
#include "Query/Optimizer/Request/Text/SQORPlanChecker.h"
#include "differential/Differential.h"
#include "rq/rewrite/RewriteRefusal.h"
#include "rq/rewrite/SplitBlock.h"
#include "rq/rewrite/SummaryAnswer.h"
#include "rq/sample/SampleData.h"

// Answers from summaries, against those of the detailed rows.

namespace {

/// Summaries of sales whose days of delivery and promotions may be null. A key of the first leads to a day that is not
/// that of a delivery.
constexpr const char* kParcels = R"sql(
CREATE TABLE parcels_month AS
  SELECT c.month_id, d.month_id AS ship_month_id, (SELECT min(date_id) FROM calendar) AS loaded_id, s.product_id,
         s.promotion_id, p.medium, count(*) AS line_count, sum(s.amount) AS amount
  FROM sales s JOIN calendar c USING (date_id) LEFT JOIN calendar d ON d.date_id = s.ship_date_id
    LEFT JOIN promotion p USING (promotion_id) GROUP BY 1, 2, 4, 5;
CREATE TABLE parcels_between AS
  SELECT c.month_id AS from_id, c.month_id AS to_id, min(s.ship_date_id) AS day_id, sum(s.amount) AS amount
  FROM sales s JOIN calendar c USING (date_id) LEFT JOIN calendar d ON d.date_id = s.ship_date_id
  GROUP BY c.month_id, d.month_id;
CREATE TABLE parcels_delivered AS
  SELECT d.month_id, sum(s.amount) AS amount FROM sales s LEFT JOIN calendar d ON d.date_id = s.ship_date_id GROUP BY 1;
)sql";

constexpr const char* kSales = "sales_month_category";
constexpr const char* kMonth = "parcels_month";
constexpr const char* kBetween = "parcels_between";
constexpr const char* kDelivered = "parcels_delivered";

struct LogicalQuery {
  const char* m_summary;
  const char* m_text;
  /// The same over the detailed rows, or why it is refused.
  const char* m_expected;
};

constexpr LogicalQuery kQueries[] = {
    {kSales,
     R"(SELECT "Times"."YearKey", SUM("Turnover"."Amount"), COUNT(*) FROM "Turnover", "Times" GROUP BY "Times"."YearKey")",
     "SELECT year_id, sum(amount), count(*) FROM sales JOIN calendar USING (date_id) GROUP BY year_id"},
    {kSales,
     R"(SELECT "Products"."Department", SUM("Turnover"."Quantity"), SUM("Turnover"."Discount"), COUNT("Turnover"."Lines")
        FROM "Turnover", "Products" GROUP BY 1)",
     "SELECT department, sum(quantity), sum(discount), count(line_no) FROM sales JOIN product USING (product_id) "
     "GROUP BY department"},
    {kSales, R"(SELECT "Products"."Category", "Times"."YearKey", AVG("Turnover"."Amount"), SUM("Turnover"."Cost")
        FROM "Turnover", "Products", "Times" WHERE "Products"."Department" = 'Food' AND "Times"."YearKey" > 2022
        GROUP BY "Products"."Category", "Times"."YearKey")",
     "SELECT category_name, year_id, avg(amount), sum(cost) FROM sales JOIN product USING (product_id) "
     "JOIN calendar USING (date_id) WHERE department = 'Food' AND year_id > 2022 GROUP BY category_name, year_id"},
    {kSales, R"(SELECT SUM("Turnover"."Amount"), AVG("Turnover"."Quantity"), COUNT(*) FROM "Turnover")",
     "SELECT sum(amount), avg(quantity), count(*) FROM sales"},
    {kSales, R"(SELECT "Times"."MonthName", SUM("Turnover"."Amount" * 2) FROM "Turnover", "Times"
        WHERE "Times"."QuarterKey" IN (20231, 20244) GROUP BY 1 HAVING SUM("Turnover"."Amount") > 1000 ORDER BY 2 DESC)",
     "SELECT month_name, sum(amount * 2) FROM sales JOIN calendar USING (date_id) WHERE quarter_id IN (20231, 20244) "
     "GROUP BY 1 HAVING sum(amount) > 1000 ORDER BY 2 DESC"},
    {kSales,
     R"(SELECT "Products"."Department", SUM("Turnover"."Amount") - SUM("Turnover"."Cost") FROM "Turnover", "Products"
        WHERE "Products"."Category" LIKE 'T%' OR "Products"."CategoryKey" = 2 GROUP BY 1)",
     "SELECT department, sum(amount) - sum(cost) FROM sales JOIN product USING (product_id) "
     "WHERE category_name LIKE 'T%' OR category_id = 2 GROUP BY 1"},
    // No rows
    {kSales, R"(SELECT COUNT(*), COUNT("Turnover"."Lines") + 1, AVG("Turnover"."Amount"), SUM("Turnover"."Amount")
                FROM "Turnover", "Times" WHERE "Times"."YearKey" = 1900)",
     "SELECT 0, 1, NULL, NULL"},
    {kSales, R"(SELECT SUM("Turnover"."Cost") FROM "Turnover", "Times" WHERE "Times"."YearKey" = 1900
                HAVING COUNT(*) = 0)",
     "SELECT NULL"},
    // Whether the query groups
    {kSales, R"(SELECT DISTINCT "Times"."YearKey" FROM "Turnover", "Times")",
     "SELECT DISTINCT year_id FROM sales JOIN calendar USING (date_id)"},
    {kSales, R"(SELECT "Times"."YearKey" FROM "Turnover", "Times")",
     "the query does not group, and a summary has other rows"},
    {kSales, R"(SELECT 1 FROM "Turnover" WHERE 1 = 1)", "the query does not group, and a summary has other rows"},
    {kSales, R"(SELECT "Times"."MonthKey", COUNT(*) FROM "Turnover", "Times" GROUP BY "Times"."YearKey")",
     "Times.MonthKey is not grouped by and stands outside of an aggregate"},
    // What the grain tells apart
    {kMonth, R"(SELECT "Times"."MonthKey", "Deliveries"."MonthKey", SUM("Parcels"."Amount"), COUNT("Parcels"."Amount")
                FROM "Parcels", "Times", "Deliveries" GROUP BY 1, 2)",
     "SELECT c.month_id, d.month_id, sum(amount), count(*) FROM sales s JOIN calendar c USING (date_id) "
     "JOIN calendar d ON d.date_id = s.ship_date_id GROUP BY 1, 2"},
    {kMonth, R"(SELECT "Suppliers"."Region", COUNT(*) FROM "Parcels", "Suppliers" GROUP BY 1)",
     "SELECT region, count(*) FROM sales JOIN product USING (product_id) JOIN supplier USING (supplier_id) GROUP BY 1"},
    {kBetween, R"(SELECT "Deliveries"."MonthKey", SUM("Parcels"."Amount") FROM "Parcels", "Deliveries" GROUP BY 1)",
     "SELECT month_id, sum(amount) FROM sales s JOIN calendar d ON d.date_id = s.ship_date_id GROUP BY 1"},
    {kBetween, R"(SELECT "Deliveries"."DateKey", SUM("Parcels"."Amount") FROM "Parcels", "Deliveries" GROUP BY 1)",
     "Deliveries.DateKey: the rows of parcels_between are summed up over it"},
    {kBetween, R"(SELECT "Times"."MonthKey", SUM("Parcels"."Amount") FROM "Parcels", "Times" GROUP BY 1)",
     "Times.MonthKey: the model does not tell which foreign key of parcels_between leads to Times"},
    {kMonth, R"(SELECT "Deliveries"."MonthName", COUNT(*) FROM "Parcels", "Deliveries" GROUP BY 1)",
     "Deliveries.MonthName: the model does not tell which foreign key of parcels_month leads to Deliveries"},
    {kDelivered, R"(SELECT "Times"."MonthKey", SUM("Parcels"."Amount") FROM "Parcels", "Times" GROUP BY 1)",
     "Times.MonthKey: the rows of parcels_delivered are summed up over it"},
    {kDelivered, R"(SELECT "Deliveries"."MonthKey", SUM("Parcels"."Amount") FROM "Parcels", "Deliveries" GROUP BY 1)",
     "Deliveries.MonthKey is no column of parcels_delivered or of a table that it refers to"},
    {kSales, R"(SELECT "Products"."Brand", COUNT(*) FROM "Turnover", "Products" GROUP BY 1)",
     "Products.Brand: the rows of sales_month_category are summed up over it"},
    // Rows that have none of a table that is read
    {kMonth, R"(SELECT COUNT(*) FROM "Parcels")", "SELECT count(*) FROM sales"},
    {kMonth, R"(SELECT COUNT(*) FROM "Parcels", "Promotions")",
     "SELECT count(*) FROM sales JOIN promotion USING (promotion_id)"},
    {kMonth, R"(SELECT "Promotions"."Campaign", COUNT(*) FROM "Parcels", "Deliveries", "Promotions" GROUP BY 1)",
     "SELECT campaign, count(*) FROM sales JOIN promotion USING (promotion_id) WHERE ship_date_id IS NOT NULL "
     "GROUP BY 1"},
    {kSales, R"(SELECT COUNT(*) FROM "Turnover", "Customers", "Suppliers")", "SELECT count(*) FROM sales"},
    {kDelivered, R"(SELECT SUM("Parcels"."Amount") FROM "Parcels", "Times")", "SELECT sum(amount) FROM sales"},
    {kSales, R"(SELECT COUNT(*) FROM "Turnover", "Promotions")",
     "a row of Turnover may have no row of Promotions, and sales_month_category does not tell which have one"},
    {kMonth, R"(SELECT "Media"."Medium", COUNT(*) FROM "Parcels", "Media" GROUP BY 1)",
     "a row of Parcels may have no row of Media, and parcels_month does not tell which have one"},
    // Which source has the details
    {"parcels_store", R"(SELECT SUM("Parcels"."Amount") FROM "Parcels")",
     "parcels_store is no summary: no logical table has a more detailed source"},
    {"calendar_month", R"(SELECT DISTINCT "Times"."QuarterKey" FROM "Times")",
     "SELECT DISTINCT quarter_id FROM calendar"},
    {"calendar_month", R"(SELECT COUNT(*) FROM "Turnover", "Times")", "Turnover is not joined to Times"},
};

TEST(Answers, FromASummaryAreThoseOfTheDetails) {
  Differential differential(RQ_SOURCE_DIR "/tests/differential/parcels.json");
  SampleData::Fill(differential.GetDatabase());
  differential.GetDatabase().Execute(kParcels);
  const RepositoryNames names(differential.GetGateway());
  for (const auto& [summary, text, expected] : kQueries) {
    SCOPED_TRACE(text);
    const VoidID summaryID = names.FindPhysicalTable({BaseStringUtil::StdStringToString(summary)}).m_id;
    BuiltList built = differential.Build(text);
    try {
      SummaryAnswer(differential.GetGateway(), summaryID)
          .Answer(static_cast<RqList&>(*built.m_list), NextTableNumber(*built.m_list));
    } catch (const RewriteRefusal& refusal) {
      EXPECT_STREQ(refusal.what(), expected);
      continue;
    }
    EXPECT_EQ(PlanChecker::CheckPlan(nullptr, *built.m_list), 0);
    const SqliteRows rows = differential.GetDatabase().Query(expected);
    EXPECT_FALSE(rows.m_rows.empty());
    // An average of the sample's exact sums is itself exact.
    differential.CheckRequest({text, expected, false, {}, {}}, rows, "answer", built);
  }
}

}  // namespace
