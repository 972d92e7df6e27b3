-- Do the archive and the sales agree? Lines that only one of them has show up with nulls.
SELECT sale_id, line_no, s.amount AS amount_now, o.amount AS amount_then
  FROM sales s
  FULL JOIN archive.old_sales o USING (sale_id, line_no)
 WHERE s.amount <> o.amount
    OR s.amount IS NULL
    OR o.amount IS NULL
