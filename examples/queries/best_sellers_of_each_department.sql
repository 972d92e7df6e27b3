-- The three best sellers of each department, with ties, and the place that they have by pieces.
SELECT ranked.department, ranked.place, ranked.product_name, ranked.turnover, ranked.place_by_pieces
  FROM (SELECT p.department,
               p.product_name,
               SUM(s.amount) AS turnover,
               RANK() OVER (PARTITION BY p.department ORDER BY SUM(s.amount) DESC) AS place,
               DENSE_RANK() OVER (PARTITION BY p.department ORDER BY SUM(s.quantity) DESC) AS place_by_pieces
          FROM product p
          JOIN sales s ON s.product_id = p.product_id
         GROUP BY p.department, p.product_id, p.product_name) ranked
 WHERE ranked.place <= 3
 ORDER BY ranked.department, ranked.place, ranked.product_name
