-- Turnover by region and country of the store, with totals by region and in all.
SELECT st.region, st.country, SUM(s.amount) AS turnover, COUNT(DISTINCT st.store_id) AS stores
  FROM sales s
  JOIN store st ON st.store_id = s.store_id
 GROUP BY ROLLUP (st.region, st.country)
HAVING SUM(s.amount) > 0
 ORDER BY st.region NULLS LAST, st.country NULLS LAST
