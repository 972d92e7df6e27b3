-- With what did each customer begin, and in which quarter of our customers by turnover is he?
SELECT firsts.customer_name, firsts.calendar_date, firsts.product_name, worth.quarter
  FROM (SELECT cu.customer_id,
               cu.customer_name,
               c.calendar_date,
               p.product_name,
               ROW_NUMBER() OVER (PARTITION BY s.customer_id ORDER BY c.calendar_date, s.sale_id, s.line_no) AS line
          FROM sales s
          JOIN customer cu ON cu.customer_id = s.customer_id
          JOIN calendar c ON c.date_id = s.date_id
          JOIN product p ON p.product_id = s.product_id) firsts
  JOIN (SELECT customer_id, NTILE(4) OVER (ORDER BY SUM(amount)) AS quarter
          FROM sales
         GROUP BY customer_id) worth
    ON worth.customer_id = firsts.customer_id
 WHERE firsts.line = 1
 ORDER BY worth.quarter DESC, firsts.customer_name
