-- A list for a letter: who lives where, with names as the letter has them.
SELECT letter.name, letter.place
  FROM (SELECT customer_name, city || ', ' || country FROM customer) AS letter (name, place)
 WHERE CHAR_LENGTH(letter.name) > 1
 ORDER BY letter.place, letter.name
