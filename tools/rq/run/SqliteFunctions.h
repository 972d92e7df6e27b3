#pragma once

struct sqlite3;

/// Gives a connection the functions that SQLite lacks; see SqliteDatabase. Gives the result code of SQLite.
int AddSqliteFunctions(sqlite3* pDatabase);
