-- Customers who bought above the average of their segment in one year and less than half of it in the next, with what
-- they used to buy most, from which suppliers, where, and whether a promotion has reached them since.
WITH yearly AS (
  SELECT s.customer_id, c.year_id, SUM(s.amount) AS spent, COUNT(DISTINCT s.sale_id) AS visits
    FROM sales s
    JOIN calendar c ON c.date_id = s.date_id
   GROUP BY s.customer_id, c.year_id
),
segments AS (
  SELECT cu.segment, y.year_id, AVG(y.spent) AS usual
    FROM yearly y
    JOIN customer cu ON cu.customer_id = y.customer_id
   GROUP BY cu.segment, y.year_id
),
lost AS (
  SELECT cu.customer_id, cu.customer_name, cu.segment, cu.region, y.year_id, y.spent, COALESCE(n.spent, 0) AS spent_next
    FROM customer cu
    JOIN yearly y ON y.customer_id = cu.customer_id
    JOIN segments sg ON sg.segment = cu.segment AND sg.year_id = y.year_id
    LEFT JOIN yearly n ON n.customer_id = y.customer_id AND n.year_id = y.year_id + 1
   WHERE y.spent > sg.usual
     AND COALESCE(n.spent, 0) < 0.5 * y.spent
     AND y.year_id < (SELECT MAX(last.year_id) FROM yearly last)
),
favourites AS (
  SELECT places.customer_id, places.year_id, places.category_id, places.category_turnover
    FROM (SELECT s.customer_id,
                 c.year_id,
                 p.category_id,
                 SUM(s.amount) AS category_turnover,
                 ROW_NUMBER() OVER (PARTITION BY s.customer_id, c.year_id
                                    ORDER BY SUM(s.amount) DESC, p.category_id) AS place
            FROM sales s
            JOIN calendar c ON c.date_id = s.date_id
            JOIN product p ON p.product_id = s.product_id
           GROUP BY s.customer_id, c.year_id, p.category_id) places
   WHERE places.place = 1
)
SELECT l.segment,
       l.customer_name,
       l.year_id,
       l.spent,
       l.spent_next,
       ROUND(100.0 * l.spent_next / l.spent, 1) AS percent_left,
       SUM(l.spent - l.spent_next) OVER (PARTITION BY l.segment) AS lost_in_segment,
       pc.category_name AS favourite,
       (SELECT COUNT(DISTINCT su.supplier_id)
          FROM product p
          JOIN supplier su ON su.supplier_id = p.supplier_id
          JOIN price_list pl ON pl.product_id = p.product_id
         WHERE p.category_id = f.category_id
           AND pl.list_price < (SELECT AVG(o.list_price) FROM product o WHERE o.category_id = p.category_id))
         AS cheap_suppliers,
       (SELECT MAX(pr.promotion_name)
          FROM promotion pr
          JOIN sales s ON s.promotion_id = pr.promotion_id
          JOIN store st ON st.store_id = s.store_id
         WHERE s.customer_id = l.customer_id
           AND st.region = l.region
           AND s.ship_date_id IN (SELECT sc.date_id FROM ship_calendar sc WHERE sc.year_id > l.year_id))
         AS promotion_since
  FROM lost l
  JOIN favourites f ON f.customer_id = l.customer_id AND f.year_id = l.year_id
  JOIN product_category pc ON pc.category_id = f.category_id
 ORDER BY lost_in_segment DESC, l.segment, l.spent - l.spent_next DESC, l.customer_name
