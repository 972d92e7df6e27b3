-- What did promotions sell each month, what sold without them, and how much of it at weekends?
SELECT c.month_id,
       SUM(s.amount) FILTER (WHERE s.promotion_id IS NOT NULL) AS promoted,
       SUM(s.amount) FILTER (WHERE s.promotion_id IS NULL) AS plain,
       COUNT(*) FILTER (WHERE c.day_of_week IN (6, 7)) AS weekend_lines,
       COUNT(DISTINCT s.customer_id) FILTER (WHERE s.discount > 0) AS buyers_with_discount,
       SUM(CASE WHEN s.quantity >= 10 THEN s.amount ELSE 0 END) AS bulk
  FROM sales s
  JOIN calendar c ON c.date_id = s.date_id
 GROUP BY c.month_id
 ORDER BY c.month_id
