-- Daily turnover of the northern stores, and its average over the last seven days with sales.
WITH days AS (
  SELECT c.calendar_date, SUM(s.amount) AS turnover
    FROM sales s
    JOIN calendar c ON c.date_id = s.date_id
    JOIN store st ON st.store_id = s.store_id
   WHERE st.region = 'North'
   GROUP BY c.calendar_date
)
SELECT calendar_date,
       turnover,
       AVG(turnover) OVER (ORDER BY calendar_date ROWS 6 PRECEDING) AS average_of_week,
       SUM(turnover) OVER (ORDER BY calendar_date ROWS BETWEEN 29 PRECEDING AND CURRENT ROW) AS sum_of_month
  FROM days
 ORDER BY calendar_date
