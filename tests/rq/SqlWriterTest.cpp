#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "RqTestUtil.h"

namespace {

struct WriterRow {
  const char* m_target;
  const char* m_query;
  const char* m_sql;  ///< On one line.
};

class SqlWriterTest : public testing::TestWithParam<WriterRow> {};

TEST_P(SqlWriterTest, Writes) {
  const WriterRow& row = GetParam();
  const RqRun run = RunRq({"sql", "--target", row.m_target, row.m_query});
  EXPECT_EQ(run.m_status, 0) << run.m_err;
  std::string line = OneLine(run.m_out);
  if (line.ends_with(' ')) line.pop_back();
  EXPECT_EQ(line, row.m_sql) << row.m_query;
}

INSTANTIATE_TEST_SUITE_P(
    Values, SqlWriterTest,
    testing::Values(
        WriterRow{"sqlite", "SELECT quantity / 2, amount / quantity, 1.5 / quantity FROM sales",
                  "SELECT CAST(T1.quantity AS REAL) / 2 AS c1, CAST(T1.amount AS REAL) / T1.quantity AS c2, 1.5 / "
                  "T1.quantity AS c3 FROM sales AS T1"},
        WriterRow{"postgresql", "SELECT quantity / 2, amount / quantity, 1.5 / quantity FROM sales",
                  "SELECT CAST(T1.quantity AS double precision) / 2 AS c1, T1.amount / T1.quantity AS c2, 1.5 / "
                  "T1.quantity AS c3 FROM retail.sales AS T1"},
        WriterRow{"duckdb", "SELECT quantity / 2, amount / quantity, 1.5 / quantity FROM sales",
                  "SELECT T1.quantity / 2 AS c1, T1.amount / T1.quantity AS c2, 1.5 / T1.quantity AS c3 FROM "
                  "retail.sales AS T1"},
        WriterRow{"sqlite", "SELECT -(-quantity), 1 - (2 - quantity), 2 * (1 + quantity), - (-5) FROM sales",
                  "SELECT -(-T1.quantity) AS c1, 1 - (2 - T1.quantity) AS c2, (T1.quantity + 1) * 2 AS c3, 5 AS c4 "
                  "FROM sales AS T1"},
        WriterRow{"sqlite", "SELECT city || (store_id + 1) || store_name FROM store",
                  "SELECT T1.city || (T1.store_id + 1) || T1.store_name AS c1 FROM store AS T1"},
        WriterRow{"sqlite",
                  "SELECT opened + INTERVAL '1' MONTH, opened - INTERVAL '14' DAY, closed - opened FROM store",
                  "SELECT min(date(T1.opened, '1 months'), date(T1.opened, 'start of month', '2 months', '-1 day')) AS "
                  "c1, date(T1.opened, '-14 days') AS c2, CAST(julianday(T1.closed) - julianday(T1.opened) AS INTEGER) "
                  "AS c3 FROM store AS T1"},
        WriterRow{"postgresql",
                  "SELECT opened + INTERVAL '1' MONTH, opened - INTERVAL '14' DAY, closed - opened FROM store",
                  "SELECT T1.opened + INTERVAL '1' MONTH AS c1, T1.opened - INTERVAL '14' DAY AS c2, T1.closed - "
                  "T1.opened AS c3 FROM retail.store AS T1"},
        WriterRow{"sqlite",
                  "SELECT TIMESTAMPADD(SQL_TSI_QUARTER, 2, member_since), TIMESTAMPDIFF(SQL_TSI_DAY, birth_date, "
                  "member_since) FROM customer",
                  "SELECT min(datetime(T1.member_since, '6 months'), date(T1.member_since, 'start of month', '7 "
                  "months', '-1 day') || ' ' || time(T1.member_since)) AS c1, CAST(julianday(date(T1.member_since)) - "
                  "julianday(date(T1.birth_date)) AS INTEGER) AS c2 FROM customer AS T1"},
        WriterRow{"postgresql",
                  "SELECT TIMESTAMPADD(SQL_TSI_QUARTER, 2, member_since), TIMESTAMPDIFF(SQL_TSI_DAY, birth_date, "
                  "member_since) FROM customer",
                  "SELECT T1.member_since + 2 * INTERVAL '3 month' AS c1, CAST(T1.member_since AS date) - "
                  "CAST(T1.birth_date AS date) AS c2 FROM retail.customer AS T1"},
        WriterRow{"duckdb",
                  "SELECT TIMESTAMPADD(SQL_TSI_QUARTER, 2, member_since), TIMESTAMPDIFF(SQL_TSI_DAY, birth_date, "
                  "member_since) FROM customer",
                  "SELECT T1.member_since + 2 * INTERVAL '3 month' AS c1, date_diff('day', T1.birth_date, "
                  "T1.member_since) AS c2 FROM retail.customer AS T1"},
        WriterRow{"sqlite",
                  "SELECT EXTRACT(QUARTER FROM opened), EXTRACT(DAY_OF_WEEK FROM opened), EXTRACT(NAME_OF_MONTH FROM "
                  "opened) FROM store",
                  "SELECT (CAST(strftime('%m', T1.opened) AS INTEGER) + 2) / 3 AS c1, CAST(strftime('%w', T1.opened) "
                  "AS INTEGER) + 1 AS c2, substr('JanFebMarAprMayJunJulAugSepOctNovDec', CAST(strftime('%m', "
                  "T1.opened) AS INTEGER) * 3 - 2, 3) AS c3 FROM store AS T1"},
        WriterRow{"postgresql",
                  "SELECT EXTRACT(QUARTER FROM opened), EXTRACT(DAY_OF_WEEK FROM opened), EXTRACT(NAME_OF_MONTH FROM "
                  "opened) FROM store",
                  "SELECT EXTRACT(QUARTER FROM T1.opened) AS c1, EXTRACT(DOW FROM T1.opened) + 1 AS c2, "
                  "to_char(T1.opened, 'Mon') AS c3 FROM retail.store AS T1"},
        WriterRow{"duckdb",
                  "SELECT EXTRACT(QUARTER FROM opened), EXTRACT(DAY_OF_WEEK FROM opened), EXTRACT(NAME_OF_MONTH FROM "
                  "opened) FROM store",
                  "SELECT EXTRACT(QUARTER FROM T1.opened) AS c1, EXTRACT(DOW FROM T1.opened) + 1 AS c2, "
                  "strftime(T1.opened, '%b') AS c3 FROM retail.store AS T1"},
        WriterRow{"sqlite",
                  "SELECT LENGTH(city), RIGHT(city, 2), REPEAT(city, 2), LOCATE('a', city, 3), INSERT(city, 2, 1, 'x') "
                  "FROM store",
                  "SELECT length(rtrim(T1.city)) AS c1, substr(T1.city, max(length(T1.city) - 2 + 1, 1)) AS c2, "
                  "replace(hex(zeroblob(2)), '00', T1.city) AS c3, instr(substr(T1.city, 3), 'a') + (3 - 1) * "
                  "sign(instr(substr(T1.city, 3), 'a')) AS c4, substr(T1.city, 1, 2 - 1) || 'x' || substr(T1.city, 2 + "
                  "1) AS c5 FROM store AS T1"},
        WriterRow{"postgresql",
                  "SELECT LENGTH(city), RIGHT(city, 2), REPEAT(city, 2), LOCATE('a', city, 3), INSERT(city, 2, 1, 'x') "
                  "FROM store",
                  "SELECT length(rtrim(T1.city)) AS c1, right(T1.city, 2) AS c2, repeat(T1.city, 2) AS c3, "
                  "strpos(substr(T1.city, 3), 'a') + (3 - 1) * sign(strpos(substr(T1.city, 3), 'a')) AS c4, "
                  "overlay(T1.city PLACING 'x' FROM 2 FOR 1) AS c5 FROM retail.store AS T1"},
        WriterRow{"duckdb",
                  "SELECT LENGTH(city), RIGHT(city, 2), REPEAT(city, 2), LOCATE('a', city, 3), INSERT(city, 2, 1, 'x') "
                  "FROM store",
                  "SELECT length(rtrim(T1.city, ' ')) AS c1, right(T1.city, 2) AS c2, repeat(T1.city, 2) AS c3, "
                  "instr(substr(T1.city, 3), 'a') + (3 - 1) * sign(instr(substr(T1.city, 3), 'a')) AS c4, "
                  "substr(T1.city, 1, 2 - 1) || 'x' || substr(T1.city, 2 + 1) AS c5 FROM retail.store AS T1"},
        WriterRow{"sqlite", "SELECT ROUND(floor_area / 3, 1), MOD(floor_area, 2.5), TRUNCATE(1.5), COT(1) FROM store",
                  "SELECT round(CAST(T1.floor_area AS REAL) / 3, 1) AS c1, mod(T1.floor_area, 2.5) AS c2, trunc(1.5) "
                  "AS c3, 1.0 / tan(1) AS c4 FROM store AS T1"},
        WriterRow{"postgresql",
                  "SELECT ROUND(floor_area / 3, 1), MOD(floor_area, 2.5), TRUNCATE(1.5), COT(1) FROM store",
                  "SELECT round(CAST(CAST(T1.floor_area AS double precision) / 3 AS numeric), 1) AS c1, "
                  "mod(CAST(T1.floor_area AS numeric), CAST(2.5 AS numeric)) AS c2, trunc(1.5) AS c3, cot(1) AS c4 "
                  "FROM retail.store AS T1"},
        WriterRow{"sqlite",
                  "SELECT CAST(floor_area AS VARCHAR(3)), CAST(opened AS TIMESTAMP), CAST(floor_area AS NUMERIC(8, 2)) "
                  "FROM store",
                  "SELECT substr(CAST(T1.floor_area AS TEXT), 1, 3) AS c1, datetime(T1.opened) AS c2, "
                  "round(CAST(T1.floor_area AS REAL), 2) AS c3 FROM store AS T1"},
        WriterRow{"postgresql",
                  "SELECT CAST(floor_area AS VARCHAR(3)), CAST(opened AS TIMESTAMP), CAST(floor_area AS NUMERIC(8, 2)) "
                  "FROM store",
                  "SELECT CAST(T1.floor_area AS varchar(3)) AS c1, CAST(T1.opened AS timestamp) AS c2, "
                  "CAST(T1.floor_area AS numeric(8, 2)) AS c3 FROM retail.store AS T1"},
        WriterRow{"sqlite",
                  "SELECT 'it''s', 1e30, 100.0, 12345678901234567890, DATE '2024-02-29', TIMESTAMP '2024-02-29 "
                  "12:00:00.50', NULL",
                  "SELECT 'it''s' AS c1, 1e+30 AS c2, 100.0 AS c3, 12345678901234567890 AS c4, '2024-02-29' AS c5, "
                  "'2024-02-29 12:00:00.5' AS c6, NULL AS c7"},
        WriterRow{"postgresql",
                  "SELECT 'it''s', 1e30, 100.0, 12345678901234567890, DATE '2024-02-29', TIMESTAMP '2024-02-29 "
                  "12:00:00.50', NULL",
                  "SELECT 'it''s' AS c1, 1e+30 AS c2, 100.0 AS c3, 12345678901234567890 AS c4, DATE '2024-02-29' AS "
                  "c5, TIMESTAMP '2024-02-29 12:00:00.5' AS c6, NULL AS c7"},
        WriterRow{"sqlite", "SELECT VALUEOF(\"KX_SESSION\".\"REGION\"), VALUEOF(\"KX_SESSION\".\"MAX_DISCOUNT\"), $2",
                  "SELECT 'North' AS c1, 12.5 AS c2, ?2 AS c3"},
        WriterRow{"postgresql",
                  "SELECT VALUEOF(\"KX_SESSION\".\"REGION\"), VALUEOF(\"KX_SESSION\".\"MAX_DISCOUNT\"), $2",
                  "SELECT 'North' AS c1, 12.5 AS c2, $2 AS c3"}));

INSTANTIATE_TEST_SUITE_P(
    Conditions, SqlWriterTest,
    testing::Values(
        WriterRow{"sqlite",
                  "SELECT 1 FROM store WHERE (city = 'a' OR city = 'b') AND NOT (floor_area > 1 AND closed IS NULL) "
                  "AND NOT city LIKE 'a'",
                  "SELECT 1 AS c1 FROM store AS T1 WHERE (T1.city = 'a' OR T1.city = 'b') AND NOT (T1.floor_area > 1 "
                  "AND T1.closed IS NULL) AND NOT T1.city LIKE 'a'"},
        WriterRow{"sqlite", "SELECT 1 FROM store WHERE city LIKE '100\\%' AND city NOT LIKE 'a!%' ESCAPE '!'",
                  "SELECT 1 AS c1 FROM store AS T1 WHERE T1.city LIKE '100\\%' AND T1.city NOT LIKE 'a!%' ESCAPE '!'"},
        WriterRow{"postgresql", "SELECT 1 FROM store WHERE city LIKE '100\\%' AND city NOT LIKE 'a!%' ESCAPE '!'",
                  "SELECT 1 AS c1 FROM retail.store AS T1 WHERE T1.city LIKE '100\\%' ESCAPE '' AND T1.city NOT LIKE "
                  "'a!%' ESCAPE '!'"},
        WriterRow{"sqlite",
                  "SELECT 1 FROM customer WHERE member_since >= DATE '2024-01-01' AND birth_date NOT BETWEEN "
                  "member_since AND CURRENT_DATE",
                  "SELECT 1 AS c1 FROM customer AS T1 WHERE T1.member_since >= '2024-01-01 00:00:00' AND "
                  "datetime(T1.birth_date) NOT BETWEEN T1.member_since AND datetime(CURRENT_DATE)"},
        WriterRow{"postgresql",
                  "SELECT 1 FROM customer WHERE member_since >= DATE '2024-01-01' AND birth_date NOT BETWEEN "
                  "member_since AND CURRENT_DATE",
                  "SELECT 1 AS c1 FROM retail.customer AS T1 WHERE T1.member_since >= DATE '2024-01-01' AND "
                  "T1.birth_date NOT BETWEEN T1.member_since AND CURRENT_DATE"},
        WriterRow{"sqlite", "SELECT 1 FROM store WHERE (store_id, city) NOT IN ((1, 'a'), (2, 'b'))",
                  "SELECT 1 AS c1 FROM store AS T1 WHERE (T1.store_id, T1.city) NOT IN (VALUES (1, 'a'), (2, 'b'))"},
        WriterRow{"postgresql", "SELECT 1 FROM store WHERE (store_id, city) NOT IN ((1, 'a'), (2, 'b'))",
                  "SELECT 1 AS c1 FROM retail.store AS T1 WHERE (T1.store_id, T1.city) NOT IN ((1, 'a'), (2, 'b'))"},
        WriterRow{"ansi", "SELECT 1 FROM store WHERE (store_id, city) NOT IN ((1, 'a'), (2, 'b'))",
                  "SELECT 1 AS c1 FROM retail.store AS T1 WHERE (T1.store_id <> 1 OR T1.city <> 'a') AND (T1.store_id "
                  "<> 2 OR T1.city <> 'b')"},
        WriterRow{"sqlite",
                  "SELECT 1 FROM product p WHERE list_price > ALL (SELECT q.list_price FROM price_list q) OR "
                  "list_price <> ANY (SELECT 1 FROM store)",
                  "SELECT 1 AS c1 FROM product AS T1 WHERE EXISTS ( SELECT 1 FROM ( SELECT 1 AS c1 FROM store AS T3 ) "
                  "AS Q1 WHERE T1.list_price <> Q1.c1 ) OR NOT EXISTS ( SELECT 1 FROM ( SELECT T2.list_price FROM "
                  "price_list AS T2 ) AS Q2 WHERE (T1.list_price > Q2.list_price) IS NOT TRUE )"},
        WriterRow{"postgresql",
                  "SELECT 1 FROM product p WHERE list_price > ALL (SELECT q.list_price FROM price_list q) OR "
                  "list_price <> ANY (SELECT 1 FROM store)",
                  "SELECT 1 AS c1 FROM retail.product AS T1 WHERE T1.list_price <> ANY ( SELECT 1 FROM retail.store AS "
                  "T3 ) OR T1.list_price > ALL ( SELECT T2.list_price FROM retail.price_list AS T2 )"},
        WriterRow{"sqlite",
                  "SELECT 1 FROM product p WHERE NOT list_price > ALL (SELECT q.list_price FROM price_list q)",
                  "SELECT 1 AS c1 FROM product AS T1 WHERE NOT CASE WHEN EXISTS ( SELECT 1 FROM ( SELECT T2.list_price "
                  "FROM price_list AS T2 ) AS Q1 WHERE NOT T1.list_price > Q1.list_price ) THEN 0 WHEN EXISTS ( SELECT "
                  "1 FROM ( SELECT T2.list_price FROM price_list AS T2 ) AS Q1 WHERE (T1.list_price > Q1.list_price) "
                  "IS NULL ) THEN NULL ELSE 1 END"},
        WriterRow{"sqlite", "SELECT 1 FROM store WHERE country = VALUEOF(\"KX_SESSION\".\"COUNTRIES\")",
                  "SELECT 1 AS c1 FROM store AS T1 WHERE T1.country IN ('Germany', 'Poland')"}));

INSTANTIATE_TEST_SUITE_P(
    Blocks, SqlWriterTest,
    testing::Values(
        WriterRow{"sqlite", "SELECT \"order\".store_id AS \"select\", city AS \"Stadt\" FROM store AS \"order\"",
                  "SELECT T1.store_id AS \"select\", T1.city AS \"Stadt\" FROM store AS T1"},
        WriterRow{"sqlite", "SELECT s.calendar_date FROM ship_calendar s, archive.old_sales o",
                  "SELECT T1.calendar_date FROM calendar AS T1 JOIN old_sales AS T2"},
        WriterRow{"postgresql", "SELECT s.calendar_date FROM ship_calendar s, archive.old_sales o",
                  "SELECT T1.calendar_date FROM retail.calendar AS T1 CROSS JOIN archive.old_sales AS T2"},
        WriterRow{"sqlite",
                  "SELECT p.product_name FROM store s LEFT JOIN (product p JOIN supplier u ON p.supplier_id = "
                  "u.supplier_id AND u.rating > 3) ON s.store_id = p.product_id JOIN calendar c ON c.date_id = "
                  "s.store_id AND c.year_id > p.product_id",
                  "SELECT T2.product_name FROM store AS T1 LEFT JOIN (product AS T2 JOIN supplier AS T3 ON "
                  "T2.supplier_id = T3.supplier_id AND T3.rating > 3) ON T1.store_id = T2.product_id JOIN calendar AS "
                  "T4 ON T1.store_id = T4.date_id WHERE T4.year_id > T2.product_id"},
        WriterRow{
            "sqlite",
            "SELECT 1 FROM store s FULL JOIN (SELECT city FROM warehouse WHERE capacity > 1) w ON s.city = w.city",
            "SELECT 1 AS c1 FROM store AS T1 FULL JOIN ( SELECT T2.city FROM warehouse AS T2 WHERE T2.capacity > 1 ) "
            "AS D3 ON T1.city = D3.city"},
        WriterRow{"sqlite",
                  "WITH sales AS (SELECT store_id FROM sales) SELECT a.store_id FROM sales a JOIN sales b ON "
                  "a.store_id = b.store_id",
                  "WITH sales_2 AS ( SELECT T1.store_id FROM sales AS T1 ) SELECT D2.store_id FROM sales_2 AS D2 JOIN "
                  "sales_2 AS D3 ON D2.store_id = D3.store_id"},
        WriterRow{"sqlite",
                  "WITH n AS (SELECT city FROM store) SELECT a.city FROM n a WHERE EXISTS (SELECT 1 FROM n b WHERE "
                  "b.city < a.city)",
                  "WITH n AS ( SELECT T1.city FROM store AS T1 ) SELECT D2.city FROM n AS D2 WHERE EXISTS ( SELECT 1 "
                  "FROM n AS D3 WHERE D3.city < D2.city )"},
        WriterRow{"ansi",
                  "WITH n AS (SELECT city FROM store) SELECT a.city FROM n a WHERE EXISTS (SELECT 1 FROM n b WHERE "
                  "b.city < a.city)",
                  "SELECT D2.city FROM ( SELECT T1.city FROM retail.store AS T1 ) AS D2 WHERE EXISTS ( SELECT 1 FROM ( "
                  "SELECT T1.city FROM retail.store AS T1 ) AS D3 WHERE D3.city < D2.city )"},
        WriterRow{"sqlite", "SELECT city FROM store ORDER BY floor_area DESC NULLS LAST, 1",
                  "SELECT T1.city FROM store AS T1 ORDER BY T1.floor_area DESC NULLS LAST, T1.city"},
        WriterRow{"sqlite", "SELECT a.city, b.city FROM store a JOIN warehouse b ON a.city = b.city ORDER BY 2, a.city",
                  "SELECT T1.city, T2.city FROM store AS T1 JOIN warehouse AS T2 ON T1.city = T2.city ORDER BY 2, 1"},
        WriterRow{"sqlite", "SELECT city FROM store ORDER BY 1 OFFSET 3",
                  "SELECT T1.city FROM store AS T1 ORDER BY T1.city LIMIT -1 OFFSET 3"},
        WriterRow{"postgresql", "SELECT city FROM store ORDER BY 1 OFFSET 3",
                  "SELECT T1.city FROM retail.store AS T1 ORDER BY T1.city OFFSET 3"},
        WriterRow{"sqlite", "SELECT region, country FROM store GROUP BY ROLLUP (region, country) ORDER BY country",
                  "SELECT G.region, G.country FROM ( SELECT T1.region, T1.country FROM store AS T1 GROUP BY T1.region, "
                  "T1.country UNION ALL SELECT T1.region, NULL AS country FROM store AS T1 GROUP BY T1.region UNION "
                  "ALL SELECT NULL AS region, NULL AS country FROM ( SELECT count(*) FROM store AS T1 ) AS R ) AS G "
                  "ORDER BY G.country"},
        WriterRow{"postgresql", "SELECT region, country FROM store GROUP BY ROLLUP (region, country) ORDER BY country",
                  "SELECT T1.region, T1.country FROM retail.store AS T1 GROUP BY GROUPING SETS ((T1.region, "
                  "T1.country), (T1.region), ()) ORDER BY T1.country"},
        WriterRow{"sqlite", "SELECT region, UPPER(region) FROM store GROUP BY GROUPING SETS (region, ())",
                  "SELECT T1.region, upper(T1.region) AS c2 FROM store AS T1 GROUP BY T1.region UNION ALL SELECT NULL "
                  "AS region, upper(NULL) AS c2 FROM ( SELECT count(*) FROM store AS T1 ) AS R"},
        WriterRow{
            "sqlite",
            "SELECT city FROM store UNION ALL (SELECT city FROM warehouse ORDER BY capacity LIMIT 1) UNION SELECT city "
            "FROM customer LIMIT 9",
            "SELECT * FROM ( SELECT T1.city FROM store AS T1 UNION ALL SELECT D3.city FROM ( SELECT T2.city FROM "
            "warehouse AS T2 ORDER BY T2.capacity LIMIT 1 ) AS D3 ) UNION SELECT T4.city FROM customer AS T4 LIMIT 9"},
        WriterRow{"postgresql",
                  "SELECT city FROM store UNION ALL (SELECT city FROM warehouse ORDER BY capacity LIMIT 1) UNION "
                  "SELECT city FROM customer LIMIT 9",
                  "( SELECT T1.city FROM retail.store AS T1 UNION ALL SELECT D3.city FROM ( SELECT T2.city FROM "
                  "retail.warehouse AS T2 ORDER BY T2.capacity LIMIT 1 ) AS D3 ) UNION SELECT T4.city FROM "
                  "retail.customer AS T4 LIMIT 9"},
        WriterRow{"sqlite",
                  "SELECT city FROM store EXCEPT ALL SELECT city FROM warehouse EXCEPT ALL SELECT city FROM customer",
                  "SELECT city FROM ( SELECT *, row_number() OVER (PARTITION BY city) AS row_no FROM ( SELECT T1.city "
                  "FROM store AS T1 ) AS B EXCEPT SELECT *, row_number() OVER (PARTITION BY city) AS row_no FROM ( "
                  "SELECT T2.city FROM warehouse AS T2 UNION ALL SELECT T3.city FROM customer AS T3 ) AS B ) AS S"},
        WriterRow{"postgresql",
                  "SELECT city FROM store EXCEPT ALL SELECT city FROM warehouse EXCEPT ALL SELECT city FROM customer",
                  "SELECT T1.city FROM retail.store AS T1 EXCEPT ALL SELECT T2.city FROM retail.warehouse AS T2 EXCEPT "
                  "ALL SELECT T3.city FROM retail.customer AS T3"}));

INSTANTIATE_TEST_SUITE_P(
    Aggregates, SqlWriterTest,
    testing::Values(
        WriterRow{"sqlite",
                  "SELECT region, COUNT(DISTINCT city), COUNT(*) FILTER (WHERE closed IS NULL), STDDEV(floor_area) "
                  "FROM store GROUP BY region HAVING MAX(floor_area) > 1",
                  "SELECT T1.region, count(DISTINCT T1.city) AS c2, count(*) FILTER (WHERE T1.closed IS NULL) AS c3, "
                  "sqrt(max((sum(1.0 * T1.floor_area * T1.floor_area) - sum(1.0 * T1.floor_area) * sum(1.0 * "
                  "T1.floor_area) / count(T1.floor_area)) / (count(T1.floor_area) - 1), 0.0)) AS c4 FROM store AS T1 "
                  "GROUP BY T1.region HAVING max(T1.floor_area) > 1"},
        WriterRow{"postgresql",
                  "SELECT region, COUNT(DISTINCT city), COUNT(*) FILTER (WHERE closed IS NULL), STDDEV(floor_area) "
                  "FROM store GROUP BY region HAVING MAX(floor_area) > 1",
                  "SELECT T1.region, count(DISTINCT T1.city) AS c2, count(*) FILTER (WHERE T1.closed IS NULL) AS c3, "
                  "stddev_samp(T1.floor_area) AS c4 FROM retail.store AS T1 GROUP BY T1.region HAVING "
                  "max(T1.floor_area) > 1"},
        WriterRow{"postgresql", "SELECT city, MEDIAN(floor_area) FROM store GROUP BY city",
                  "SELECT T1.city, percentile_cont(0.5) WITHIN GROUP (ORDER BY T1.floor_area) AS c2 FROM retail.store "
                  "AS T1 GROUP BY T1.city"},
        WriterRow{"duckdb", "SELECT city, MEDIAN(floor_area) FROM store GROUP BY city",
                  "SELECT T1.city, median(T1.floor_area) AS c2 FROM retail.store AS T1 GROUP BY T1.city"},
        WriterRow{
            "sqlite",
            "SELECT region, SUM(SUM(floor_area)) OVER (PARTITION BY region), SUM(floor_area BY region) FROM store "
            "GROUP BY region, city",
            "SELECT T1.region, sum(sum(T1.floor_area)) OVER (PARTITION BY T1.region) AS c2, sum(sum(T1.floor_area)) "
            "OVER (PARTITION BY T1.region) AS c3 FROM store AS T1 GROUP BY T1.region, T1.city"},
        WriterRow{
            "sqlite",
            "SELECT region, COUNT(DISTINCT country BY region) FROM store WHERE closed IS NULL GROUP BY region, city",
            "SELECT T1.region, ( SELECT count(DISTINCT T1_again.country) FROM store AS T1_again WHERE T1_again.closed "
            "IS NULL AND T1_again.region IS T1.region ) AS c2 FROM store AS T1 WHERE T1.closed IS NULL GROUP BY "
            "T1.region, T1.city"},
        WriterRow{"sqlite", "SELECT region, AVG(floor_area) OVER () FROM store",
                  "SELECT T1.region, avg(T1.floor_area) OVER () AS c2 FROM store AS T1"},
        WriterRow{
            "sqlite",
            "SELECT RANK() OVER (PARTITION BY region ORDER BY floor_area DESC), ROW_NUMBER() OVER (ORDER BY city DESC "
            "NULLS LAST), NTILE(4) OVER (ORDER BY opened), SUM(floor_area) OVER (PARTITION BY region ORDER BY opened "
            "ROWS 2 PRECEDING) FROM store",
            "SELECT rank() OVER (PARTITION BY T1.region ORDER BY T1.floor_area DESC) AS c1, row_number() OVER (ORDER "
            "BY T1.city DESC NULLS LAST) AS c2, ntile(4) OVER (ORDER BY T1.opened) AS c3, sum(T1.floor_area) OVER "
            "(PARTITION BY T1.region ORDER BY T1.opened ROWS 2 PRECEDING) AS c4 FROM store AS T1"},
        WriterRow{
            "sqlite",
            "SELECT region, country, SUM(floor_area), GROUPING(country) FROM store GROUP BY ROLLUP (region, country)",
            "SELECT T1.region, T1.country, sum(T1.floor_area) AS c3, 0 AS c4 FROM store AS T1 GROUP BY T1.region, "
            "T1.country UNION ALL SELECT T1.region, NULL AS country, sum(T1.floor_area) AS c3, 1 AS c4 FROM store AS "
            "T1 GROUP BY T1.region UNION ALL SELECT NULL AS region, NULL AS country, sum(T1.floor_area) AS c3, 1 AS c4 "
            "FROM store AS T1"},
        WriterRow{
            "postgresql",
            "SELECT region, country, SUM(floor_area), GROUPING(country) FROM store GROUP BY ROLLUP (region, country)",
            "SELECT T1.region, T1.country, sum(T1.floor_area) AS c3, GROUPING(T1.country) AS c4 FROM retail.store AS "
            "T1 GROUP BY GROUPING SETS ((T1.region, T1.country), (T1.region), ())"}));

TEST(SqlWriter, RefusesWithFeatureAndPlace) {
  const std::vector<WriterRow> rows{
      {"sqlite", "SELECT MEDIAN(floor_area) FROM store",
       "MEDIAN, which is needed in the select list: Median(store.floor_area)"},
      {"sqlite", "SELECT city FROM store WHERE EXTRACT(WEEK_OF_YEAR FROM opened) = 3",
       "CALENDAR_EXTRACT_WEEK_OF_YEAR, which is needed in WHERE: extract(week_of_year from store.opened)"},
      {"sqlite", "SELECT city FROM store GROUP BY city HAVING CURRENT_USER = city",
       "USER, which is needed in HAVING: user()"},
      {"sqlite", "SELECT opened + INTERVAL '1-2' YEAR TO MONTH FROM store",
       "INTERVAL_LITERAL, which is needed in the select list: store.opened + INTERVAL '1-2' YEAR TO MONTH"},
      {"sqlite", "SELECT OnHand FROM \"Stock\"",
       "a logical table, for which no physical ones are chosen, which is needed in FROM: Stock"},
      {"ansi", "SELECT city FROM store ORDER BY NLSSORT(city)",
       "a sort by what is not selected, which is needed in ORDER BY: NLSSort(store.city)"},
      {"ansi", "SELECT 1 FROM store s FULL JOIN warehouse w ON s.city = w.city LIMIT 3",
       "ROW_NUM_LIMIT, which is needed in LIMIT"},
  };
  for (const WriterRow& row : rows) {
    SCOPED_TRACE(row.m_query);
    const RqRun run = RunRq({"sql", "--target", row.m_target, row.m_query});
    EXPECT_EQ(run.m_status, 1);
    EXPECT_EQ(run.m_out, "");
    EXPECT_EQ(run.m_err, std::string("rq: the database ") + row.m_target + " cannot do " + row.m_sql + "\n");
  }
}

/// Deeper than a database takes a chain of operators.
TEST(SqlWriter, LongChainsAreNested) {
  std::string filter = "store_id = 0";
  for (int i = 1; i < 3000; ++i)
    filter += " OR store_id = " + std::to_string(i) + " AND city <> '" + std::to_string(i) + "'";
  const RqRun run = RunRq({"sql", "--target", "sqlite", "SELECT 1 FROM store WHERE " + filter});
  ASSERT_EQ(run.m_status, 0) << run.m_err;
  int depth = 0;
  std::size_t inChain = 0;
  std::size_t longest = 0;
  for (std::size_t i = 0; i < run.m_out.size(); ++i) {
    if (run.m_out[i] == '(') ++depth, inChain = 0;
    if (run.m_out.compare(i, 4, " OR ") == 0) longest = std::max(longest, ++inChain);
  }
  EXPECT_GT(depth, 0);
  EXPECT_LT(longest, 250U);
}

}  // namespace
