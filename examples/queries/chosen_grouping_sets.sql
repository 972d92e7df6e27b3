-- Stores by type and country, by region alone, and all of them.
SELECT store_type, country, region
  FROM store
 GROUP BY GROUPING SETS ((store_type, country), region, ROLLUP (region, country), ())
