-- Which price did the price list ask on the day of each sale?
SELECT s.sale_id, s.unit_price, pl.list_price
  FROM sales s
  JOIN price_list pl
    ON pl.product_id = s.product_id
   AND s.date_id >= pl.valid_from_id
   AND (s.date_id <= pl.valid_to_id OR pl.valid_to_id IS NULL)
 WHERE s.unit_price < pl.list_price
