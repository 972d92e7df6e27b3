-- Which products cost more than ever before, or less than another product of their supplier?
SELECT p.product_id, p.product_name
  FROM product p
 WHERE p.list_price > ALL (SELECT pl.list_price FROM price_list pl WHERE pl.product_id = p.product_id)
    OR p.list_price < ANY (SELECT o.list_price
                             FROM product o
                            WHERE o.supplier_id = p.supplier_id AND o.product_id <> p.product_id)
