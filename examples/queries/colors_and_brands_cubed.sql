-- Every way of summing up products by color, brand and department.
SELECT color, brand, department
  FROM product
 GROUP BY CUBE (color, brand), department
