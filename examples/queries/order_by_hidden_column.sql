-- The ten products that earn us most a piece, though the list does not show how much.
SELECT sku, product_name
  FROM product
 ORDER BY list_price - unit_cost DESC, UPPER(product_name), sku
 FETCH FIRST 10 ROWS ONLY
