#pragma once

#include <string>

#include "rq/run/SqliteDatabase.h"

/// An aligned table with a line under the names and the number of rows below: numbers on the right, all else on the
/// left. Null is NULL; characters that would move the cursor are shown as U+FFFD.
std::string RowsTable(const SqliteRows& rows);

/// Comma-separated values as RFC 4180 has them, with a line of names. Null is an empty field, and an empty text one in
/// quotes.
std::string RowsCsv(const SqliteRows& rows);

/// An array of objects, one a line. Of columns of one name the later ones get a number: a, a_2, a_3.
std::string RowsJson(const SqliteRows& rows);

/// The value as text: a real with a point or an exponent, by which it reads as one, and null as the empty text.
std::string ValueText(const SqliteValue& value);
