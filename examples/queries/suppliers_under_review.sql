-- Which well known suppliers should be talked to? Those whose products sell below the average of their department in
-- some region, though stock of them lies about; with their standing among all suppliers of the region.
WITH lines AS (
  SELECT s.product_id, st.region, c.year_id, s.quantity, s.amount, s.cost, s.customer_id, pr.campaign
    FROM sales s
    JOIN calendar c ON c.date_id = s.date_id
    JOIN store st ON st.store_id = s.store_id
    LEFT JOIN promotion pr ON pr.promotion_id = s.promotion_id
   WHERE c.holiday_name IS NULL
),
per_product AS (
  SELECT l.region,
         p.department,
         p.supplier_id,
         p.product_id,
         SUM(l.amount) AS turnover,
         SUM(l.amount - l.cost) AS margin,
         COUNT(DISTINCT l.customer_id) AS buyers,
         COUNT(*) FILTER (WHERE l.campaign IS NOT NULL) AS promoted
    FROM lines l
    JOIN product p ON p.product_id = l.product_id
    JOIN product_category pc ON pc.category_id = p.category_id
   WHERE p.discontinued IS NULL
   GROUP BY l.region, p.department, p.supplier_id, p.product_id
),
stock AS (
  SELECT i.product_id, w.region, SUM(i.quantity_on_hand) AS on_hand, MAX(i.reorder_level) AS reorder_level
    FROM inventory i
    JOIN warehouse w ON w.warehouse_id = i.warehouse_id
   WHERE i.date_id = (SELECT MAX(last.date_id) FROM inventory last WHERE last.product_id = i.product_id)
   GROUP BY i.product_id, w.region
)
SELECT su.supplier_name,
       su.country,
       weak.region,
       COUNT(*) AS weak_products,
       SUM(weak.turnover) AS turnover,
       SUM(weak.margin) AS margin,
       MAX(weak.buyers) AS buyers_of_best,
       RANK() OVER (PARTITION BY weak.region ORDER BY SUM(weak.margin) DESC) AS place_in_region
  FROM (SELECT pp.region, pp.supplier_id, pp.product_id, pp.turnover, pp.margin, pp.buyers
          FROM per_product pp
          JOIN (SELECT region, department, AVG(turnover) AS usual
                  FROM per_product
                 GROUP BY region, department) average
            ON average.region = pp.region AND average.department = pp.department
         WHERE pp.turnover < average.usual
           AND EXISTS (SELECT 1
                         FROM stock k
                        WHERE k.product_id = pp.product_id
                          AND k.on_hand > k.reorder_level
                          AND k.region IN (SELECT h.region
                                             FROM warehouse h
                                            GROUP BY h.region
                                           HAVING SUM(h.capacity) > (SELECT AVG(a.capacity) FROM warehouse a)))) weak
  JOIN supplier su ON su.supplier_id = weak.supplier_id
 WHERE su.rating >= 2
 GROUP BY su.supplier_id, su.supplier_name, su.country, weak.region
HAVING SUM(weak.margin) IS NOT NULL
 ORDER BY weak.region, place_in_region, su.supplier_name
 LIMIT 100
