-- Which categories does each department have?
SELECT department, category_name
  FROM product
 GROUP BY department, category_name
HAVING department <> 'Internal' AND category_name IS NOT NULL
 ORDER BY department, category_name
