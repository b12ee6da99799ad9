// The tables as they are written down: names, widths, what stands for "not given".
#include "archive/css_schema.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace quarl::archive
{

namespace
{

/// "net, sta"
std::vector<std::string> read_names(std::string_view text)
{
    std::vector<std::string> names;
    while (!trimmed(text).empty()) {
        const std::size_t comma = std::min(text.find(','), text.size());
        names.emplace_back(trimmed(text.substr(0, comma)));
        text.remove_prefix(std::min(comma + 1, text.size()));
    }
    return names;
}

/// "sta c6 -": c a text of this width, p a text of any, i a whole and f a real number, t the time
/// of loading.
Column read_column(std::string_view text)
{
    Column column;
    const std::size_t name = text.find(' ');
    column.name = text.substr(0, name);
    text.remove_prefix(name + 1);
    const std::size_t kind = std::min(text.find(' '), text.size());
    constexpr std::string_view Letters = "cpift";
    column.kind = static_cast<Column::Kind>(Letters.find(text[0]));
    column.width = to_int(text.substr(1, kind - 1));
    column.missing = text.substr(std::min(kind + 1, text.size()));
    return column;
}

std::vector<Column> read_columns(std::string_view text)
{
    std::vector<Column> columns;
    while (!trimmed(text).empty()) {
        const std::size_t end = std::min(text.find(';'), text.size());
        columns.push_back(read_column(trimmed(text.substr(0, end))));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return columns;
}

struct WrittenTable {
    const char *name;
    const char *key;
    const char *unique;
    const char *columns;
};

/// Facts of CSS 3.0, whose numbers behind "f" are the formats of its text files.
constexpr std::array<WrittenTable, 14> Css = {
    {{"network", "net", "",
      "net c8 -; netname c80 -; nettype c4 -; auth c15 -; commid i8 -1; lddate t"},
     {"affiliation", "net, sta", "", "net c8 -; sta c6 -; lddate t"},
     {"site", "sta, ondate", "",
      "sta c6 -; ondate i8 -1; offdate i8 2286324; lat f9.4 -999.0; lon f9.4 -999.0; "
      "elev f9.4 -999.0; staname c50 -; statype c4 -; refsta c6 -; dnorth f9.4 0.0; "
      "deast f9.4 0.0; lddate t"},
     {"sitechan", "chanid", "sta, chan, ondate",
      "sta c6 -; chan c8 -; ondate i8 -1; chanid i8 -1; offdate i8 2286324; ctype c4 -; "
      "edepth f9.4 -1.0; hang f6.1 -1.0; vang f6.1 -1.0; descrip c50 -; lddate t"},
     {"sensor", "sta, chan, time, endtime", "",
      "sta c6 -; chan c8 -; time f17.5 -9999999999.999; endtime f17.5 9999999999.999; "
      "inid i8 -1; chanid i8 -1; jdate i8 -1; calratio f16.6 -1.0; calper f16.6 -1.0; "
      "tshift f6.2 -999.0; instant c1 -; lddate t"},
     {"instrument", "inid", "",
      "inid i8 -1; insname c50 -; instype c6 -; band c1 -; digital c1 -; samprate f11.7 -1.0; "
      "ncalib f16.6 1.0; ncalper f16.6 -1.0; dir p -; dfile p -; rsptype c6 -; lddate t"},
     {"wfdisc", "wfid", "wfid, dir, dfile",
      "sta c6 -; chan c8 -; time f17.5 -9999999999.999; wfid i8 -1; chanid i8 -1; jdate i8 -1; "
      "endtime f17.5 9999999999.999; nsamp i8 -1; samprate f11.7 -1.0; calib f16.6 1.0; "
      "calper f16.6 -1.0; instype c6 -; segtype c1 -; datatype c2 -; clip c1 -; dir p -; "
      "dfile p -; foff i10 -1; commid i8 -1; lddate t"},
     {"event", "evid", "prefor",
      "evid i8 -1; evname c15 -; prefor i8 -1; auth c15 -; commid i8 -1; lddate t"},
     {"origin", "orid", "lat, lon, depth, time, auth",
      "lat f9.4 -999.0; lon f9.4 -999.0; depth f9.4 -999.0; time f17.5 -9999999999.999; "
      "orid i8 -1; evid i8 -1; jdate i8 -1; nass i4 -1; ndef i4 -1; ndp i4 -1; grn i8 -1; "
      "srn i8 -1; etype c7 -; depdp f9.4 -999; dtype c1 -; mb f7.2 -999.0; mbid i8 -1; "
      "ms f7.2 -999.0; msid i8 -1; ml f7.2 -999.0; mlid i8 -1; algorithm c15 -; auth c15 -; "
      "commid i8 -1; lddate t"},
     {"arrival", "arid", "sta, time, chan, iphase, auth",
      "sta c6 -; time f17.5 -9999999999.999; arid i8 -1; jdate i8 -1; stassid i8 -1; "
      "chanid i8 -1; chan c8 -; iphase c8 -; stype c1 -; deltim f6.3 -1.0; azimuth f7.2 -1.0; "
      "delaz f7.2 -1.0; slow f7.2 -1.0; delslo f7.2 -1.0; ema f7.2 -1.0; rect f7.3 -1.0; "
      "amp f10.1 -1.0; per f7.2 -1.0; logat f7.2 -999.0; clip c1 -; fm c2 -; snr f10.2 -1.0; "
      "qual c1 -; auth c15 -; commid i8 -1; lddate t"},
     {"assoc", "arid, orid", "",
      "arid i8 -1; orid i8 -1; sta c6 -; phase c8 -; belief f4.2 -1.0; delta f8.3 -1.0; "
      "seaz f7.2 -999.0; esaz f7.2 -1; timeres f8.3 -999.0; timedef c1 -; azres f7.1 -999.0; "
      "azdef c1 -; slores f7.2 -999.0; slodef c1 -; emares f7.1 -999.0; wgt f6.3 -1.0; "
      "vmodel c15 -; commid i8 -1; lddate t"},
     {"netmag", "magid", "magid, orid",
      "magid i8 -1; net c8 -; orid i8 -1; evid i8 -1; magtype c6 -; nsta i8 -1; "
      "magnitude f7.2 -999.0; uncertainty f7.2 -1.0; auth c15 -; commid i8 -1; lddate t"},
     {"remark", "commid, lineno", "", "commid i8 -1; lineno i8 -1; remark c80 -; lddate t"},
     {"lastid", "keyname", "keyname, keyvalue", "keyname c15 -; keyvalue i8 -1; lddate t"}}};

constexpr std::array<WrittenTable, 6> Ours = {{
    {"seedformat", "", "", "sta c6 -; chan c8 -; seedstart c22; seedend c22; seedformat c50 -"},
    {"quarl_layout", "version", "", "version i"},
    {"quarl_volume", "volid", "path",
     "volid i; path p; size i -1; changed f -1; sha256 c64 -; label c80 -; organization c80 -; "
     "written f -9999999999.999; starttime f -9999999999.999; endtime f 9999999999.999; "
     "stations i 0; channels i 0; epochs i 0; records i 0; bytes i 0; datarecords i 0; "
     "samples i 0; headershare f 0; datashare f 0; wasteshare f 0; complete i 0; "
     "errors i -1; warnings i -1; notes i -1; options p -; lddate t"},
    {"quarl_row", "volid, tablename, id", "", "volid i; tablename c16; id i"},
    {"quarl_finding", "volid, findid", "",
     "volid i; findid i; fingerprint c64 -; rule c40 -; severity c8 -; subject p -; text p -; "
     "record i 0; more i 0; othervolid i -1; lddate t"},
    {"quarl_seedformat", "sta, chan, seedstart, seedend, seedformat", "",
     "sta c6 -; chan c8 -; seedstart c22; seedend c22; seedformat c50 -"},
}};

struct WrittenSource {
    Statement statement;
    const char *name;
    const char *id;
    const char *key; ///< empty: all columns
    const char *columns;
    const char *follow; ///< columns that follow from the others
};

constexpr std::array<WrittenSource, Statements> Written_Sources = {{
    {Statement::network, "quarl_network", "networkid", "net", "net c8 -; netname c80 -", ""},
    {Statement::station, "quarl_station", "stationid", "net, sta, starttime",
     "net c8 -; sta c6 -; starttime f -9999999999.999; endtime f 9999999999.999; "
     "latitude f -999.0; longitude f -999.0; elevation f -999.0; sitename c60 -; ",
     "ondate i -1; offdate i 2286324"},
    {Statement::epoch, "quarl_epoch", "epochid", "net, sta, loc, code, subchannel, starttime",
     "net c8 -; sta c6 -; loc c2 -; code c3 -; subchannel i 0; starttime f -9999999999.999; "
     "endtime f 9999999999.999; latitude f -999.0; longitude f -999.0; elevation f -999.0; "
     "depth f -1.0; azimuth f -1.0; dip f -999.0; rate f -1.0; sensitivity f -1.0; "
     "frequency f -1.0; units c20 -; instrument c50 -; comment c50 -; flags c26 -; "
     "format c50 -; recordlength i -1; response c32 -; ",
     "chan c8 -; ondate i -1; offdate i 2286324; calib f 1.0; calper f -1.0; seedstart c22; "
     "seedend c22"},
    {Statement::instrument, "quarl_instrument", "inid", "",
     "insname c50 -; instype c6 -; band c1 -; samprate f -1.0; ncalib f 1.0; ncalper f -1.0; "
     "response c32 -",
     ""},
    {Statement::comment, "quarl_comment", "commid", "",
     "net c8 -; sta c6 -; loc c2 -; code c3 -; starttime f -9999999999.999; "
     "endtime f 9999999999.999; level i 0; comment c80 -",
     ""},
    {Statement::origin, "quarl_origin", "originid", "place",
     "place c32 -; time f -9999999999.999; lat f -999.0; lon f -999.0; depth f -999.0; "
     "auth c15 -; grn i -1; srn i -1; ",
     "jdate i -1"},
    {Statement::magnitude, "quarl_magnitude", "magnitudeid", "place, magtype, auth",
     "place c32 -; magtype c6 -; auth c15 -; magnitude f -999.0", ""},
    {Statement::arrival, "quarl_arrival", "arrivalid", "sta, time, chan, iphase, auth",
     "sta c6 -; time f -9999999999.999; chan c8 -; iphase c8 -; auth c15 -; amp f -1.0; "
     "per f -1.0; snr f -1.0; place c32 -; ",
     "jdate i -1"},
}};

Table read_table(const WrittenTable &written)
{
    return {written.name, read_names(written.key), read_names(written.unique),
            read_columns(written.columns)};
}

Source read_source(const WrittenSource &written)
{
    Source source{written.statement,
                  written.name,
                  written.id,
                  read_names(written.key),
                  read_columns(written.columns),
                  0,
                  true};
    source.told = source.columns.size();
    for (Column &column : read_columns(written.follow))
        source.columns.push_back(std::move(column));
    source.contradicts = !source.key.empty();
    if (!source.contradicts)
        source.key = {"digest"};
    return source;
}

template <class Made, class Written> std::vector<Made> read_all(const Written &written, auto read)
{
    std::vector<Made> all;
    all.reserve(std::size(written));
    for (const auto &each : written)
        all.push_back(read(each));
    return all;
}

} // namespace

const Column &Table::column(std::string_view wanted) const
{
    return *std::find_if(columns.begin(), columns.end(),
                         [&](const Column &each) { return each.name == wanted; });
}

const std::vector<Table> &css_tables()
{
    static const auto tables = read_all<Table>(Css, read_table);
    return tables;
}

const std::vector<Table> &our_tables()
{
    static const auto tables = read_all<Table>(Ours, read_table);
    return tables;
}

const std::vector<Source> &sources()
{
    static const auto all = read_all<Source>(Written_Sources, read_source);
    return all;
}

const Source &source(Statement statement) { return sources()[static_cast<std::size_t>(statement)]; }

const Table &css_table(std::string_view name)
{
    return *std::find_if(css_tables().begin(), css_tables().end(),
                         [&](const Table &each) { return each.name == name; });
}

const Table &our_table(std::string_view name)
{
    return *std::find_if(our_tables().begin(), our_tables().end(),
                         [&](const Table &each) { return each.name == name; });
}

} // namespace quarl::archive
