-- Which customers spent more than a tenth of their credit in a single line?
SELECT big.customer_name, big.share
  FROM (SELECT cu.customer_name, s.amount / cu.credit_limit AS share
          FROM sales s
          JOIN customer cu ON cu.customer_id = s.customer_id
         WHERE cu.credit_limit > 0) big
 WHERE big.share > 0.1
 ORDER BY big.share DESC
 LIMIT 20 OFFSET 40
