-- Which pairs of products were bought together, by customers who came back, in stores that are still open?
WITH lines AS (
  SELECT s.sale_id, s.product_id, s.customer_id, s.store_id, s.date_id
    FROM sales s
   WHERE s.store_id IN (
           SELECT st.store_id
             FROM store st
            WHERE st.closed IS NULL
              AND st.region IN (
                    SELECT w.region
                      FROM warehouse w
                     WHERE EXISTS (
                             SELECT 1
                               FROM inventory i
                              WHERE i.warehouse_id = w.warehouse_id
                                AND i.date_id >= ALL (
                                      SELECT c.date_id
                                        FROM calendar c
                                       WHERE c.year_id = 2023
                                         AND c.month_id IN (
                                               SELECT m.month_id
                                                 FROM calendar_month m
                                                WHERE m.quarter_id = c.quarter_id)))))
),
pairs AS (
  SELECT DISTINCT a.product_id AS one, b.product_id AS other, a.customer_id
    FROM lines a
    JOIN lines b ON b.sale_id = a.sale_id AND a.product_id < b.product_id
)
SELECT p1.product_name, p2.product_name AS bought_with, s1.supplier_name, s2.supplier_name AS supplier_of_other
  FROM (SELECT one, other FROM pairs
        EXCEPT
        SELECT q.product_id, r.product_id FROM price_list q JOIN price_list r USING (valid_from_id)) kept
  JOIN product p1 ON p1.product_id = kept.one
  JOIN product p2 ON p2.product_id = kept.other
  LEFT JOIN supplier s1 ON s1.supplier_id = p1.supplier_id
  LEFT JOIN supplier s2 ON s2.supplier_id = p2.supplier_id
 WHERE p1.department <> p2.department
   AND EXISTS (SELECT 1
                 FROM pairs again
                 JOIN lines later ON later.customer_id = again.customer_id
                WHERE again.one = kept.one AND again.other = kept.other)
 GROUP BY p1.product_name, p2.product_name, s1.supplier_name, s2.supplier_name
 ORDER BY 1, bought_with
