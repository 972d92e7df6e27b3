-- Who joined within ninety days, and how old is the membership?
WITH joined AS (
  SELECT customer_id, customer_name, member_since
    FROM customer
   WHERE member_since >= TIMESTAMPADD(SQL_TSI_DAY, -90, CURRENT_TIMESTAMP)
)
SELECT customer_name,
       EXTRACT(YEAR FROM member_since) AS year_joined,
       TIMESTAMPDIFF(SQL_TSI_DAY, member_since, CURRENT_TIMESTAMP) AS days
  FROM joined
