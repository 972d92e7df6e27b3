-- Which categories earn more than a fifth of their turnover, on more than ten lines, and how much?
SELECT p.department,
       p.category_name,
       SUM(s.amount) AS turnover,
       ROUND(100.0 * SUM(s.amount - s.cost) / SUM(s.amount), 1) AS margin_percent
  FROM sales s
  JOIN product p ON p.product_id = s.product_id
 WHERE s.quantity > 0
 GROUP BY p.department, p.category_name
HAVING COUNT(*) > 10
   AND SUM(s.amount - s.cost) > 0.2 * SUM(s.amount)
   AND MAX(s.unit_price) >= 5
 ORDER BY margin_percent DESC, SUM(s.amount) DESC, p.category_name
