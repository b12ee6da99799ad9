// Read-only access to a CSS 3.0 database.
#pragma once

#include "platform/current.h"

#include <initializer_list>
#include <span>
#include <string>
#include <vector>

namespace quarl
{

/// Names a database, a table of it and one row (`record`) of the table. Plain numbers; the tables
/// live in the current `Databases`.
struct Dbptr {
    int database;
    int table;
    int field;
    int record;
};

inline constexpr int dbINVALID = -102;      ///< every member of a pointer to nothing
inline constexpr int dbALL = -501;          ///< "no particular row"
inline constexpr int dbRECORD_COUNT = -305; ///< code of dbquery: number of rows

/// The databases that a run has open, by `Dbptr::database`.
struct Databases {
    Databases();
    Databases(const Databases &) = delete;
    Databases &operator=(const Databases &) = delete;
    ~Databases();

    /// Ends all sessions; pointers into them are pointers to nothing.
    void close();

    struct Database;
    std::vector<Database> all;
};

/// The pointer to nothing: no database is open.
Dbptr dbinvalid();

/// Opens the database `name` for reading whatever `mode` says: the path of an SQLite file, the same
/// behind "sqlite://" (the path is taken as it stands), or "postgresql://..." or "postgres://..."
/// in any form that libpq takes. The file is not changed and nothing appears beside it. 0 on
/// success; otherwise -1 with the reason, which holds no password, left for elog (errno or
/// elog_set_reason).
[[nodiscard]] int VXdbopen(const char *name, const char *mode, Dbptr *db);

/// The name of a database as messages may show it: with "***" for the password of a URL.
std::string shown_database(const char *name);

/// The view of `table` in an open database (a pointer to nothing for any table but "seedformat"):
/// all its rows are read at once, in the table's own order. A table that cannot be read is
/// complained about, once, with the database's words, and is empty. An empty table is asked again
/// at the next call; one that could not be read is not.
Dbptr dblookup(Dbptr db, const char *table);

/// Stores the number of rows of the view `db` for dbRECORD_COUNT; 0 on success.
int dbquery(Dbptr db, int code, int *result);

/// One field of a row and where its text goes: at most into.size() - 1 characters and a terminator.
struct DbField {
    const char *name;
    std::span<char> into;
};

/// Reads fields of row `db.record` as text: NULL is empty, trailing blanks are dropped, over-long
/// text is cut. 0 on success, -1 (nothing written) for a row or field that does not exist.
int dbgetv(Dbptr db, std::initializer_list<DbField> fields);

} // namespace quarl
