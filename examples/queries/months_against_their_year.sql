-- Each month against the average month of its year and against the year before. The monthly sums are read three times.
WITH months AS (
  SELECT c.year_id, c.month_of_year, SUM(s.amount) AS turnover
    FROM sales s
    JOIN calendar c ON c.date_id = s.date_id
   GROUP BY c.year_id, c.month_of_year
),
years AS (
  SELECT year_id, AVG(turnover) AS average_month, COUNT(*) AS months FROM months GROUP BY year_id
)
SELECT m.year_id,
       m.month_of_year,
       m.turnover,
       ROUND(100.0 * m.turnover / y.average_month, 1) AS percent_of_average,
       m.turnover - before.turnover AS growth
  FROM months m
  JOIN years y ON y.year_id = m.year_id
  LEFT JOIN months before ON before.year_id = m.year_id - 1 AND before.month_of_year = m.month_of_year
 ORDER BY m.year_id, m.month_of_year
