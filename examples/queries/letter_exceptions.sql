-- Which customers should the letter leave out?
SELECT customer_id
  FROM customer
 WHERE (email NOT LIKE '%@%' OR email IS NULL)
    OR (gender IN ('f', 'm') AND segment NOT IN ('Home', 'Office'))
    OR NOT (credit_limit BETWEEN 100 AND 1000 OR credit_limit >= 1e6)
    OR birth_date <> DATE '1970-01-01' AND birth_date <= DATE '2006-12-31'
    OR member_since > TIMESTAMP '2024-02-29 12:30:00'
    OR MOD(customer_id, 7) = 3
    OR -customer_id + 2 * 3 > 4 - 1 / 2
