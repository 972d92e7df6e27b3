-- Where are our customers: by city, by country, by region and in all?
SELECT region, country, city
  FROM customer
 GROUP BY ROLLUP (region, country, city)
 ORDER BY region NULLS FIRST, country NULLS FIRST, city NULLS FIRST
