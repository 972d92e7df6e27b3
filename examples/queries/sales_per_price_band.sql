-- Which price bands and years did we sell in? Grouped by an alias, a position and an expression.
SELECT CASE WHEN s.unit_price < 10 THEN 'low' ELSE 'high' END AS band,
       c.year_id,
       s.quantity + 1
  FROM sales s
  JOIN calendar c USING (date_id)
 GROUP BY band, 2, s.quantity + 1
HAVING c.year_id > 2020
