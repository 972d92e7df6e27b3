-- The same month of two years side by side for each category, also where one of the years has nothing.
SELECT category, month_of_year, this_year.amount, last_year.amount AS amount_before
  FROM (SELECT pc.category_name AS category, m.month_of_year, f.amount
          FROM sales_month_category f
          JOIN calendar_month m ON m.month_id = f.month_id AND m.year_id = 2024
          JOIN product_category pc ON pc.category_id = f.category_id) this_year
  FULL JOIN (SELECT pc.category_name AS category, m.month_of_year, f.amount
               FROM sales_month_category f
               JOIN calendar_month m ON m.month_id = f.month_id AND m.year_id = 2023
               JOIN product_category pc ON pc.category_id = f.category_id) last_year
 USING (category, month_of_year)
 ORDER BY category, month_of_year
