-- Which customers, staff apart, bought both this year and last year, and how often?
SELECT s.customer_id FROM sales s JOIN calendar c ON c.date_id = s.date_id WHERE c.year_id = 2024
INTERSECT ALL
SELECT s.customer_id FROM sales s JOIN calendar c ON c.date_id = s.date_id WHERE c.year_id = 2023
EXCEPT ALL
SELECT customer_id FROM customer WHERE segment = 'Staff'
