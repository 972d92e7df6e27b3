-- Warehouses with their stock, the products in it and their suppliers, down to empty warehouses.
SELECT w.warehouse_name, p.product_name, su.supplier_name
  FROM supplier su
 RIGHT JOIN product p ON p.supplier_id = su.supplier_id
 RIGHT JOIN inventory i ON i.product_id = p.product_id AND i.quantity_on_hand > 0
 RIGHT JOIN warehouse w ON w.warehouse_id = i.warehouse_id
 ORDER BY w.warehouse_name, p.product_name
