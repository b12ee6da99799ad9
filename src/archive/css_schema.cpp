// What is made of the tables: statements of SQL, and the tables themselves.
#include "archive/css_schema.h"

#include <algorithm>
#include <array>

namespace quarl::archive
{

namespace
{

constexpr std::string_view Layout = "1"; ///< of the tables; another one for each change of theirs

std::string definition(const Column &column)
{
    std::string text = column.name + " " + type_of(column) + " not null";
    if (column.kind == Column::Kind::loading_time)
        return text + " default current_timestamp";
    return text + " default " + (column.is_text() ? "'" + column.missing + "'" : column.missing);
}

std::string definitions(const std::vector<Column> &columns)
{
    std::string all;
    for (const Column &column : columns)
        all += (all.empty() ? "" : ", ") + (column.missing.empty() && !column.is_text() &&
                                                    column.kind != Column::Kind::loading_time
                                                ? column.name + " " + type_of(column) + " not null"
                                                : definition(column));
    return all;
}

std::string make_table(const Table &table)
{
    std::string text = "create table " + table.name + " (" + definitions(table.columns);
    if (!table.key.empty())
        text += ", primary key (" + listed(table.key) + ")";
    if (!table.unique.empty())
        text += ", unique (" + listed(table.unique) + ")";
    return text + ")";
}

/// What every source has in front of its own columns.
constexpr std::string_view Source_Head =
    " bigint primary key, digest varchar(32) not null unique, written double precision not null, "
    "volid bigint not null, wins bigint not null, ";

std::string make_source(const Source &source)
{
    return "create table " + source.name + " (" + source.id + std::string(Source_Head) +
           definitions(source.columns) + ")";
}

constexpr std::array Others = {
    "create index quarl_row_id on quarl_row (tablename, id)",
    "create index quarl_volume_sum on quarl_volume (sha256)",
    "create index quarl_finding_other on quarl_finding (othervolid)",
    "create index quarl_station_code on quarl_station (sta)",
    "create index quarl_epoch_chan on quarl_epoch (sta, chan)",
    "create index quarl_affiliation_sta on affiliation (sta)",
    "create index quarl_wfdisc_chan on wfdisc (sta, chan, time)",
    "create index quarl_wfdisc_file on wfdisc (dir, dfile, foff)",
    "create index quarl_sensor_chanid on sensor (chanid)",
    "create index quarl_netmag_orid on netmag (orid)",
    "create index quarl_assoc_orid on assoc (orid)",
    "create view quarl_channel as select e.net as network, e.sta as station, e.loc as location,"
    " e.code as channel, e.subchannel, e.starttime, e.endtime, e.rate, e.sensitivity,"
    " e.frequency, e.units, e.latitude, e.longitude, e.elevation, e.depth, e.azimuth, e.dip,"
    " e.instrument, e.format, coalesce(c.chanid, -1) as chanid, e.epochid"
    " from quarl_epoch e left join sitechan c"
    " on c.sta = e.sta and c.chan = e.chan and c.ondate = e.ondate where e.wins = 1"};

/// The tables of these names that are there, as the database finds them.
std::vector<std::string> found(DatabaseWriter *database, const std::vector<std::string> &names)
{
    std::vector<std::string> there;
    for (const std::string &name : names) {
        const std::string query =
            database->is_postgresql()
                ? "select 1 where to_regclass('" + name + "') is not null"
                : "select 1 from sqlite_master where lower(name) = '" + name + "'";
        if (database->ask(query, 1).count() > 0)
            there.push_back(name);
    }
    return there;
}

std::vector<std::string> all_names()
{
    std::vector<std::string> names = {"quarl_channel"};
    for (const Table &table : css_tables())
        names.push_back(table.name);
    for (const Table &table : our_tables())
        if (table.name != "seedformat") // may have been filled by hand
            names.push_back(table.name);
    for (const Source &each : sources())
        names.push_back(each.name);
    return names;
}

/// Whether `seedformat`, which may be somebody else's, may get an index.
bool may_index_formats(DatabaseWriter *database)
{
    return !database->is_postgresql() ||
           database->ask("select 1 from pg_class where oid = to_regclass('seedformat')"
                         " and relkind = 'r' and pg_has_role(relowner, 'usage')",
                         1)
                   .count() > 0;
}

void make_tables(DatabaseWriter *database)
{
    for (const Table &table : css_tables())
        database->run(make_table(table));
    for (const Table &table : our_tables())
        if (table.name != "seedformat" || found(database, {"seedformat"}).empty())
            database->run(make_table(table));
    for (const Source &each : sources()) {
        database->run(make_source(each));
        if (each.contradicts)
            database->run("create index " + each.name + "_key on " + each.name + " (" +
                          listed(each.key) + ")");
    }
    for (const char *other : Others)
        database->run(other);
    if (may_index_formats(database))
        database->run("create index quarl_seedformat_chan on seedformat (sta, chan)");
    std::vector<std::string> numbers = {"volid", "chanid", "wfid", "evid", "orid", "arid", "magid"};
    for (const Source &each : sources())
        numbers.push_back(each.id);
    for (const std::string &number : numbers)
        database->run("insert into lastid (keyname, keyvalue) values ('" + number + "', 0)");
    database->run("insert into quarl_layout (version) values (" + std::string(Layout) + ")");
}

void check_layout(DatabaseWriter *database)
{
    const TextRows layout = database->ask("select version from quarl_layout", 1);
    const std::string version(layout.count() > 0 ? layout.field(0, 0) : "none");
    if (version != Layout)
        throw DatabaseError("its tables are of layout " + version + ", this program knows " +
                            std::string(Layout));
}

} // namespace

std::string type_of(const Column &column)
{
    switch (column.kind) {
    case Column::Kind::text:
        return "varchar(" + std::to_string(column.width) + ")";
    case Column::Kind::any_text:
        return "text";
    case Column::Kind::whole:
        return "bigint";
    case Column::Kind::real:
        return "double precision";
    case Column::Kind::loading_time:
        break;
    }
    return "timestamp";
}

std::vector<std::string> names_of(const std::vector<Column> &columns)
{
    std::vector<std::string> names;
    names.reserve(columns.size());
    for (const Column &column : columns)
        names.push_back(column.name);
    return names;
}

std::string listed(const std::vector<std::string> &names, std::string_view prefix)
{
    std::string all;
    for (const std::string &name : names)
        all.append(all.empty() ? "" : ", ").append(prefix).append(name);
    return all;
}

std::string matched(const std::vector<std::string> &names, std::string_view left,
                    std::string_view right)
{
    std::string all;
    for (const std::string &name : names)
        all.append(all.empty() ? "" : " and ")
            .append(left)
            .append(".")
            .append(name)
            .append(" = ")
            .append(right)
            .append(".")
            .append(name);
    return all;
}

void prepare_tables(DatabaseWriter *database, bool may_make)
{
    // Programs that begin at the same time make the tables once.
    database->begin();
    lock_archive(database);
    const std::vector<std::string> there = found(database, all_names());
    const auto has = [&](const char *name) {
        return std::find(there.begin(), there.end(), name) != there.end();
    };
    if (has("quarl_volume") && has("quarl_layout"))
        check_layout(database);
    else if (!there.empty())
        throw DatabaseError("it has a table '" + there.front() +
                            "' of somebody else's, and none that this program made");
    else if (!may_make)
        throw DatabaseError("it holds no archive");
    else
        make_tables(database);
    database->commit();
}

void lock_archive(DatabaseWriter *database)
{
    if (database->is_postgresql())
        database->run("select pg_advisory_xact_lock(hashtext('quarl'), "
                      "hashtext(coalesce(current_schema(), '')))");
}

} // namespace quarl::archive
