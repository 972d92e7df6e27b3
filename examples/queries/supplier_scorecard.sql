-- Every side of the business around each supplier, from the first delivery to the last sale.
WITH days AS (
  SELECT date_id, calendar_date, month_id, year_id FROM calendar WHERE year_id BETWEEN 2023 AND 2024
),
active AS (
  SELECT p.product_id, p.supplier_id, p.product_name, p.category_id, p.list_price
    FROM product p
   WHERE p.discontinued IS NULL
)
SELECT su.supplier_name,
       a.product_name,
       sold.calendar_date AS sold_on,
       sent.calendar_date AS sent_on,
       near.store_name AS store,
       far.store_name AS store_of_last_time,
       buyer.customer_name AS buyer,
       other.customer_name AS buyer_of_last_time,
       home.warehouse_name AS warehouse,
       spare.warehouse_name AS spare_warehouse,
       now.list_price AS price_now,
       CASE WHEN before.list_price > now.list_price THEN 'down' ELSE 'up' END AS trend
  FROM supplier su
  JOIN active a ON a.supplier_id = su.supplier_id
  JOIN product_category pc ON pc.category_id = a.category_id
  JOIN sales s ON s.product_id = a.product_id
  JOIN days sold ON sold.date_id = s.date_id
  LEFT JOIN days sent ON sent.date_id = s.ship_date_id
  JOIN store near ON near.store_id = s.store_id
  JOIN customer buyer ON buyer.customer_id = s.customer_id
  LEFT JOIN (sales last
             JOIN store far ON far.store_id = last.store_id
             JOIN customer other ON other.customer_id = last.customer_id)
         ON last.product_id = a.product_id AND last.sale_id < s.sale_id
  LEFT JOIN inventory i ON i.product_id = a.product_id AND i.date_id = s.date_id
  LEFT JOIN warehouse home ON home.warehouse_id = i.warehouse_id
  LEFT JOIN warehouse spare ON spare.region = home.region AND spare.warehouse_id <> home.warehouse_id
  JOIN price_list now ON now.product_id = a.product_id AND now.valid_to_id IS NULL
  LEFT JOIN price_list before ON before.product_id = a.product_id AND before.valid_to_id < now.valid_from_id
  LEFT JOIN promotion pr ON pr.promotion_id = s.promotion_id
 WHERE su.rating >= 3
   AND pc.department IN ('Food', 'Garden')
   AND (pr.promotion_id IS NULL OR pr.discount_percent < 10)
   AND s.amount > (SELECT o.amount
                     FROM archive.old_sales o
                    WHERE o.sale_id = s.sale_id AND o.line_no = s.line_no)
 ORDER BY su.supplier_name, sold_on DESC NULLS LAST, s.sale_id
