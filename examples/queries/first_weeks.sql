-- What was sold in the first two weeks after a product came out, and does the store open in the morning?
SELECT p.product_name, c.calendar_date,
       CASE WHEN st.opens_at < TIME '12:00:00' THEN 'morning' ELSE 'afternoon' END AS opens
  FROM sales s
  JOIN product p ON p.product_id = s.product_id
  JOIN calendar c ON c.date_id = s.date_id
  JOIN store st ON st.store_id = s.store_id
 WHERE c.calendar_date < p.introduced + INTERVAL '14' DAY
   AND p.introduced NOT BETWEEN DATE '2020-03-01' AND DATE '2020-06-30'
   AND EXTRACT(MONTH FROM c.calendar_date) IN (11, 12)
