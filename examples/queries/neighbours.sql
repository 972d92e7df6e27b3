-- Which stores stand in the same city? The list of stores is read twice.
WITH open_stores AS (
  SELECT store_id, store_name, city, country
    FROM store
   WHERE closed IS NULL
)
SELECT a.city, a.store_name, b.store_name AS neighbour
  FROM open_stores a
  JOIN open_stores b
    ON a.city = b.city AND a.country = b.country AND a.store_id < b.store_id
