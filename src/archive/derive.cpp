#include "archive/derive.h"

#include "platform/format.h"

namespace quarl::archive
{

namespace
{

using Recipe = TableSync::Recipe;

/// Of the network's code "-" there is no row.
std::vector<Recipe> station_recipes()
{
    return {{"network",
             "",
             {"net"},
             {"netname"},
             "net in (select net from flip_quarl_network)",
             "select distinct s.net, s.netname from flip_quarl_network f"
             " cross join quarl_network s where s.net = f.net and s.wins = 1 and s.net <> '-'"},
            {"affiliation",
             "",
             {"net", "sta"},
             {},
             "sta in (select sta from scope_sta)",
             "select distinct s.net, s.sta from scope_sta k cross join quarl_station s"
             " where s.sta = k.sta and s.wins = 1 and s.net <> '-'"},
            {"site",
             "",
             {"sta", "ondate"},
             {"offdate", "lat", "lon", "elev", "staname", "statype", "refsta"},
             "sta in (select sta from scope_sta)",
             "select o.sta, o.ondate, o.offdate, o.latitude, o.longitude,"
             " o.elevation / 1000.0, substr(o.sitename, 1, 50), 'ss', o.sta"
             " from (select s.sta, s.ondate, s.offdate, s.latitude, s.longitude, s.elevation,"
             " s.sitename, row_number() over (partition by s.sta, s.ondate"
             " order by s.starttime desc, s.written desc, s.volid, s.stationid) as place"
             " from scope_sta k cross join quarl_station s where s.sta = k.sta and s.wins = 1) o"
             " where o.place = 1"}};
}

std::vector<Recipe> channel_recipes()
{
    constexpr const char *scope = "(sta, chan) in (select sta, chan from scope_chan)";
    return {{"sitechan",
             "chanid",
             {"sta", "chan", "ondate"},
             {"offdate", "ctype", "edepth", "hang", "vang", "descrip"},
             scope,
             "select o.sta, o.chan, o.ondate, o.offdate, 'n',"
             " o.depth / 1000.0, o.azimuth, o.dip + 90.0,"
             " case when o.comment <> '-' then o.comment else o.instrument end"
             " from (select s.sta, s.chan, s.ondate, s.offdate, s.depth, s.azimuth, s.dip,"
             " s.comment, s.instrument, row_number() over (partition by s.sta, s.chan, s.ondate"
             " order by s.starttime desc, s.written desc, s.volid, s.epochid) as place"
             " from scope_chan k cross join quarl_epoch s"
             " where s.sta = k.sta and s.chan = k.chan and s.wins = 1) o where o.place = 1"},
            {"sensor",
             "",
             {"sta", "chan", "time", "endtime"},
             {"inid", "chanid", "jdate", "calratio", "calper", "instant"},
             scope,
             "select o.sta, o.chan, o.starttime, o.endtime,"
             " coalesce((select i.inid from quarl_instrument i where i.digest = o.response), -1),"
             " coalesce((select c.chanid from sitechan c where c.sta = o.sta and c.chan = o.chan"
             " and c.ondate = o.ondate), -1), o.ondate, 1.0, o.calper, 'y'"
             " from (select s.sta, s.chan, s.ondate, s.starttime, s.endtime, s.response, s.calper,"
             " row_number() over (partition by s.sta, s.chan, s.starttime, s.endtime"
             " order by s.written desc, s.volid, s.epochid) as place"
             " from scope_chan k cross join quarl_epoch s"
             " where s.sta = k.sta and s.chan = k.chan and s.wins = 1) o where o.place = 1"}};
}

std::vector<Recipe> instrument_recipes()
{
    return {{"instrument",
             "",
             {"inid"},
             {"insname", "instype", "band", "digital", "samprate", "ncalib", "ncalper"},
             "inid in (select id from flip_quarl_instrument)",
             "select s.inid, s.insname, s.instype, s.band, 'd', s.samprate, s.ncalib, s.ncalper"
             " from flip_quarl_instrument f cross join quarl_instrument s where s.inid = f.id"}};
}

std::vector<Recipe> comment_recipes()
{
    return {{"remark",
             "",
             {"commid", "lineno"},
             {"remark"},
             "commid in (select id from flip_quarl_comment)",
             "select s.commid, 1, s.comment from flip_quarl_comment f"
             " cross join quarl_comment s where s.commid = f.id"}};
}

/// In this order: each takes the numbers of those before.
std::vector<Recipe> event_recipes()
{
    return {
        {"origin",
         "orid",
         {"lat", "lon", "depth", "time", "auth"},
         {"jdate", "grn", "srn"},
         "(lat, lon, depth, time, auth) in (select lat, lon, depth, time, auth from scope_origin)",
         "select s.lat, s.lon, s.depth, s.time, s.auth, s.jdate, s.grn, s.srn"
         " from scope_origin k cross join quarl_origin s where s.place = k.place and s.wins = 1"},
        {"event",
         "",
         {"evid"},
         {"prefor", "auth"},
         "evid in (select orid from scope_orid)",
         "select o.orid, o.orid, o.auth from scope_orid k cross join origin o"
         " where o.orid = k.orid"},
        {"netmag",
         "magid",
         {"orid", "magtype", "auth"},
         {"evid", "magnitude"},
         "orid in (select orid from scope_orid)",
         "select k.orid, m.magtype, m.auth, k.orid, m.magnitude from scope_orid k"
         " cross join quarl_magnitude m where m.place = k.place and m.wins = 1"
         " and exists (select 1 from origin o where o.orid = k.orid)"},
        {"arrival",
         "arid",
         {"sta", "time", "chan", "iphase", "auth"},
         {"jdate", "amp", "per", "snr"},
         "(sta, time, chan, iphase, auth) in"
         " (select sta, time, chan, iphase, auth from scope_arrival)",
         "select s.sta, s.time, s.chan, s.iphase, s.auth, s.jdate, s.amp, s.per, s.snr"
         " from scope_arrival k cross join quarl_arrival s where s.sta = k.sta"
         " and s.time = k.time and s.chan = k.chan and s.iphase = k.iphase and s.auth = k.auth"
         " and s.wins = 1"},
        {"assoc",
         "",
         {"arid", "orid"},
         {"sta", "phase"},
         "arid in (select arid from scope_arid)",
         "select k.arid, o.orid, s.sta, s.iphase from scope_arid k cross join quarl_arrival s"
         " cross join quarl_origin q cross join origin o"
         " where s.sta = k.sta and s.time = k.time and s.chan = k.chan"
         " and s.iphase = k.iphase and s.auth = k.auth and s.wins = 1"
         " and q.place = s.place and q.wins = 1 and o.lat = q.lat and o.lon = q.lon"
         " and o.depth = q.depth and o.time = q.time and o.auth = q.auth"}};
}

std::vector<Recipe> data_recipes()
{
    return {{"wfdisc",
             "wfid",
             {"dir", "dfile", "foff", "sta", "chan", "time"},
             {"jdate", "endtime", "nsamp", "samprate", "segtype", "datatype"},
             "(dir, dfile) in (select dir, dfile from scope_file)",
             ""}};
}

std::vector<TableSync> made(DatabaseWriter *database, std::vector<Recipe> recipes)
{
    std::vector<TableSync> all;
    all.reserve(recipes.size());
    for (Recipe &recipe : recipes)
        all.emplace_back(database, std::move(recipe));
    return all;
}

void run_all(std::vector<TableSync> *tables)
{
    for (TableSync &table : *tables)
        table.run();
}

constexpr const char *Scopes[][2] = {
    {"scope_sta", "sta varchar(6) primary key"},
    {"scope_chan", "sta varchar(6), chan varchar(8), primary key (sta, chan)"},
    {"scope_code", "sta varchar(6), chan varchar(8), primary key (sta, chan)"},
    {"want_format", "sta varchar(6), chan varchar(8), seedstart varchar(22), seedend varchar(22),"
                    " seedformat varchar(50),"
                    " primary key (sta, chan, seedstart, seedend, seedformat)"},
    {"scope_origin", "place varchar(32) primary key, lat double precision, lon double precision,"
                     " depth double precision, time double precision, auth varchar(15)"},
    {"scope_orid", "orid bigint primary key, place varchar(32)"},
    {"scope_arrival", "sta varchar(6), time double precision, chan varchar(8), iphase varchar(8),"
                      " auth varchar(15), primary key (sta, time, chan, iphase, auth)"},
    {"scope_arid", "arid bigint primary key, sta varchar(6), time double precision,"
                   " chan varchar(8), iphase varchar(8), auth varchar(15)"},
    {"scope_file", "dir text, dfile text, volid bigint, primary key (dir, dfile)"},
    {"scope_data", "wfid bigint primary key"},
    {"want_data", "wfid bigint primary key, chanid bigint, calib double precision,"
                  " calper double precision"}};

} // namespace

Derived::Derived(DatabaseWriter *database)
    : database_(database), dialect_(database->is_postgresql()),
      stations_(made(database, station_recipes())), channels_(made(database, channel_recipes())),
      instruments_(made(database, instrument_recipes())),
      comments_(made(database, comment_recipes())), events_(made(database, event_recipes())),
      data_(made(database, data_recipes()))
{
    const Table &wfdisc = css_table("wfdisc");
    std::vector<Column> columns;
    for (const char *name : {"dir", "dfile", "foff", "sta", "chan", "time", "jdate", "endtime",
                             "nsamp", "samprate", "segtype", "datatype"})
        columns.push_back(wfdisc.column(name));
    insert_data_ = dialect_.insert_rows("want_wfdisc", columns);
    insert_files_ = dialect_.insert_rows(
        "scope_file",
        {wfdisc.column("dir"), wfdisc.column("dfile"), {"volid", Column::Kind::whole, 0, ""}});
    for (const auto &scope : Scopes)
        database_->run(std::string("create temporary table ") + scope[0] + " (" + scope[1] + ")");
}

void Derived::set_data(const std::string &files, const std::string &rows)
{
    has_data_ = true;
    database_->run(insert_files_, files);
    database_->run(insert_data_, rows);
}

void Derived::derive_data()
{
    database_->run("delete from quarl_row where volid in (select volid from scope_file)"
                   " and tablename = 'wfdisc'");
    run_all(&data_);
    database_->run("insert into quarl_row (volid, tablename, id) select k.volid, 'wfdisc', d.wfid"
                   " from scope_file k cross join wfdisc d"
                   " where d.dir = k.dir and d.dfile = k.dfile");
}

void Derived::derive_stations()
{
    database_->run("insert into scope_sta (sta) select distinct sta from flip_quarl_station");
    run_all(&stations_);
    database_->run(dialect_.clear("scope_sta"));
}

void Derived::derive_channels()
{
    database_->run("insert into scope_chan (sta, chan)"
                   " select distinct sta, chan from flip_quarl_epoch");
    run_all(&channels_);
    derive_formats();
}

/// Rows of `seedformat` that somebody else has put there stay, also where ours would be the same.
void Derived::derive_formats()
{
    const std::vector<std::string> all = {"sta", "chan", "seedstart", "seedend", "seedformat"};
    const std::string exists_in = " exists (select 1 from ";
    const auto is_in = [&](const char *table, const char *of) {
        return exists_in + table + " x where " + matched(all, "x", of) + ")";
    };
    database_->run("insert into scope_code (sta, chan)"
                   " select distinct sta, code from flip_quarl_epoch");
    database_->run("insert into want_format (" + listed(all) +
                   ") select distinct s.sta, s.code, s.seedstart, s.seedend, s.format"
                   " from scope_chan k cross join quarl_epoch s"
                   " where s.sta = k.sta and s.chan = k.chan and s.wins = 1 and s.format <> '-'");
    // Other locations of these channels may have the same rows.
    database_->run("insert into want_format (" + listed(all) +
                   ") select distinct s.sta, s.code, s.seedstart, s.seedend, s.format"
                   " from (select distinct sta from scope_code) k cross join quarl_epoch s"
                   " where s.sta = k.sta and s.wins = 1 and s.format <> '-'"
                   " and exists (select 1 from scope_code c where c.sta = s.sta"
                   " and c.chan = s.code) and not exists (select 1 from want_format x"
                   " where x.sta = s.sta and x.chan = s.code and x.seedstart = s.seedstart"
                   " and x.seedend = s.seedend and x.seedformat = s.format)");
    const std::string scope = "(sta, chan) in (select sta, chan from scope_code)";
    database_->run("delete from seedformat where " + scope + " and" +
                   is_in("quarl_seedformat", "seedformat") + " and not" +
                   is_in("want_format", "seedformat"));
    database_->run("delete from quarl_seedformat where " + scope + " and not" +
                   is_in("want_format", "quarl_seedformat"));
    database_->run("insert into quarl_seedformat (" + listed(all) + ") select " +
                   listed(all, "w.") + " from want_format w where not" + is_in("seedformat", "w") +
                   " and not" + is_in("quarl_seedformat", "w"));
    database_->run("insert into seedformat (" + listed(all) + ") select " + listed(all, "w.") +
                   " from want_format w where" + is_in("quarl_seedformat", "w") + " and not" +
                   is_in("seedformat", "w"));
    for (const char *table : {"scope_code", "want_format"})
        database_->run(dialect_.clear(table));
}

void Derived::derive_events()
{
    database_->run("insert into scope_origin (place, lat, lon, depth, time, auth)"
                   " select distinct place, lat, lon, depth, time, auth from flip_quarl_origin");
    database_->run("insert into scope_origin (place, lat, lon, depth, time, auth)"
                   " select distinct q.place, q.lat, q.lon, q.depth, q.time, q.auth"
                   " from (select place from flip_quarl_magnitude"
                   " union select place from flip_quarl_arrival) f cross join quarl_origin q"
                   " where q.place = f.place and q.wins = 1 and not exists"
                   " (select 1 from scope_origin k where k.place = f.place)");
    const auto take_numbers = [this] {
        database_->run("insert into scope_orid (orid, place) select o.orid, k.place"
                       " from scope_origin k cross join origin o where o.lat = k.lat"
                       " and o.lon = k.lon and o.depth = k.depth and o.time = k.time"
                       " and o.auth = k.auth and not exists"
                       " (select 1 from scope_orid s where s.orid = o.orid)");
    };
    take_numbers(); // of those that go, too
    events_[0].run();
    take_numbers();
    events_[1].run();
    database_->run("update lastid set keyvalue = (select keyvalue from lastid"
                   " where keyname = 'orid') where keyname = 'evid'");
    events_[2].run();
    database_->run("update origin set evid = orid where orid in (select orid from scope_orid)");
    for (const char *type : {"mb", "ms", "ml"}) {
        const std::string of =
            formatted<" from netmag m where m.orid = origin.orid and lower(m.magtype) = '%s'"
                      " order by m.magid limit 1)">(type);
        database_->run(
            formatted<"update origin set %s = coalesce((select m.magnitude%s, -999.0),"
                      " %sid = coalesce((select m.magid%s, -1)"
                      " where orid in (select orid from scope_orid)">(type, of, type, of));
    }
    database_->run("insert into scope_arrival (sta, time, chan, iphase, auth)"
                   " select distinct sta, time, chan, iphase, auth from (select sta, time, chan,"
                   " iphase, auth from flip_quarl_arrival union select s.sta, s.time, s.chan,"
                   " s.iphase, s.auth from flip_quarl_origin f cross join quarl_arrival s"
                   " where s.place = f.place) a");
    const auto take_arrivals = [this] {
        database_->run("insert into scope_arid (arid, sta, time, chan, iphase, auth)"
                       " select a.arid, a.sta, a.time, a.chan, a.iphase, a.auth"
                       " from scope_arrival k cross join arrival a where a.sta = k.sta"
                       " and a.time = k.time and a.chan = k.chan and a.iphase = k.iphase"
                       " and a.auth = k.auth and not exists"
                       " (select 1 from scope_arid s where s.arid = a.arid)");
    };
    take_arrivals();
    events_[3].run();
    take_arrivals();
    events_[4].run();
    for (const char *table : {"scope_origin", "scope_orid", "scope_arrival", "scope_arid"})
        database_->run(dialect_.clear(table));
}

/// Data point to the channel that describes them, whichever volume came first.
void Derived::describe_data()
{
    database_->run("insert into scope_data (wfid) select d.wfid from scope_chan k"
                   " cross join wfdisc d where d.sta = k.sta and d.chan = k.chan");
    if (has_data_)
        database_->run("insert into scope_data (wfid) select d.wfid from scope_file k"
                       " cross join wfdisc d where d.dir = k.dir and d.dfile = k.dfile"
                       " and not exists (select 1 from scope_data s where s.wfid = d.wfid)");
    database_->run(
        "insert into want_data (wfid, chanid, calib, calper) select o.wfid,"
        " coalesce((select c.chanid from sitechan c where c.sta = o.sta and c.chan = o.chan"
        " and c.ondate = o.ondate), -1), coalesce(o.calib, 1.0), coalesce(o.calper, -1.0)"
        " from (select d.wfid, d.sta, d.chan, s.ondate, s.calib, s.calper,"
        " row_number() over (partition by d.wfid order by s.starttime desc, s.written desc,"
        " s.volid, s.epochid) as place from scope_data k cross join wfdisc d left join quarl_epoch "
        "s"
        " on s.sta = d.sta and s.chan = d.chan and s.wins = 1 and s.starttime <= d.time"
        " and s.endtime > d.time where d.wfid = k.wfid) o where o.place = 1");
    database_->run("update wfdisc set (chanid, calib, calper) = (select w.chanid, w.calib,"
                   " w.calper from want_data w where w.wfid = wfdisc.wfid)"
                   " where wfid in (select w.wfid from want_data w)");
    for (const char *table : {"scope_data", "want_data"})
        database_->run(dialect_.clear(table));
}

void Derived::run(const std::vector<std::unique_ptr<SourceMerge>> &sources)
{
    const auto flipped = [&](Statement statement) {
        return sources[static_cast<std::size_t>(statement)]->has_flipped();
    };
    if (flipped(Statement::network) || flipped(Statement::station))
        derive_stations();
    if (flipped(Statement::instrument))
        run_all(&instruments_);
    if (flipped(Statement::comment))
        run_all(&comments_);
    if (flipped(Statement::epoch))
        derive_channels();
    if (flipped(Statement::origin) || flipped(Statement::magnitude) || flipped(Statement::arrival))
        derive_events();
    if (has_data_)
        derive_data();
    if (has_data_ || flipped(Statement::epoch))
        describe_data();
    for (const char *table : {"scope_chan", "scope_file"})
        database_->run(dialect_.clear(table));
    has_data_ = false;
}

} // namespace quarl::archive
