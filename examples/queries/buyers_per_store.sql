-- How many different customers, products and days does each store that is still open see?
SELECT st.store_name,
       COUNT(DISTINCT s.customer_id) AS buyers,
       COUNT(DISTINCT s.product_id) AS products,
       COUNT(DISTINCT s.date_id) AS days,
       COUNT(s.promotion_id) AS promoted_lines,
       1.0 * COUNT(*) / COUNT(DISTINCT s.sale_id) AS lines_per_sale
  FROM store st
  JOIN sales s ON s.store_id = st.store_id
 WHERE st.closed IS NULL
 GROUP BY st.store_id, st.store_name
HAVING COUNT(DISTINCT s.customer_id) >= 2
 ORDER BY buyers DESC, st.store_name
