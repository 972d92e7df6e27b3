-- In which cities are customers and a warehouse, but neither a store nor one of the best three suppliers?
(SELECT city FROM customer INTERSECT SELECT city FROM warehouse)
EXCEPT
SELECT city FROM store
EXCEPT
(SELECT country FROM supplier WHERE rating > 1 ORDER BY rating DESC LIMIT 3)
