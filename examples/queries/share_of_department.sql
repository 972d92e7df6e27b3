-- Which share of its department, and of everything, does each category have?
SELECT p.department,
       p.category_name,
       SUM(s.amount) AS turnover,
       ROUND(100.0 * SUM(s.amount) / SUM(SUM(s.amount)) OVER (PARTITION BY p.department), 1) AS percent_of_department,
       ROUND(100.0 * SUM(s.amount) / SUM(SUM(s.amount)) OVER (), 1) AS percent_of_all
  FROM sales s
  JOIN product p ON p.product_id = s.product_id
 GROUP BY p.department, p.category_name
 ORDER BY p.department, turnover DESC, p.category_name
