#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "differential/Differential.h"
#include "differential/SmallSample.h"
#include "rq/sample/SampleData.h"
#include "rq/sql/SqlTarget.h"
#include "rq/sql/SqlWriter.h"

// The example queries on the big sample.

namespace {

/// What an example needs so that SQLite reads it and has one answer to it.
struct Example {
  bool m_bOrdered = false;
  /// In the reference alone: what SQLite says in other words.
  Replacements m_inReference{};
  /// All of the reference, where it is to be other words altogether.
  std::string m_reference{};
  std::vector<SqliteValue> m_parameters{};
  std::vector<bool> m_inexact{};
  Replacements m_inBoth{};  ///< So that it takes no longer than others.
};

/// In the query and so in the reference: the same answer each day, and on the day of the sample.
const Replacements kInBoth{{"CURRENT_TIMESTAMP", "TIMESTAMP '2024-06-30 12:00:00'"},
                           {"CURRENT_DATE", "DATE '2024-06-30'"}};
/// SQLite has one schema, and texts for moments.
const Replacements kInReferences{{"DATE '", "'"},  {"TIMESTAMP '", "'"}, {"TIME '", "'"},
                                 {"archive.", ""}, {"retail.", ""},      {"ship_calendar", "calendar"}};

const std::map<std::string, Example> kExamples{
    {"all_places", {.m_bOrdered = true}},
    {"brands_on_sale", {.m_bOrdered = true}},
    {"chosen_grouping_sets",
     {.m_reference = "SELECT store_type, country, NULL FROM store GROUP BY 1, 2 "
                     "UNION ALL SELECT NULL, NULL, region FROM store GROUP BY 3 "
                     "UNION ALL SELECT NULL, country, region FROM store GROUP BY 2, 3 "
                     "UNION ALL SELECT NULL, NULL, region FROM store GROUP BY 3 "
                     "UNION ALL SELECT NULL, NULL, NULL UNION ALL SELECT NULL, NULL, NULL"}},
    {"cities_without_store", {.m_inReference = {{"(SELECT", "SELECT * FROM (SELECT"}}}},
    {"colors_and_brands_cubed",
     {.m_reference = "SELECT color, brand, department FROM product GROUP BY 1, 2, 3 "
                     "UNION ALL SELECT color, NULL, department FROM product GROUP BY 1, 3 "
                     "UNION ALL SELECT NULL, brand, department FROM product GROUP BY 2, 3 "
                     "UNION ALL SELECT NULL, NULL, department FROM product GROUP BY 3"}},
    {"dearer_than_ever",
     {.m_inReference = {{"ALL (SELECT pl.list_price", "(SELECT coalesce(max(pl.list_price), -1)"},
                        {"ANY (SELECT o.list_price", "(SELECT max(o.list_price)"}}}},
    {"departments", {.m_bOrdered = true}},
    {"every_store_every_month", {.m_bOrdered = true}},
    {"expensive_products", {.m_bOrdered = true}},
    {"first_weeks",
     {.m_inReference = {{"p.introduced + INTERVAL '14' DAY", "date(p.introduced, '+14 days')"},
                        {"EXTRACT(MONTH FROM c.calendar_date)", "CAST(substr(c.calendar_date, 6, 2) AS INTEGER)"}}}},
    {"letter_exceptions", {.m_inReference = {{"1 / 2", "0.5"}}}},
    {"lost_lines", {.m_inReference = {{"IN ((1", "IN (VALUES (1"}}}},
    {"market_basket",
     {.m_inReference = {{">= ALL", ">="}, {"SELECT c.date_id", "SELECT coalesce(max(c.date_id), 0)"}},
      .m_inBoth = {{"s.store_id IN", "s.customer_id < 99 AND s.store_id IN"},
                   {"i.warehouse_id =", "i.product_id < 3 AND i.warehouse_id ="}}}},
    {"my_region",
     {.m_inReference = {{"VALUEOF(\"KX_SESSION\".\"REGION\")", "'North'"},
                        {"VALUEOF(\"KX_SESSION\".\"MAX_DISCOUNT\")", "12.5"}},
      .m_parameters = {"Germany", std::int64_t{2}, std::int64_t{9}}}},
    {"order_by_hidden_column", {.m_bOrdered = true, .m_inReference = {{"FETCH FIRST 10 ROWS ONLY", "LIMIT 10"}}}},
    {"places_rolled_up",
     {.m_bOrdered = true,
      .m_reference = "SELECT region, country, city FROM customer GROUP BY 1, 2, 3 "
                     "UNION ALL SELECT region, country, NULL FROM customer GROUP BY 1, 2 "
                     "UNION ALL SELECT region, NULL, NULL FROM customer GROUP BY 1 "
                     "UNION ALL SELECT NULL, NULL, NULL ORDER BY 1, 2, 3"}},
    {"price_bands", {.m_inReference = {{"TRIM(BOTH FROM product_name)", "TRIM(product_name)"}}}},
    {"recent_customers",
     {.m_inReference = {{"TIMESTAMPADD(SQL_TSI_DAY, -90, '2024-06-30 12:00:00')", "'2024-04-01 12:00:00'"},
                        {"EXTRACT(YEAR FROM member_since)", "CAST(substr(member_since, 1, 4) AS INTEGER)"},
                        {"TIMESTAMPDIFF(SQL_TSI_DAY, member_since, '2024-06-30 12:00:00')",
                         "julianday('2024-06-30') - julianday(date(member_since))"}}}},
    {"renamed_columns",
     {.m_inReference = {{"customer_name, city || ', ' || country",
                         "customer_name AS name, city || ', ' || country AS place"},
                        {"letter (name, place)", "letter"},
                        {"CHAR_LENGTH", "LENGTH"}}}},
    {"repeat_buyers",
     {.m_reference =
          "WITH bought AS (SELECT customer_id, year_id, row_number() OVER (PARTITION BY customer_id, year_id) AS n "
          "FROM sales JOIN calendar USING (date_id)) "
          "SELECT t.customer_id FROM bought t JOIN bought l ON l.customer_id = t.customer_id AND l.n = t.n "
          "WHERE t.year_id = 2024 AND l.year_id = 2023 "
          "AND NOT (t.n = 1 AND t.customer_id IN (SELECT customer_id FROM customer WHERE segment = 'Staff'))"}},
    {"spread_of_prices",
     {.m_inReference = {{"STDDEV(", "stddev_samp("}}, .m_inexact = {false, false, false, true, true}}},
    {"three_year_lines",
     {.m_inReference =
          {{"SELECT *",
            "SELECT product_id, sale_id, line_no, date_id, ship_date_id, customer_id, sales.store_id, "
            "promotion_id, sales.quantity, unit_price, sales.amount, discount, cost, calendar_date, "
            "old_sales.store_id, old_sales.quantity, old_sales.amount, valid_from_id, valid_to_id, list_price"}}}},
    {"totals_beside_the_details",
     {.m_reference =
          "WITH lines AS (SELECT department, brand, customer_id, amount FROM sales JOIN product USING (product_id)) "
          "SELECT d.department, d.brand, d.turnover, "
          "(SELECT sum(amount) FROM lines l WHERE l.department = d.department), d.buyers, "
          "(SELECT count(DISTINCT customer_id) FROM lines l WHERE l.department = d.department), "
          "rank() OVER (PARTITION BY d.department ORDER BY d.turnover DESC) "
          "FROM (SELECT department, brand, sum(amount) AS turnover, count(DISTINCT customer_id) AS buyers "
          "FROM lines GROUP BY 1, 2) d"}},
    {"turnover_rolled_up",
     {.m_reference = "WITH l AS (SELECT region, country, amount, store_id FROM sales JOIN store USING (store_id)) "
                     "SELECT region, country, sum(amount), count(DISTINCT store_id) FROM l GROUP BY 1, 2 "
                     "UNION ALL SELECT region, NULL, sum(amount), count(DISTINCT store_id) FROM l GROUP BY 1 "
                     "UNION ALL SELECT NULL, NULL, sum(amount), count(DISTINCT store_id) FROM l"}},
    {"two_years_compared", {.m_bOrdered = true}},
    {"unshipped_sales", {.m_bOrdered = true}},
};

/// Over logical tables, which SQLite does not have and no summary answers.
const std::set<std::string> kLogical{"stock_of_food", "turnover_by_month"};

TEST(Examples, KeepTheirRows) {
  Differential differential;
  SampleData::Fill(differential.GetDatabase());
  // A part of the facts is enough, and some queries compare all with all.
  differential.GetDatabase().Execute(
      "DELETE FROM sales WHERE sale_id % 12 <> 0; DELETE FROM old_sales WHERE sale_id % 12 <> 0; "
      "DELETE FROM inventory WHERE product_id > 40; ANALYZE");
  int numRun = 0;
  for (const auto& entry : std::filesystem::directory_iterator(RQ_SOURCE_DIR "/examples/queries")) {
    const std::string name = entry.path().stem().string();
    SCOPED_TRACE(name);
    std::ostringstream file;
    file << std::ifstream(entry.path()).rdbuf();
    const auto it = kExamples.find(name);
    const Example example = it == kExamples.end() ? Example() : it->second;
    KnownQuery query{Replaced(Replaced(file.str(), kInBoth), example.m_inBoth), example.m_reference, example.m_bOrdered,
                     example.m_inexact, example.m_parameters};
    if (query.m_reference.empty()) {
      query.m_reference = Replaced(Replaced(query.m_text, kInReferences), example.m_inReference);
    }
    if (kLogical.contains(name)) {
      EXPECT_THROW(differential.Write(differential.Build(query.m_text)), SqlWriteError);
      continue;
    }
    try {
      const SqliteRows rows = differential.CheckRewritings(query);
      EXPECT_FALSE(rows.m_rows.empty()) << "says nothing of rewritings";
      differential.CheckSplits(query, rows, true);
      ++numRun;
    } catch (const std::exception& error) {
      ADD_FAILURE() << error.what() << " in\n" << query.m_text << "\nor\n" << query.m_reference;
    }
  }
  EXPECT_GE(numRun, 36);
}

}  // namespace
