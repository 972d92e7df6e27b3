-- Sales with their product and its supplier, where a product counts only if its supplier is known.
SELECT s.sale_id, p.product_name, su.supplier_name, pr.promotion_name
  FROM sales s
  LEFT JOIN (product p JOIN supplier su ON su.supplier_id = p.supplier_id AND su.rating >= 3)
         ON p.product_id = s.product_id
  LEFT JOIN promotion pr ON pr.promotion_id = s.promotion_id
  JOIN (store st JOIN calendar c ON c.calendar_date >= st.opened)
    ON st.store_id = s.store_id AND c.date_id = s.date_id
 WHERE st.country = 'Germany'
