-- Which lines are worth more than twice the average line of their product, in stores that sell more than most?
SELECT s.sale_id, s.line_no, s.product_id, s.amount
  FROM sales s
 WHERE s.amount > 2 * (SELECT AVG(o.amount) FROM sales o WHERE o.product_id = s.product_id)
   AND s.store_id IN (SELECT t.store_id
                        FROM sales t
                       GROUP BY t.store_id
                      HAVING SUM(t.amount) > (SELECT SUM(a.amount) * 1.0 / COUNT(DISTINCT a.store_id) FROM sales a))
 ORDER BY s.amount DESC, s.sale_id, s.line_no
