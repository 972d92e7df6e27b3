-- Every brand of a department with the department's turnover and buyers beside its own.
SELECT p.department,
       p.brand,
       SUM(s.amount) AS turnover,
       SUM(s.amount BY p.department) AS of_department,
       COUNT(DISTINCT s.customer_id) AS buyers,
       COUNT(DISTINCT s.customer_id BY p.department) AS buyers_of_department,
       RANK(SUM(s.amount) BY p.department) AS place
  FROM sales s
  JOIN product p ON p.product_id = s.product_id
 GROUP BY p.department, p.brand
 ORDER BY p.department, place, p.brand
