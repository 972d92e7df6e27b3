-- What was sold in the user's own region, at no more than the discount that the session allows?
SELECT s.sale_id, st.store_name, s.discount
  FROM sales s
  JOIN store st ON st.store_id = s.store_id
 WHERE st.region = VALUEOF("KX_SESSION"."REGION")
   AND s.discount <= VALUEOF("KX_SESSION"."MAX_DISCOUNT")
   AND st.country = $1
   AND s.quantity BETWEEN $2 AND $3
