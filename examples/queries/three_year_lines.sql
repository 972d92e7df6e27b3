-- The full history of each line: archive, sales and what the price list then said.
SELECT *
  FROM (sales FULL JOIN archive.old_sales USING (sale_id, line_no, product_id))
  LEFT JOIN price_list USING (product_id)
 WHERE sale_id > 1000000
