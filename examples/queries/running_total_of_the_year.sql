-- How did turnover add up month by month in each year, and how many lines had there been by then?
SELECT c.year_id,
       c.month_id,
       SUM(s.amount) AS turnover,
       SUM(SUM(s.amount)) OVER (PARTITION BY c.year_id ORDER BY c.month_id) AS so_far,
       SUM(COUNT(*)) OVER (ORDER BY c.month_id ROWS UNBOUNDED PRECEDING) AS lines_ever,
       MAX(SUM(s.amount)) OVER in_year AS best_month_so_far
  FROM sales s
  JOIN calendar c ON c.date_id = s.date_id
 GROUP BY c.year_id, c.month_id
WINDOW in_year AS (PARTITION BY c.year_id ORDER BY c.month_id ROWS UNBOUNDED PRECEDING)
 ORDER BY c.month_id
