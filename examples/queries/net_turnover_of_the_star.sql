-- Lines, pieces and net turnover by year, department, region and medium of the promotion, staff left out.
SELECT c.year_id,
       p.department,
       st.region,
       pr.medium,
       COUNT(*) AS lines,
       SUM(s.quantity) AS pieces,
       SUM(s.amount - COALESCE(s.discount, 0)) AS net
  FROM sales s
  JOIN calendar c ON c.date_id = s.date_id
  JOIN product p ON p.product_id = s.product_id
  JOIN store st ON st.store_id = s.store_id
  JOIN customer cu ON cu.customer_id = s.customer_id
  LEFT JOIN promotion pr ON pr.promotion_id = s.promotion_id
 WHERE c.year_id BETWEEN 2022 AND 2024
   AND cu.segment <> 'Staff'
 GROUP BY c.year_id, p.department, st.region, pr.medium
HAVING SUM(s.quantity) >= 1
 ORDER BY net DESC, 1, 2, 3, 4
