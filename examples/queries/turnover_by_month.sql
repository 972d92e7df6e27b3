-- What did we turn over this year, by month and department? Over the business model.
SELECT "Times"."YearKey", "Times"."MonthName", "Products"."Department", "Turnover"."Amount", "Turnover"."MarginPercent"
  FROM "Turnover", "Times", "Products"
 WHERE "Times"."IsThisYear" = 1
   AND "Products"."Brand" IS NOT NULL
 ORDER BY "Times"."MonthName", "Turnover"."Amount" DESC
