-- How far do the prices of a brand spread, and what does the product in the middle cost?
SELECT brand,
       COUNT(*) AS products,
       MEDIAN(list_price) AS middle_price,
       STDDEV(list_price) AS deviation,
       STDDEV_POP(DISTINCT unit_cost) AS deviation_of_costs
  FROM product
 WHERE brand IS NOT NULL
 GROUP BY brand
HAVING COUNT(DISTINCT list_price) > 1
 ORDER BY deviation DESC NULLS LAST
