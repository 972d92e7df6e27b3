#pragma once

#include "Host/RpObjects.h"
#include "HostMemory/MemoryGateway.h"

/// The database that a SqliteDatabase is to the writer of SQL: the preset for SQLite, with the functions that the
/// connection has beyond it. The gateway gets it.
RefADatabase MakeRunDatabase(MemoryGateway& gateway);
