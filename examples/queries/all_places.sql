-- All cities that we have anything in, and the countries of our suppliers with repetitions.
SELECT city, country FROM customer
UNION
SELECT city, country FROM store
UNION
SELECT city, country FROM warehouse
UNION ALL
SELECT 'unknown', country FROM supplier
 ORDER BY country, city
 LIMIT 500
