#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "RqTestUtil.h"
#include "rq/run/SqliteDatabase.h"
#include "rq/sample/SampleFile.h"

namespace {

namespace fs = std::filesystem;

class CommandRunTest : public testing::Test {
 protected:
  /// The sample is made once, in a cache of the tests' own.
  static void SetUpTestSuite() {
    const fs::path cache = fs::path(testing::TempDir()) / "rq_cache";
    fs::remove_all(cache);
    setenv("XDG_CACHE_HOME", cache.c_str(), 1);
  }

  static std::string Rows(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "run");
    const RqRun run = RunRq(arguments);
    EXPECT_EQ(run.m_status, 0) << run.m_err;
    return run.m_out;
  }
};

TEST_F(CommandRunTest, Formats) {
  const std::string query =
      "SELECT 1 AS a, 2.5 AS a, 'x,\"y' AS \"the text\", '' AS empty, NULL AS nothing FROM warehouse WHERE "
      "warehouse_id < 3";
  EXPECT_EQ(Rows({query}),
            "a    a  the text  empty  nothing\n"
            "-  ---  --------  -----  -------\n"
            "1  2.5  x,\"y             NULL\n"
            "1  2.5  x,\"y             NULL\n"
            "(2 rows)\n");
  EXPECT_EQ(Rows({"--format", "csv", query}),
            "a,a,the text,empty,nothing\r\n1,2.5,\"x,\"\"y\",\"\",\r\n1,2.5,\"x,\"\"y\",\"\",\r\n");
  EXPECT_EQ(Rows({"--format", "json", query + " LIMIT 1"}),
            "[\n  {\"a\":1,\"a_2\":2.5,\"the text\":\"x,\\\"y\",\"empty\":\"\",\"nothing\":null}\n]\n");
  EXPECT_EQ(Rows({"--format", "json", "SELECT 1 AS a, 2 AS a, 3 AS a_2 FROM store LIMIT 1"}),
            "[\n  {\"a\":1,\"a_3\":2,\"a_2\":3}\n]\n");
}

TEST_F(CommandRunTest, Errors) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> rows{
      {{"SELECT $1"}, "rq: the parameter $1 has no value\n"},
      {{"--rewrite", "split", "SELECT 1"}, "rq: --rewrite takes one of "},
      {{"--db", "/nowhere/file", "SELECT 1"}, "rq: /nowhere/file: unable to open database file\n"},
      {{"[1]"}, "rq: line 1, column 1: syntax error"},
      {{"--db", "", "SELECT 1"}, "rq: --db takes the name of a file\n"},
      {{"--db", "/etc/passwd", "SELECT city FROM store"}, "rq: /etc/passwd: SQLite: file is not a database\n"},
      {{"--file", "/tmp"}, "rq: cannot read /tmp: Is a directory\n"},
      {{"SELECT EVALUATE('1); DROP TABLE store; --')"}, "rq: there is more than one statement\n"},
      {{"++"}, "rq: line 1, column 1: syntax error"},
      {{""}, "rq: line 1, column 1: there is no query here"},
      {{"SELECT 1", "SELECT 2"}, "rq: The following argument was not expected: SELECT 2\n"},
  };
  for (const auto& [arguments, message] : rows) {
    std::vector<std::string> line{"run"};
    line.insert(line.end(), arguments.begin(), arguments.end());
    const RqRun run = RunRq(line);
    EXPECT_EQ(run.m_status, 2);
    EXPECT_EQ(run.m_out, "");
    EXPECT_EQ(run.m_err.substr(0, message.size()), message);
  }
  EXPECT_EQ(RunRq({"run", "SELECT Amount FROM \"Turnover\""}).m_status, 1);
}

/// What SQLite takes however long it is, for it is not nested, and what is beyond it.
TEST_F(CommandRunTest, LongQueries) {
  std::string chain = "WITH c0 AS (SELECT 7 AS n)";
  std::string mixed = "SELECT 0";
  std::string all = "SELECT 0";
  std::string tooLong = "SELECT 1";
  for (int i = 1; i < 40; ++i) {
    const std::string number = std::to_string(i);
    chain += ", c" + number + " AS (SELECT * FROM c" + std::to_string(i - 1) + ")";
    mixed += (i % 2 == 0 ? " EXCEPT SELECT " : " UNION SELECT ") + number;
  }
  for (int i = 1; i < 1200; ++i) all += " UNION ALL SELECT " + std::to_string(i);
  for (int i = 1; i < 520; ++i) tooLong += (i % 2 == 0 ? " UNION ALL SELECT 1" : " UNION SELECT 1");
  EXPECT_EQ(Rows({"--format", "csv", chain + " SELECT n FROM c39"}), "n\r\n7\r\n");
  EXPECT_NE(Rows({mixed}).find("(21 rows)"), std::string::npos);
  EXPECT_NE(Rows({all}).find("(1200 rows)"), std::string::npos);
  EXPECT_EQ(RunRq({"run", tooLong}).m_status, 1);
}

