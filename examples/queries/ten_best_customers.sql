-- The ten customers who left most with us, when they last came, though the list does not show for how much.
SELECT cu.customer_name, cu.city, MAX(c.calendar_date) AS last_seen
  FROM customer cu
  JOIN sales s ON s.customer_id = cu.customer_id
  JOIN calendar c ON c.date_id = s.date_id
 GROUP BY cu.customer_id, cu.customer_name, cu.city
 ORDER BY SUM(s.amount) DESC, COUNT(*) DESC, cu.customer_name
 LIMIT 10
