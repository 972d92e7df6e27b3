#pragma once

#include <string>

#include "rq/run/SqliteDatabase.h"

// The sample of the built-in model, as a file of SQLite that is made at first use.

/// The file: $XDG_CACHE_HOME/rq/ or ~/.cache/rq/, and a name with a hash of what the sample is made of, so that another
/// version makes another file. Makes it if it is not there; whoever makes it at the same time makes the same, and
/// either file takes the place as a whole. Raises SqliteError and std::runtime_error.
std::string GetSampleFile();

/// A connection to that file, which only reads. Tables and their aliases go by their names, tables also with their
/// schema in front, so that a query runs there as one writes it.
SqliteDatabase OpenSample();
