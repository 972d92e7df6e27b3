-- Which promotions ran, also those that sold nothing?
SELECT p.campaign, p.promotion_name, s.sale_id, s.amount
  FROM sales s
 RIGHT JOIN promotion p ON p.promotion_id = s.promotion_id AND s.discount > 0
 WHERE p.first_day >= DATE '2024-01-01'
   AND (p.last_day IS NULL OR p.last_day <= DATE '2024-12-31')
