-- Which products sell for more than twice what they cost, and by how much?
SELECT product_id,
       UPPER(product_name) AS name,
       list_price - unit_cost AS markup,
       ROUND(100 * (list_price - unit_cost) / NULLIF(unit_cost, 0), 1) AS markup_percent
  FROM product
 WHERE list_price > 2 * unit_cost
   AND discontinued IS NULL
 ORDER BY markup DESC, 1
