-- What was sold when, where and to whom? With comma joins, as the old reports have it.
SELECT c.calendar_date, st.store_name, cu.customer_name, p.product_name, s.quantity, s.amount
  FROM sales s, calendar c, store st, customer cu, product p
 WHERE s.date_id = c.date_id
   AND s.store_id = st.store_id
   AND s.customer_id = cu.customer_id
   AND s.product_id = p.product_id
   AND c.year_id BETWEEN 2022 AND 2024
   AND NOT (c.holiday_name IS NOT NULL OR st.closed < c.calendar_date)
 ORDER BY c.calendar_date, st.store_name
 LIMIT 100
