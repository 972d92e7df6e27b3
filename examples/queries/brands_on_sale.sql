-- Which brands and colors do we carry? Each pair once, those without a color last.
SELECT DISTINCT brand, color
  FROM product
 WHERE brand IS NOT NULL
 ORDER BY color NULLS LAST, brand DESC NULLS FIRST
