-- Products of well rated suppliers that are short in a warehouse, step by step.
WITH good AS (
  SELECT supplier_id, supplier_name FROM supplier WHERE rating >= 4
),
short AS (
  WITH latest AS (
    SELECT date_id FROM calendar WHERE calendar_date = DATE '2024-06-30'
  )
  SELECT i.product_id, i.warehouse_id
    FROM inventory i
    JOIN latest l ON l.date_id = i.date_id
   WHERE i.quantity_on_hand < i.reorder_level
),
short_of_good AS (
  SELECT p.product_id, p.product_name, g.supplier_name, s.warehouse_id
    FROM short s
    JOIN product p ON p.product_id = s.product_id
    JOIN good g ON g.supplier_id = p.supplier_id
)
SELECT w.warehouse_name, x.product_name, x.supplier_name
  FROM short_of_good x
  JOIN warehouse w ON w.warehouse_id = x.warehouse_id
 WHERE EXISTS (SELECT 1 FROM short s WHERE s.product_id = x.product_id AND s.warehouse_id <> x.warehouse_id)
