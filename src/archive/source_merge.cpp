#include "archive/source_merge.h"

#include "platform/format.h"
#include "platform/read_number.h"
#include "platform/text.h"

#include <quarl/time.h>
#include <utility>

namespace quarl::archive
{

namespace
{

void replace_all(std::string *text, std::string_view from, std::string_view to)
{
    for (std::size_t at = 0; (at = text->find(from, at)) != std::string::npos; at += to.size())
        text->replace(at, from.size(), to);
}

const std::vector<Column> Front = {{"volid", Column::Kind::whole, 0, ""},
                                   {"written", Column::Kind::real, 0, ""},
                                   {"seq", Column::Kind::whole, 0, ""},
                                   {"digest", Column::Kind::text, 32, ""}};

std::string definitions(const std::vector<Column> &columns)
{
    std::string all;
    for (const Column &column : columns)
        all += ", " + column.name + " " + type_of(column);
    return all;
}

} // namespace

SourceMerge::SourceMerge(DatabaseWriter *database, const Source &source)
    : database_(database), source_(source), dialect_(database->is_postgresql()),
      columns_(listed(names_of(source.columns)))
{
    std::vector<Column> all = Front;
    all.insert(all.end(), source.columns.begin(), source.columns.end());
    insert_ = dialect_.insert_rows("new_" + source.name, all);
    make_tables();
}

/// S the source, ID its number, COLUMNS its own, KEY its key.
std::string SourceMerge::sql(std::string_view text) const
{
    std::string made(text);
    replace_all(&made, "{S}", source_.name);
    replace_all(&made, "{ID}", source_.id);
    replace_all(&made, "{COLUMNS}", columns_);
    replace_all(&made, "{s.COLUMNS}", listed(names_of(source_.columns), "s."));
    replace_all(&made, "{n.COLUMNS}", listed(names_of(source_.columns), "n."));
    replace_all(&made, "{KEY}", listed(source_.key));
    replace_all(&made, "{s.KEY}", listed(source_.key, "s."));
    replace_all(&made, "{m.KEY}", listed(source_.key, "m."));
    replace_all(&made, "{s.KEY = k.KEY}", matched(source_.key, "s", "k"));
    replace_all(&made, "{o.KEY = n.KEY}", matched(source_.key, "o", "n"));
    return made;
}

void SourceMerge::make_tables()
{
    std::vector<Column> key;
    for (const std::string &name : source_.key) {
        if (name == "digest")
            key.push_back(Front.back());
        for (const Column &column : source_.columns)
            if (column.name == name)
                key.push_back(column);
    }
    const std::string columns = definitions(source_.columns);
    database_->run(sql("create temporary table new_{S} (seq bigint primary key, volid bigint, "
                       "written double precision, digest varchar(32)") +
                   columns + ")");
    database_->run(sql("create index new_{S}_digest on new_{S} (digest)"));
    database_->run(sql("create temporary table key_{S} (") + definitions(key).substr(2) +
                   sql(", primary key ({KEY}))"));
    database_->run(sql("create temporary table was_{S} (id bigint primary key)"));
    database_->run(sql("create temporary table best_{S} (id bigint primary key)"));
    database_->run(sql("create temporary table rank_{S} (id bigint primary key, "
                       "written double precision, volid bigint)"));
    database_->run(sql("create temporary table flip_{S} (id bigint primary key, "
                       "digest varchar(32)") +
                   columns + ")");
}

void SourceMerge::take_back()
{
    has_gone_ = true;
    database_->run(sql("insert into was_{S} (id) select distinct r.id from gone_volume g"
                       " cross join quarl_row r where r.volid = g.volid and r.tablename = '{S}'"));
    database_->run(sql("insert into key_{S} ({KEY}) select distinct {s.KEY} from was_{S} w"
                       " cross join {S} s where s.{ID} = w.id"));
    database_->run(sql("delete from quarl_row where volid in (select volid from gone_volume)"
                       " and tablename = '{S}'"));
}

void SourceMerge::add(const std::string &rows)
{
    has_new_ = true;
    database_->run(insert_, rows);
    database_->run(sql("insert into key_{S} ({KEY}) select distinct {s.KEY} from new_{S} s"
                       " where not exists (select 1 from key_{S} k where {s.KEY = k.KEY})"));
    // A new statement that nothing contradicts has won. (Sources have a column "place".)
    database_->run(
        sql("insert into {S} ({ID}, digest, written, volid, wins, {COLUMNS})"
            " select (select keyvalue from lastid where keyname = '{ID}')"
            " + row_number() over (order by n.seq), n.digest, n.written, n.volid,"
            " case when n.rank = 1 and not exists (select 1 from {S} o where {o.KEY = n.KEY})"
            " then 1 else 0 end, {n.COLUMNS} from (select m.*, row_number() over (partition by"
            " m.digest order by m.written desc, m.volid, m.seq) as nth, row_number() over"
            " (partition by {m.KEY} order by m.written desc, m.volid, m.seq desc) as rank"
            " from new_{S} m) n where n.nth = 1"
            " and not exists (select 1 from {S} s where s.digest = n.digest)"));
    database_->run(sql("insert into flip_{S} (id, digest, {COLUMNS})"
                       " select s.{ID}, s.digest, {s.COLUMNS} from {S} s where s.{ID} >"
                       " (select keyvalue from lastid where keyname = '{ID}') and s.wins = 1"));
    database_->run(sql("update lastid set keyvalue = (select max({ID}) from {S})"
                       " where keyname = '{ID}' and keyvalue < (select max({ID}) from {S})"));
    database_->run(
        sql("insert into rank_{S} (id, written, volid) select s.{ID}, n.written, n.volid from"
            " (select digest, written, volid, row_number() over (partition by digest"
            " order by written desc, volid) as place from new_{S}) n cross join {S} s"
            " where n.place = 1 and s.digest = n.digest and (n.written > s.written"
            " or (n.written = s.written and n.volid < s.volid))"));
    database_->run(sql("update {S} set (written, volid) = (select r.written, r.volid"
                       " from rank_{S} r where r.id = {S}.{ID})"
                       " where {ID} in (select id from rank_{S})"));
    database_->run(sql("insert into quarl_row (volid, tablename, id)"
                       " select distinct n.volid, '{S}', s.{ID} from new_{S} n cross join {S} s"
                       " where s.digest = n.digest"));
}

void SourceMerge::elect()
{
    if (!has_new_ && !has_gone_)
        return;
    if (has_gone_) {
        database_->run(sql("insert into flip_{S} (id, digest, {COLUMNS})"
                           " select s.{ID}, s.digest, {s.COLUMNS}"
                           " from was_{S} w cross join {S} s where s.{ID} = w.id and s.wins = 1"
                           " and not exists (select 1 from quarl_row r"
                           " where r.tablename = '{S}' and r.id = w.id)"));
        database_->run(sql("delete from {S} where {ID} in (select id from was_{S})"
                           " and not exists (select 1 from quarl_row r"
                           " where r.tablename = '{S}' and r.id = {S}.{ID})"));
        database_->run(sql("update {S} set (written, volid) = (select v.written, v.volid"
                           " from quarl_row r cross join quarl_volume v"
                           " where r.tablename = '{S}' and r.id = {S}.{ID} and v.volid = r.volid"
                           " order by v.written desc, v.volid limit 1)"
                           " where {ID} in (select id from was_{S})"
                           " and volid in (select volid from gone_volume)"));
    }
    database_->run(sql("insert into best_{S} (id) select b.id from (select s.{ID} as id,"
                       " row_number() over (partition by {s.KEY} order by s.written desc,"
                       " s.volid, s.{ID} desc) as place from key_{S} k cross join {S} s"
                       " where {s.KEY = k.KEY}) b where b.place = 1"));
    database_->run(sql(
        "insert into flip_{S} (id, digest, {COLUMNS}) select s.{ID}, s.digest, {s.COLUMNS}"
        " from key_{S} k cross join {S} s where {s.KEY = k.KEY} and s.wins <>"
        " (case when exists (select 1 from best_{S} b where b.id = s.{ID}) then 1 else 0 end)"));
    database_->run(
        sql("update {S} set wins = 1 where wins = 0 and {ID} in (select id from best_{S})"));
    database_->run(sql("update {S} set wins = 0 where wins = 1 and {ID} in (select id from"
                       " flip_{S}) and {ID} not in (select id from best_{S})"));
    has_flipped_ = database_->ask(sql("select 1 from flip_{S} limit 1"), 1).count() > 0;
}

std::vector<Contradiction> SourceMerge::contradictions()
{
    std::vector<Contradiction> found;
    if (!has_new_ || !source_.contradicts)
        return found;
    std::string columns;
    for (std::size_t i = 0; i < source_.told; ++i)
        columns += ", c.n" + std::to_string(i) + ", c.o" + std::to_string(i);
    std::string inner;
    for (std::size_t i = 0; i < source_.told; ++i) {
        const std::string &name = source_.columns[i].name;
        inner += formatted<", n.%s as n%lu, o.%s as o%lu">(name, i, name, i);
    }
    const TextRows rows = database_->ask(
        sql("select c.volid, c.other, c.wins" + columns +
            " from (select n.seq, n.volid, o.volid as other, m.wins" + inner +
            ", row_number() over (partition by n.seq order by o.wins desc, o.written desc,"
            " o.volid, o.{ID} desc) as place from new_{S} n cross join {S} m cross join {S} o"
            " where m.digest = n.digest and {o.KEY = n.KEY} and o.{ID} <> m.{ID}"
            // Of two that come at the same time, the second one tells.
            " and (o.volid < n.volid or not exists"
            " (select 1 from new_{S} x where x.digest = o.digest))) c"
            " where c.place = 1 order by c.seq"),
        3 + 2 * source_.told);
    for (std::size_t row = 0; row < rows.count(); ++row)
        found.push_back(read_contradiction(rows, row));
    return found;
}

Contradiction SourceMerge::read_contradiction(const TextRows &rows, std::size_t row) const
{
    Contradiction found;
    found.volume = whole_field(rows, row, 0);
    found.other = whole_field(rows, row, 1);
    found.wins = whole_field(rows, row, 2) == 1;
    const auto shown = [](const Column &column, std::string_view value) {
        if (!column.name.ends_with("time"))
            return std::string(value);
        std::size_t used = 0;
        const double time = read_real(value, &used);
        const std::string text = time_text(time);
        return text.empty() ? std::string(time > 0 ? "none" : "ever") : text;
    };
    for (std::size_t i = 0; i < source_.told; ++i) {
        const Column &column = source_.columns[i];
        const std::string_view mine = rows.field(row, 3 + 2 * i);
        const std::string_view others = rows.field(row, 4 + 2 * i);
        if (i < source_.key.size()) {
            if (mine == column.missing && column.name != "loc")
                continue;
            found.subject += (found.subject.empty()        ? ""
                              : column.name == "starttime" ? " "
                                                           : "_") +
                             (mine == column.missing ? "" : shown(column, mine));
        } else if (column.name == "response" && mine != others) {
            found.told += (found.told.empty() ? "" : ", ") + std::string("another response");
        } else if (mine != others) {
            found.told += (found.told.empty() ? "" : ", ") + column.name + " " +
                          shown(column, mine) + " here, " + shown(column, others);
        }
    }
    if (found.told.empty())
        found.told = "numbers differ in their last digits";
    return found;
}

void SourceMerge::clear()
{
    if (has_new_ || has_gone_)
        for (const char *table :
             {"new_{S}", "key_{S}", "was_{S}", "best_{S}", "rank_{S}", "flip_{S}"})
            database_->run(dialect_.clear(sql(table)));
    has_new_ = has_gone_ = has_flipped_ = false;
}

} // namespace quarl::archive
