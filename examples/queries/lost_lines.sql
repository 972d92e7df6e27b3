-- Which archived lines never made it to the sales table, and what does the product cost now?
SELECT o.sale_id, o.line_no,
       (SELECT p.list_price FROM product p WHERE p.product_id = o.product_id) AS price_now
  FROM archive.old_sales o
 WHERE (o.sale_id, o.line_no) NOT IN (SELECT sale_id, line_no FROM sales)
   AND o.store_id IN (SELECT store_id FROM store WHERE region = 'North')
   AND (o.product_id, o.store_id) IN ((1, 2), (3, 4), (5, 6))
