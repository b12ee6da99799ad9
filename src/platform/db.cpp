#include "platform/db.h"

#include "platform/allocate.h"
#include "platform/db_session.h"
#include "platform/db_sqlite.h"
#include "platform/db_url.h"
#include "platform/elog.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace quarl
{

namespace
{

constexpr std::string_view Table_Name = "seedformat";
constexpr std::array<std::string_view, 5> Columns = {"sta", "chan", "seedstart", "seedend",
                                                     "seedformat"};
/// The table stands before each column: without it, PostgreSQL takes a missing column `seedformat`
/// for the whole row.
constexpr std::string_view Select =
    "select t.sta, t.chan, t.seedstart, t.seedend, t.seedformat from seedformat t";

/// What a server has for each answer, in seconds: a table may be large, and the way to it long.
std::chrono::seconds patience()
{
    constexpr int Usual = 60;
    const char *wish = std::getenv("QUARL_DBTIMEOUT");
    std::size_t used = 0;
    const int seconds = wish ? leading_int(wish, &used) : 0;
    return std::chrono::seconds(seconds > 0 ? seconds : Usual);
}

Session open_postgresql(const std::string &name)
{
    const DatabaseUrl url(name);
    if (!url.is_clear()) {
        elog_set_reason("it is not clear what the password is: write '/' as %2F and '@' as %40 in"
                        " it, and a port as a number");
        return {};
    }
    setenv("PGCONNECT_TIMEOUT", "10", 0);
    Session session = open_session("postgresql", url.connection(), patience());
    prepare_session(&session,
                    {"set session characteristics as transaction read only",
                     "set synchronize_seqscans = off", "set max_parallel_workers_per_gather = 0",
                     "set lock_timeout = '10s'"});
    return session;
}

/// What differs between the kinds of databases.
struct Backend {
    Session (*open)(const std::string &source);
    bool stays_open;        ///< an open SQLite file would keep others from tidying up
    std::string_view order; ///< makes the select show the rows in the table's own order
};

/// SQLite reads a table in its own order unless an index holds all that is asked for.
constexpr Backend Sqlite = {open_sqlite, false, " not indexed"};
constexpr Backend Postgresql = {open_postgresql, true, " order by t.tableoid, t.ctid"};

} // namespace

struct Databases::Database {
    Backend backend;
    std::string source; ///< a path, or the URL of a server
    Session session;    ///< where it stays open
    TextRows rows{Columns.size()};
    bool refused = false; ///< the table could not be read
};

Databases::Databases() = default;
Databases::~Databases() = default;

void Databases::close() { all.clear(); }

namespace
{

using Database = Databases::Database;

Database database_of(std::string_view name)
{
    constexpr std::string_view file_scheme = "sqlite://";
    if (name.starts_with("postgresql://") || name.starts_with("postgres://"))
        return {Postgresql, std::string(name), {}};
    if (name.starts_with(file_scheme))
        name.remove_prefix(file_scheme.size());
    return {Sqlite, std::string(name), {}};
}

Database *opened(Dbptr db)
{
    std::vector<Database> &all = Current<Databases>::get().all;
    const bool known = db.database >= 0 && static_cast<std::size_t>(db.database) < all.size();
    return known ? &all[db.database] : nullptr;
}

/// Reads all rows of the table; the answer is what went wrong, empty when nothing.
std::string select_rows(const Backend &backend, Session *session, TextRows *rows)
{
    const std::string select(Select);
    std::string error = run_query(session, select + std::string(backend.order), rows);
    // The rows of a view have no place.
    if (error.find("t.tableoid") != std::string::npos)
        error = run_query(session, select, rows);
    return error;
}

/// Reads all rows of the table, again when others changed the database meanwhile; false with the
/// reason left for elog.
bool read_rows(Database *database)
{
    for (int tries = 0; tries < 10; ++tries) {
        Session opened_now;
        if (!database->session)
            opened_now = database->backend.open(database->source);
        Session &session = database->session ? database->session : opened_now;
        if (!session)
            return false;
        const std::string error = select_rows(database->backend, &session, &database->rows);
        const auto &undisturbed = session.get_deleter().undisturbed;
        if (undisturbed && !undisturbed())
            continue;
        elog_set_reason(error);
        return error.empty();
    }
    elog_set_reason("database is locked");
    return false;
}

/// Takes what may not be shown out of the reason that is left for elog.
void mend_reason(const Database &database)
{
    const int error = errno;
    elog_set_reason(DatabaseUrl(database.source).without_secrets(elog_take_reason()));
    errno = error;
}

/// Reads the table; what goes wrong is complained about and not tried again.
void read_table(Database *database)
{
    before_wait(); // a server may take its time
    if (read_rows(database))
        return;
    database->rows.clear();
    database->refused = true;
    mend_reason(*database);
    elog_complain<MessageKind::database_not_read, "Can't read database table '%s'\n">(1,
                                                                                      Table_Name);
}

} // namespace

std::string shown_database(const char *name) { return DatabaseUrl(name).shown(); }

Dbptr dbinvalid() { return {dbINVALID, dbINVALID, dbINVALID, dbINVALID}; }

int VXdbopen(const char *name, const char * /*mode*/, Dbptr *db)
{
    *db = dbinvalid();
    Database database = database_of(name);
    Session session = database.backend.open(database.source);
    if (!session) {
        mend_reason(database);
        return -1;
    }
    if (database.backend.stays_open)
        database.session = std::move(session);
    std::vector<Database> &all = Current<Databases>::get().all;
    all.push_back(std::move(database));
    *db = {static_cast<int>(all.size()) - 1, dbALL, dbALL, dbALL};
    return 0;
}

Dbptr dblookup(Dbptr db, const char *table)
{
    Database *database = opened(db);
    if (database == nullptr || table != Table_Name)
        return dbinvalid();
    try {
        if (database->rows.count() == 0 && !database->refused)
            read_table(database);
    } catch (const std::bad_alloc &) {
        out_of_memory(Where(), database->rows.count(), "database rows");
    }
    return {db.database, 0, dbALL, dbALL};
}

int dbquery(Dbptr db, int code, int *result)
{
    const Database *database = opened(db);
    if (database == nullptr || code != dbRECORD_COUNT)
        return -1;
    *result = static_cast<int>(std::min<std::size_t>(database->rows.count(), INT_MAX));
    return 0;
}

int dbgetv(Dbptr db, std::initializer_list<DbField> fields)
{
    const Database *database = opened(db);
    if (database == nullptr || db.record < 0 ||
        static_cast<std::size_t>(db.record) >= database->rows.count())
        return -1;
    const auto column = [](const DbField &field) { return std::ranges::find(Columns, field.name); };
    for (const DbField &field : fields)
        if (column(field) == Columns.end() || field.into.empty())
            return -1;
    for (const DbField &field : fields) {
        const std::string_view text =
            database->rows.field(db.record, column(field) - Columns.begin());
        const std::size_t length = text.copy(field.into.data(), field.into.size() - 1);
        field.into[length] = '\0';
    }
    return 0;
}

} // namespace quarl
