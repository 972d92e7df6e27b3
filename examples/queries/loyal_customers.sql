-- Who has bought in each store of the own city?
SELECT cu.customer_name
  FROM customer cu
 WHERE NOT EXISTS (
         SELECT 1
           FROM store st
          WHERE st.city = cu.city
            AND NOT EXISTS (
                  SELECT 1
                    FROM sales s
                   WHERE s.store_id = st.store_id
                     AND s.customer_id = cu.customer_id))
