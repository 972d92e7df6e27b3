-- What lies in which warehouse at the end of each month? The tables agree on the names of their keys.
SELECT month_name, warehouse_name, quantity_on_hand, stock_value
  FROM inventory_month_warehouse
NATURAL JOIN calendar_month
NATURAL LEFT JOIN warehouse
 WHERE quantity_on_hand > 0
