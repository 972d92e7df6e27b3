-- Which sales have not been shipped, or were shipped in another month than they were made?
SELECT s.sale_id, s.line_no, made.calendar_date AS sold, shipped.calendar_date AS shipped
  FROM sales s
  JOIN calendar made ON made.date_id = s.date_id
  LEFT JOIN ship_calendar shipped ON shipped.date_id = s.ship_date_id
 WHERE shipped.date_id IS NULL
    OR shipped.month_id <> made.month_id
 ORDER BY sold, s.sale_id, s.line_no
