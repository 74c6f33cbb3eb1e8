// SQLite's interface, as a program has it that is linked with the library, and as an extension has
// it that is loaded into one: there every call goes through a table that the program hands over.
// The sources are compiled for both; SQLITE_CORE selects the first.

#ifndef SQL_SQLITE_H
#define SQL_SQLITE_H

#include <sqlite3ext.h>

#ifndef SQLITE_CORE
SQLITE_EXTENSION_INIT3
#endif

#endif
