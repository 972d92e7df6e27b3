-- How much did each region sell to each segment, at which margin, and what was the average line worth?
SELECT st.region,
       cu.segment,
       COUNT(*) AS lines,
       SUM(s.quantity) AS pieces,
       SUM(s.amount) AS turnover,
       SUM(s.amount - s.cost) AS margin,
       AVG(s.amount) AS average_line,
       MIN(s.unit_price) AS lowest_price,
       MAX(s.unit_price) AS highest_price
  FROM sales s
  JOIN store st ON st.store_id = s.store_id
  JOIN customer cu ON cu.customer_id = s.customer_id
 GROUP BY st.region, cu.segment
 ORDER BY st.region, turnover DESC
