-- In which price band is each product, and what is it called on the shelf?
SELECT sku,
       CASE WHEN list_price < 10 THEN 'low'
            WHEN list_price < 100 THEN 'middle'
            WHEN list_price IS NOT NULL THEN 'high'
            ELSE 'unknown'
       END AS band,
       CASE department WHEN 'Food' THEN 'F' WHEN 'Garden' THEN 'G' ELSE '-' END AS shelf,
       CAST(list_price AS INTEGER) AS whole_price,
       COALESCE(brand, 'no name') || ' ' || TRIM(BOTH FROM product_name) AS label
  FROM retail.product
 WHERE brand LIKE 'N%'
    OR brand LIKE '100\%%' ESCAPE '\'
    OR color NOT IN ('red', 'green')