TEST_F(CommandRunTest, Parameters) {
  EXPECT_EQ(Rows({"--format", "csv", "--param", "2", "--param", "b", "--param", "NULL",
                  "SELECT $2 AS b, $1 + 1 AS three, $3 AS nothing"}),
            "b,three,nothing\r\nb,3,\r\n");
  for (const std::string text : {"[1]", "++", "--", "nan", "-inf", " 5", "{}"}) {
    EXPECT_EQ(Rows({"--format", "csv", "--param", text, "SELECT LENGTH($1) AS l, $1 AS v"}),
              "l,v\r\n" + std::to_string(text.size()) + "," + text + "\r\n");
  }
  EXPECT_EQ(Rows({"--format", "csv", "--param=", "SELECT $1 AS v"}), "v\r\n\"\"\r\n");
}

/// The rows of a request that is rewritten are those of the request: of one with bounds, row numbers, a common table
/// expression that a subquery reads first, and references from subqueries into the blocks around them.
TEST_F(CommandRunTest, RewritesKeepTheRows) {
  const std::string query =
      "WITH cities AS (SELECT city, region FROM store WHERE floor_area > 200 OR NOT (closed IS NULL AND store_id < 9)) "
      "SELECT d.product_id, d.place FROM (SELECT product_id, supplier_id, category_id, ROW_NUMBER() OVER (PARTITION BY "
      "supplier_id ORDER BY list_price DESC, product_id) AS place FROM product) d "
      "WHERE (EXISTS (SELECT 1 FROM (SELECT s.supplier_id, s.region FROM supplier s) x WHERE x.supplier_id = "
      "d.supplier_id AND EXISTS (SELECT 1 FROM cities c WHERE c.region = x.region AND d.category_id < 9)) "
      "OR d.place = 1 AND d.product_id < 50) AND d.place IN (SELECT LENGTH(city) - 4 FROM cities) "
      "ORDER BY d.product_id LIMIT 30 OFFSET 2";
  const std::string rows = Rows({query});
  EXPECT_NE(rows.find("(30 rows)"), std::string::npos) << rows;
  for (const char* const rewrite : {"cnf", "dnf", "bytes", "copy"}) {
    SCOPED_TRACE(rewrite);
    EXPECT_EQ(Rows({"--rewrite", rewrite, query}), rows);
    EXPECT_EQ(Rows({"--rewrite", rewrite, "--rewrite", "cnf", "--rewrite", "copy", "--rewrite", "bytes", query}), rows);
  }
}

/// Filters with a part that the normal forms take for known, and of which rows show that it is not so.
TEST_F(CommandRunTest, NormalFormsKeepTheRowsOfConstantsAndNulls) {
  const std::vector<std::pair<std::string, int>> rows{
      // Of all 160 products
      {"product_id = 1 OR 1 + 2 = 0 + 3", 160},
      {"product_id = 1 OR $1 = $2", 160},
      {"product_id = 1 OR UPPER('x') IN (UPPER('X'))", 160},
      {"product_id = 1 OR NOT DATE '2024-01-01' = CURRENT_DATE AND $1 <> $2", 1},
      {"product_id = 1 AND NULLIF(1, 1) IS NOT NULL", 0},
      {"product_id = 1 AND 'a' = 'a '", 0},
      {"product_id = 1 AND NULL = NULL", 0},
      {"product_id = 1 OR 1 = 1 AND 2 = 2", 160},
      {"product_id < 50 AND brand = brand", 42},
      {"product_id < 50 AND (brand = 'x' OR brand <> 'x')", 42},
      // Constants that are what they are taken for
      {"1 = 2 OR product_id = 3", 1},
      {"1 = 1 AND 'a' IS NOT NULL AND (product_id = 3 OR product_id = 4)", 2},
  };
  for (const auto& [filter, count] : rows) {
    SCOPED_TRACE(filter);
    const std::string query = "SELECT COUNT(*) AS n FROM product WHERE " + filter;
    for (const char* const rewrite : {"cnf", "dnf", "copy"}) {
      EXPECT_EQ(Rows({"--format", "csv", "--param", "7", "--param", "7", "--rewrite", rewrite, query}),
                "n\r\n" + std::to_string(count) + "\r\n");
    }
  }
}

