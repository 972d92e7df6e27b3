-- What stock of food is there in large warehouses? The business model, with a physical table beside it.
SELECT w.WarehouseName, p.ProductName, st.OnHand, s.rating
  FROM "Stock" st
  JOIN "Products" p ON p.Discontinued IS NULL
  JOIN "Warehouses" w ON w.Capacity > 10000
  LEFT JOIN supplier s ON s.supplier_name = p.Brand
 WHERE st.OnHand < st.ReorderLevel
   AND p.Category IN (SELECT category_name FROM product_category WHERE department = 'Food')
