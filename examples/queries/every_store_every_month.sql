-- A frame for a report: each store with each month of a year, whether anything was sold or not.
SELECT m.month_name, s.store_name
  FROM store s
 CROSS JOIN calendar_month m
 WHERE m.year_id = 2024
   AND s.opened <= CURRENT_DATE
 ORDER BY m.month_id, s.region, s.store_name