/// What reports rely on: keys that lead somewhere, summaries that are the sums of the details, members without facts,
/// and the same rows wherever the sample is made. Other rows need another SampleData::kVersion.
TEST_F(CommandRunTest, Sample) {
  SqliteDatabase database = OpenSample();
  const std::vector<std::pair<std::string, std::int64_t>> rows{
      {"SELECT count(*) FROM sales WHERE ship_date_id NOT IN (SELECT date_id FROM ship_calendar)", 0},
      {"SELECT count(*) FROM sales s LEFT JOIN retail.product p USING (product_id) WHERE p.sku IS NULL", 0},
      {"SELECT sum(amount) <> (SELECT sum(amount) FROM sales) FROM summary.sales_month_category", 0},
      {"SELECT count(*) FROM sales WHERE amount * 4 <> CAST(amount * 4 AS INTEGER) OR amount <> quantity * unit_price",
       0},
      {"SELECT count(*) = 0 FROM store WHERE store_id NOT IN (SELECT store_id FROM sales)", 0},
      {"SELECT count(discount) IN (0, count(*)) FROM sales", 0},
      {"SELECT count(*) FROM archive.old_sales", 3638},
      {"SELECT sum(sale_id * 7 + product_id * 13 + customer_id * 29 + date_id + quantity) FROM sales", 433339128806},
      {"SELECT sum(length(customer_name) + length(ifnull(email, '')) * 3 + ifnull(credit_limit, 1) * 4) FROM customer",
       3099222},
  };
  for (const auto& [query, expected] : rows) {
    SCOPED_TRACE(query);
    const SqliteValue value = database.Query(query).m_rows.at(0).at(0);
    if (const auto* const pReal = std::get_if<double>(&value)) {
      EXPECT_EQ(*pReal, static_cast<double>(expected));
    } else {
      EXPECT_EQ(std::get<std::int64_t>(value), expected);
    }
  }
}

/// Functions that SQLite has under no name of its own.
TEST_F(CommandRunTest, FunctionsByOtherMeans) {
  const std::vector<std::pair<std::string, std::string>> rows{
      {"RIGHT('abc', 0) || RIGHT('abc', 2) || RIGHT('abc', 9)", "bcabc"},
      {"REPEAT('ab', 3) || SPACE(2) || INSERT('hello', 2, 3, 'XY')", "ababab  hXYo"},
      {"LOCATE('a', 'banana', 3) * 100 + LOCATE('x', 'banana', 3) + POSITION('n' IN 'banana')", "403"},
      {"EXTRACTBIT(5, 2) + MOD(7.5, 2) + 7 / 2", "6.0"},
      {"DATE '2024-01-31' + INTERVAL '1' MONTH", "2024-02-29"},
      {"TIMESTAMPADD(SQL_TSI_QUARTER, -1, TIMESTAMP '2023-05-31 10:00:00')", "2023-02-28 10:00:00"},
      {"TIMESTAMPDIFF(SQL_TSI_MINUTE, TIMESTAMP '2024-01-01 10:00:59', TIMESTAMP '2024-01-01 10:02:00')", "2"},
      {"TIMESTAMPDIFF(SQL_TSI_HOUR, TIMESTAMP '2023-12-31 23:59:59', TIMESTAMP '2024-01-01 01:00:00')", "2"},
      {"TIMESTAMPDIFF(SQL_TSI_WEEK, DATE '2024-06-02', DATE '2024-06-03')", "1"},
      {"TIMESTAMPDIFF(SQL_TSI_QUARTER, DATE '2023-12-31', DATE '2024-04-01')", "2"},
      {"EXTRACT(DAY_OF_QUARTER FROM DATE '2024-05-03') * 10 + EXTRACT(MONTH_OF_QUARTER FROM DATE '2024-05-03')", "332"},
      {"EXTRACTBIT(5, 0) || 'x'", "1x"},
      {"VALUEOF(\"KX_SESSION\".\"REPORT_DATE\") + 1", "2024-07-01"},
      {"DATE '2024-02-29' - EXTRACT(DAY FROM DATE '2024-02-29') + SIGN(7)", "2024-02-01"},
      {"NULLIF(DATE '2024-02-29', TIMESTAMP '2024-02-28 00:00:00')", "2024-02-29"},
      {"NULLIF(DATE '2024-02-29', TIMESTAMP '2024-02-29 00:00:00')", ""},
      {"EXTRACT(NAME_OF_DAY FROM DATE '2024-02-29') || EXTRACT(NAME_OF_MONTH FROM DATE '2024-12-01')", "ThuDec"},
  };
  for (const auto& [expr, value] : rows) {
    EXPECT_EQ(Rows({"--format", "csv", "SELECT " + expr + " AS v"}), "v\r\n" + value + "\r\n") << expr;
  }
}

