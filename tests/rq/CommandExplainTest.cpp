#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "RqTestUtil.h"

namespace {

/// The tree on one line, with each run of blanks as one.
std::string Explain(const std::string& query) {
  const RqRun run = RunRq({"explain", "--one-line", query});
  EXPECT_EQ(run.m_status, 0) << run.m_err;
  return OneLine(run.m_out);
}

/// The error without the text and the caret.
std::string Error(const std::string& query) {
  const RqRun run = RunRq({"explain", query});
  EXPECT_EQ(run.m_status, 2);
  EXPECT_EQ(run.m_out, "");
  EXPECT_TRUE(run.m_err.ends_with("^\n")) << run.m_err;
  return run.m_err.substr(0, run.m_err.find('\n'));
}

TEST(CommandExplain, Errors) {
  const std::string longName(100, 'n');
  const std::vector<std::pair<std::string, std::string>> rows{
      // Statements
      {"SELECT 1; SELECT 2", "line 1, column 11: there is more than one statement"},
      {"DELETE FROM sales", "line 1, column 1: this is no query"},
      {"VALUES (1)", "line 1, column 9: VALUES is not supported"},
      // Tables
      {"SELECT 1 FROM nowhere", "line 1, column 15: there is no table nowhere"},
      {"SELECT 1 FROM sales, sales",
       "line 1, column 22: the table name sales stands for another table already; give it an alias"},
      {"SELECT 1 FROM products a, products b",
       "line 1, column 27: this logical table stands in the FROM already: their columns are the same"},
      {"SELECT 1 FROM products a WHERE EXISTS (SELECT 1 FROM products b WHERE a.brand = b.brand)",
       "line 1, column 71: the logical table of this column stands in an inner query too, which hides it"},
      {"SELECT x.a FROM (SELECT 1) x (a, b)", "line 1, column 25: the alias names more columns than the query has"},
      // WITH: nothing is seen before it stands, and what nobody reads must be right too
      {"WITH a AS (SELECT x FROM b), b AS (SELECT 1 AS x) SELECT x FROM a", "line 1, column 26: there is no table b"},
      {"WITH a AS (SELECT x FROM a) SELECT x FROM a", "line 1, column 26: there is no table a"},
      {"WITH a AS (SELECT nothing FROM sales) SELECT 1", "line 1, column 19: there is no column nothing"},
      {"WITH a (x, y) AS (SELECT 1) SELECT 1", "line 1, column 6: WITH names more columns than its query has"},
      // Columns
      {"SELECT s.* FROM sales", "line 1, column 8: there is no table s in this FROM"},
      {"SELECT " + longName + " FROM sales", "line 1, column 8: there is no column " + Repeated("n", 40) + "..."},
      {"SELECT date_id FROM sales JOIN inventory USING (product_id)",
       "line 1, column 8: several columns are called date_id; write the table in front of it"},
      {"SELECT 1 FROM sales JOIN inventory USING (product_id) JOIN calendar USING (date_id)",
       "line 1, column 60: the join column date_id is ambiguous"},
      {"SELECT 1 FROM sales, product p JOIN store t ON sales.store_id = t.store_id",
       "line 1, column 48: there is no table sales in this FROM"},
      {"SELECT sale_id FROM sales WHERE sale_id IN (SELECT sale_id, line_no FROM sales)",
       "line 1, column 52: the subquery has 2 columns, where 1 column is needed"},
      {"SELECT 1, 2 UNION ALL SELECT 1",
       "line 1, column 30: this query has 1 column, and the first one of the set operation 2 columns"},
      {"SELECT 1 WHERE VALUEOF(\"X\".\"Y\") = 1", "line 1, column 16: the session variable X.Y has no value"},
      // Groups and order
      {"SELECT amount FROM sales GROUP BY 2", "line 1, column 35: the select list has no column of that number"},
      {"SELECT amount FROM sales ORDER BY 0", "line 1, column 35: the select list has no column of that number"},
      {"SELECT 1 AS one FROM sales GROUP BY one", "line 1, column 37: a constant makes no groups"},
      {"SELECT (SELECT 1) AS v FROM sales GROUP BY v", "line 1, column 44: a subquery in GROUP BY is not supported"},
      {"SELECT city, region FROM store GROUP BY city",
       "line 1, column 14: this has a column that is not grouped by, and so no one value in a group"},
      {"SELECT 1 FROM store GROUP BY city HAVING region = 'x'",
       "line 1, column 49: this has a column that is not grouped by, and so no one value in a group"},
      {"SELECT DISTINCT city FROM store ORDER BY region",
       "line 1, column 42: a query with DISTINCT is sorted by what it selects"},
      {"SELECT 1 FROM sales LIMIT 0", "line 1, column 27: LIMIT takes a whole number from 1 to 4294967295"},
  };
  for (const auto& [query, error] : rows) {
    SCOPED_TRACE(query);
    EXPECT_EQ(Error(query), "rq: " + error);
  }
}

TEST(CommandExplain, Trees) {
  const std::vector<std::pair<std::string, std::string>> rows{
      // The block of a subquery ends with it
      {R"(SELECT sale_id FROM sales WHERE sale_id IN (SELECT sale_id FROM archive.old_sales) AND line_no > 1)",
       R"(RqList sales.sale_id as c1 Child Nodes (RqJoinSpec): shop.retail.sales T1 DetailFilter: sales.line_no > 1 and sales.sale_id in (Subquery( RqList old_sales.sale_id as c1 Child Nodes (RqJoinSpec): shop.archive.old_sales T2)) )"},
      // What USING makes of a chain: of a full join either, of a right one the right
      {R"(SELECT month_id FROM calendar_month FULL JOIN sales_month_category USING (month_id) LEFT JOIN inventory_month_warehouse USING (month_id))",
       R"(RqList coalesce( calendar_month.month_id , sales_month_category.month_id) as c1 Child Nodes (RqJoinSpec): shop.summary.calendar_month T1 FullOuterJoin On calendar_month.month_id = sales_month_category.month_id shop.summary.sales_month_category T2 LeftOuterJoin On inventory_month_warehouse.month_id = coalesce( calendar_month.month_id , sales_month_category.month_id) shop.summary.inventory_month_warehouse T3 )"},
      {R"(SELECT month_id FROM calendar_month RIGHT JOIN sales_month_category USING (month_id) JOIN inventory_month_warehouse USING (month_id))",
       R"(RqList sales_month_category.month_id as c1 Child Nodes (RqJoinSpec): shop.summary.sales_month_category T2 LeftOuterJoin On calendar_month.month_id = sales_month_category.month_id shop.summary.calendar_month T1 shop.summary.inventory_month_warehouse T3 On sales_month_category.month_id = inventory_month_warehouse.month_id )"},
      // Inner joins about what an outer join fills with nulls
      {R"(SELECT 1 FROM sales s JOIN (product p LEFT JOIN supplier u USING (supplier_id)) ON s.sale_id = u.rating)",
       R"(RqList 1 as c1 Child Nodes (RqJoinSpec): shop.retail.sales T1 shop.retail.product T2 LeftOuterJoin On product.supplier_id = supplier.supplier_id shop.retail.supplier T3 DetailFilter: sales.sale_id = supplier.rating )"},
      {R"(SELECT 1 FROM sales s LEFT JOIN product p USING (product_id) JOIN store t ON s.quantity = p.unit_cost)",
       R"(RqList 1 as c1 Child Nodes (RqJoinSpec): shop.retail.sales T1 LeftOuterJoin On sales.product_id = product.product_id shop.retail.product T2 shop.retail.store T3 DetailFilter: sales.quantity = product.unit_cost )"},
      {R"(SELECT 1 FROM sales s RIGHT JOIN store t USING (store_id) LEFT JOIN product p ON COALESCE(s.product_id, 0) = p.product_id)",
       R"(RqList 1 as c1 Child Nodes (RqJoinSpec): shop.retail.store T2 LeftOuterJoin On sales.store_id = store.store_id shop.retail.sales T1 LeftOuterJoin On product.product_id = coalesce( sales.product_id , 0) shop.retail.product T3 )"},
      // Names
      {R"(SELECT NNN FROM (SELECT 1 AS NNN) q)",
       R"(RqList D1.c1 as c1 Child Nodes (RqJoinSpec): ( RqList 1 as c1 ) as D1 )"},
      {R"(SELECT "DateKey", q.DATEKEY FROM (SELECT "DateKey" FROM times) q)",
       R"(RqList D1.c1 as c1, D1.c1 as c2 Child Nodes (RqJoinSpec): ( RqList Times.DateKey as c1 Child Nodes (RqJoinSpec): Times ) as D1 )"},
      // Readers of a WITH clause; one that nobody reads takes nothing from others
      {R"(WITH o AS (SELECT 1 AS a), z AS (SELECT a FROM o) SELECT x.a FROM o x, o y)",
       R"(RqList D1.c1 as c1 Child Nodes (RqJoinSpec): ( RqList shared 1 as c1 ) as D1 aka o ( RqSharedList sharing D1.c1 as c1 ) as D2 )"},
      {R"(SELECT city FROM store GROUP BY ROLLUP (city, region))",
       R"(RqList store.city as c1 Child Nodes (RqJoinSpec): shop.retail.store T1 GroupBy GroupingSets: ( (gid:0 store.region, store.city), (gid:1 store.city), (gid:3 )) )"},
      // A sort by what is not selected, where columns count
      {R"(SELECT city FROM store UNION (SELECT city FROM store ORDER BY opened LIMIT 3))",
       R"(( RqList store.city as c1 Child Nodes (RqJoinSpec): shop.retail.store T1 RqUnion RqList D3.c1 as c1 Child Nodes (RqJoinSpec): ( RqList /* FETCH FIRST 3 ROWS ONLY */ store.city as c1, store.opened as c2 Child Nodes (RqJoinSpec): shop.retail.store T2 OrderBy: c2 asc ) as D3) )"},
  };
  for (const auto& [query, tree] : rows) {
    SCOPED_TRACE(query);
    EXPECT_EQ(Explain(query), tree);
  }
}

}  // namespace