/// SQLite gives each value a type of its own: one that may be an integer is divided as a number all the same.
TEST_F(CommandRunTest, NumbersOfTwoKinds) {
  const std::vector<std::pair<std::string, std::string>> rows{
      {"SELECT COALESCE(SQRT(floor_area), 1) / 2 AS v FROM store WHERE store_id = 2", "0.5"},
      {"SELECT CASE WHEN store_id = 1 THEN SQRT(2) ELSE 3 END / 2 AS v FROM store WHERE store_id = 2", "1.5"},
      {"SELECT SUM(x.a / 2) AS v FROM (SELECT SQRT(4) AS a UNION ALL SELECT 1) x", "1.5"},
      {"SELECT SUM(x.a % 2) AS v FROM (SELECT store_id AS a FROM store WHERE store_id = 3 UNION ALL SELECT 2.5) x",
       "1.5"},
  };
  for (const auto& [query, value] : rows) {
    EXPECT_EQ(Rows({"--format", "csv", query}), "v\r\n" + value + "\r\n") << query;
  }
}

/// A column that a grouping set does not have is null in the subqueries of its rows too, in all their clauses.
TEST_F(CommandRunTest, SubqueriesOfGroupingSets) {
  const std::string groups = " FROM store s GROUP BY ROLLUP (country)";
  EXPECT_EQ(Rows({"--format", "csv",
                  "SELECT country, (SELECT COUNT(*) FROM supplier u WHERE u.country = s.country) AS n" + groups +
                      " ORDER BY country DESC NULLS FIRST LIMIT 2"}),
            "country,n\r\n,0\r\nUSA,2\r\n");
  EXPECT_EQ(Rows({"--format", "csv",
                  "SELECT COUNT(country) AS n FROM (SELECT country" + groups +
                      " HAVING NOT EXISTS (SELECT 1 FROM supplier u WHERE u.country = s.country)) x"}),
            "n\r\n0\r\n");
  EXPECT_EQ(Rows({"--format", "csv",
                  "SELECT country, (SELECT COUNT(*) FROM supplier u WHERE u.country IN (SELECT w.country FROM store w "
                  "WHERE w.country = s.country)) AS n" +
                      groups + " ORDER BY country DESC NULLS FIRST LIMIT 2"}),
            "country,n\r\n,0\r\nUSA,2\r\n");
}

/// Wherever dates meet timestamps they are compared as moments: each of the 18 stores is found.
TEST_F(CommandRunTest, DatesAreComparedWithTimestamps) {
  const std::vector<std::pair<std::string, int>> rows{
      {"opened IN (SELECT CAST(opened AS TIMESTAMP) FROM store)", 18},
      {"CAST(opened AS TIMESTAMP) IN (SELECT opened FROM store)", 18},
      {"CAST(opened AS TIMESTAMP) NOT IN (SELECT opened FROM store)", 0},
      {"opened >= ALL (SELECT CAST(opened AS TIMESTAMP) FROM store)", 1},
      {"CAST(opened AS TIMESTAMP) >= ALL (SELECT opened FROM store)", 1},
      {"(store_id, opened) IN (SELECT store_id, CAST(opened AS TIMESTAMP) FROM store)", 18},
      {"(CAST(opened AS TIMESTAMP), store_id) IN (SELECT opened, store_id FROM store)", 18},
      {"(opened, 1) IN ((TIMESTAMP '1999-01-01 00:00:00', 1), (CAST(opened AS TIMESTAMP), 1))", 18},
      {"CASE opened WHEN CAST(opened AS TIMESTAMP) THEN 1 ELSE 0 END = 1", 18},
  };
  for (const auto& [filter, count] : rows) {
    EXPECT_EQ(Rows({"--format", "csv", "SELECT COUNT(*) AS n FROM store WHERE " + filter}),
              "n\r\n" + std::to_string(count) + "\r\n")
        << filter;
  }
}

/// Deviations keep their digits where squares would lose them; medians are those of the middle.
TEST_F(CommandRunTest, FunctionsOfTheConnection) {
  SqliteDatabase database(":memory:", SqliteDatabase::Access::kReadWrite);
  const SqliteRows rows = database.Query(
      "WITH t(x, g) AS (VALUES (1e15 + 1, 1), (1e15 + 3, 1), (NULL, 1), (5, 2)) SELECT stddev_pop(x), stddev_samp(x), "
      "median(x) FROM t GROUP BY g ORDER BY g");
  EXPECT_EQ(rows.m_rows[0], (SqliteRow{1.0, std::sqrt(2.0), 1e15 + 2}));
  EXPECT_EQ(rows.m_rows[1], (SqliteRow{0.0, std::monostate(), 5.0}));
  const SqliteRows moving = database.Query(
      "SELECT stddev_pop(x) OVER (ORDER BY x ROWS 1 PRECEDING) FROM (SELECT 1 AS x UNION SELECT 3 UNION SELECT 7)");
  EXPECT_EQ(moving.m_rows[2], (SqliteRow{2.0}));
}

}  // namespace
