#include "archive/merge.h"

#include "platform/json_text.h"
#include "platform/read_number.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <map>
#include <quarl/time.h>
#include <set>
#include <sys/stat.h>
#include <unordered_map>

namespace quarl::archive
{

namespace
{

/// Texts as a JSON array.
std::string array_of(const std::vector<std::string> &texts)
{
    std::string array = "[";
    for (const std::string &text : texts)
        array.append(array.size() > 1 ? "," : "").append(RowText().any(text).values());
    return array + "]";
}

std::string array_of(const std::vector<std::int64_t> &numbers)
{
    std::string array = "[";
    for (const std::int64_t number : numbers)
        array.append(array.size() > 1 ? ",[" : "[").append(std::to_string(number)).append("]");
    return array + "]";
}

bool is_gone(const std::string &path)
{
    struct stat facts = {};
    return stat(path.c_str(), &facts) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

/// Folder and name.
RowText split(const std::string &path)
{
    const std::size_t slash = path.rfind('/');
    RowText row;
    row.any(slash == 0 ? "/" : path.substr(0, slash)).any(path.substr(slash + 1));
    return row;
}

/// The path has a "." behind it, as blanks at the end of a field are dropped.
constexpr std::string_view Known_Columns =
    "v.volid, v.path || '.', v.size, v.changed, v.sha256, v.options || '.'";

std::string field_text(const TextRows &rows, std::size_t row, std::size_t column)
{
    const std::string_view text = rows.field(row, column);
    return std::string(text.substr(0, text.size() - 1));
}

const Column Volume_Id = {"volid", Column::Kind::whole, 0, ""};

} // namespace

std::size_t VolumeRows::size() const
{
    std::size_t all = data.size() + findings.size() + facts.values().size();
    for (const Rows &rows : statements)
        all += rows.size();
    return all;
}

Merge::Merge(const std::string &database, bool may_make)
    : database_(database,
                may_make ? DatabaseWriter::Missing::made : DatabaseWriter::Missing::refused),
      dialect_(database_.is_postgresql())
{
    prepare_tables(&database_, may_make);
    database_.share();
    database_.begin();
    for (const Source &each : archive::sources())
        sources_.push_back(std::make_unique<SourceMerge>(&database_, each));
    derived_ = std::make_unique<Derived>(&database_);
    database_.run("create temporary table gone_volume (volid bigint primary key)");
    database_.commit();
}

Merge::~Merge() = default;

std::vector<KnownVolume> Merge::read_known(const TextRows &rows) const
{
    std::vector<KnownVolume> known;
    for (std::size_t row = 0; row < rows.count(); ++row) {
        KnownVolume &volume = known.emplace_back();
        std::size_t used = 0;
        volume.id = whole_field(rows, row, 0);
        volume.file.path = field_text(rows, row, 1);
        volume.file.size = whole_field(rows, row, 2);
        volume.file.changed = read_real(rows.field(row, 3), &used);
        volume.sum = rows.field(row, 4);
        volume.options = field_text(rows, row, 5);
    }
    return known;
}

std::vector<KnownVolume> Merge::known(const std::vector<std::string> &paths)
{
    return read_known(database_.ask("select " + std::string(Known_Columns) + " from " +
                                        dialect_.given_texts() +
                                        " cross join quarl_volume v where v.path = g.value",
                                    6, array_of(paths)));
}

std::vector<KnownVolume> Merge::known_sums(const std::vector<VolumeToMerge> &volumes)
{
    std::vector<std::string> sums;
    sums.reserve(volumes.size());
    for (const VolumeToMerge &volume : volumes)
        sums.push_back(volume.sum);
    return read_known(database_.ask("select " + std::string(Known_Columns) + " from " +
                                        dialect_.given_texts() +
                                        " cross join quarl_volume v where v.sha256 = g.value"
                                        " order by v.volid",
                                    6, array_of(sums)));
}

/// What is in the database now counts: others may have merged the same files meanwhile.
Merge::Plan Merge::plan(const std::vector<VolumeToMerge> &volumes)
{
    std::vector<std::string> paths;
    paths.reserve(volumes.size());
    for (const VolumeToMerge &volume : volumes)
        paths.push_back(volume.file.path);
    std::unordered_map<std::string, KnownVolume> by_path;
    for (KnownVolume &volume : known(paths))
        by_path.emplace(volume.file.path, volume);
    std::unordered_multimap<std::string, KnownVolume> by_sum;
    for (KnownVolume &volume : known_sums(volumes))
        by_sum.emplace(volume.sum, volume);
    const std::int64_t last =
        whole_field(database_.ask("select keyvalue from lastid where keyname = 'volid'", 1), 0, 0);
    std::int64_t next = last;
    Plan plan;
    std::set<std::int64_t> moved;
    std::set<std::string> met;
    for (const VolumeToMerge &volume : volumes) {
        Plan::Step step;
        if (!met.insert(volume.file.path).second) {
            plan.steps.push_back({Fate::unchanged, 0});
            continue;
        }
        const auto known = by_path.find(volume.file.path);
        const auto same = by_sum.equal_range(volume.sum);
        const auto old = std::find_if(same.first, same.second, [&](const auto &each) {
            return each.second.options == volume.options && !moved.contains(each.second.id) &&
                   is_gone(each.second.file.path);
        });
        if (known != by_path.end()) {
            const KnownVolume &before = known->second;
            const bool is_same = before.sum == volume.sum && before.options == volume.options;
            step = {is_same ? Fate::unchanged : Fate::changed, before.id};
        } else if (old != same.second) {
            step = {Fate::moved, old->second.id};
            moved.insert(step.id);
        } else {
            step = {Fate::added, ++next};
        }
        if (step.fate == Fate::changed)
            plan.gone.push_back(step.id);
        plan.by_id.emplace(step.id, plan.steps.size());
        plan.steps.push_back(step);
    }
    if (next != last)
        database_.run("update lastid set keyvalue = cast(:given as bigint)"
                      " where keyname = 'volid'",
                      std::to_string(next));
    return plan;
}

/// What these volumes say is no longer said by them, until they are written again.
void Merge::take_back(const std::vector<std::int64_t> &volumes)
{
    if (volumes.empty())
        return;
    database_.run(dialect_.insert_rows("gone_volume", {Volume_Id}), array_of(volumes));
    for (const auto &each : sources_)
        each->take_back();
    database_.run("delete from quarl_finding where volid in (select volid from gone_volume)");
    database_.run("delete from quarl_finding where othervolid in (select volid from gone_volume)");
}

void Merge::write_move(const VolumeToMerge &volume, std::int64_t id)
{
    const std::string given = "[[" + std::to_string(id) + "," + split(volume.file.path).values() +
                              "," + RowText().any(volume.file.path).values() + "," +
                              RowText().real(volume.file.changed, -1).values() + "]]";
    const auto value = [this](const char *at, const char *type) {
        return database_.is_postgresql()
                   ? "cast(cast(:given as jsonb)->0->>" + std::string(at) + " as " + type + ")"
                   : "json_extract(:given, '$[0][" + std::string(at) + "]')";
    };
    database_.run("update quarl_volume set path = " + value("3", "text") + ", changed = " +
                      value("4", "double precision") + " where volid = " + value("0", "bigint"),
                  given);
    database_.run("update wfdisc set dir = " + value("1", "text") +
                      ", dfile = " + value("2", "text") +
                      " where wfid in (select id from quarl_row"
                      " where tablename = 'wfdisc' and volid = " +
                      value("0", "bigint") + ")",
                  given);
}

void Merge::write(const std::vector<VolumeToMerge> &volumes, const Plan &plan)
{
    std::array<std::string, Statements> statements;
    statements.fill("[");
    std::string facts = "[";
    std::string data = "[";
    std::string files = "[";
    std::int64_t number = 0;
    for (std::size_t i = 0; i < volumes.size(); ++i) {
        const VolumeToMerge &volume = volumes[i];
        const auto [fate, id] = plan.steps[i];
        if (fate == Fate::moved)
            write_move(volume, id);
        if (fate != Fate::added && fate != Fate::changed)
            continue;
        const std::string front =
            std::to_string(id) + "," + RowText().real(volume.rows.written, Always).values() + ",";
        for (std::size_t k = 0; k < Statements; ++k)
            volume.rows.statements[k].append_to(&statements[k], front, &number);
        RowText row;
        row.whole(id).any(volume.file.path).whole(volume.file.size).real(volume.file.changed, -1);
        row.any(volume.sum);
        facts += (facts.size() > 1 ? ",[" : "[") + row.values() + "," + volume.rows.facts.values() +
                 "," + RowText().any(volume.options).values() + "]";
        const RowText file = split(volume.file.path);
        files += (files.size() > 1 ? ",[" : "[") + file.values() + "," + std::to_string(id) + "]";
        volume.rows.data.append_to(&data, file.values() + ",", nullptr);
    }
    if (facts.size() == 1)
        return;
    std::vector<Column> columns = our_table("quarl_volume").columns;
    columns.pop_back(); // the time of loading is now
    database_.run("delete from quarl_volume where volid in (select volid from gone_volume)");
    database_.run(dialect_.insert_rows("quarl_volume", columns), facts + "]");
    for (std::size_t k = 0; k < Statements; ++k)
        if (statements[k].size() > 1)
            sources_[k]->add(statements[k] + "]");
    derived_->set_data(files + "]", data + "]");
}

void Merge::settle()
{
    for (const auto &each : sources_)
        each->elect();
    derived_->run(sources_);
}

void Merge::clear()
{
    for (const auto &each : sources_)
        each->clear();
    database_.run(dialect_.clear("gone_volume"));
}

/// The paths of volumes, by their numbers.
std::map<std::int64_t, std::string> Merge::paths_of(std::vector<std::int64_t> volumes)
{
    std::sort(volumes.begin(), volumes.end());
    volumes.erase(std::unique(volumes.begin(), volumes.end()), volumes.end());
    const std::string rows = database_.is_postgresql()
                                 ? "jsonb_array_elements(cast(:given as jsonb)) as g(value)"
                                   " cross join quarl_volume v"
                                   " where v.volid = cast(g.value->>0 as bigint)"
                                 : "json_each(:given) g cross join quarl_volume v"
                                   " where v.volid = json_extract(g.value, '$[0]')";
    std::map<std::int64_t, std::string> paths;
    for (const KnownVolume &volume : read_known(database_.ask(
             "select " + std::string(Known_Columns) + " from " + rows, 6, array_of(volumes))))
        paths[volume.id] = volume.file.path;
    return paths;
}

std::vector<Merged> Merge::merge(const std::vector<VolumeToMerge> &volumes)
{
    std::vector<Merged> merged(volumes.size());
    database_.begin();
    lock_archive(&database_);
    const Plan steps = plan(volumes);
    take_back(steps.gone);
    write(volumes, steps);
    settle();
    write_findings(volumes, steps);
    for (std::size_t i = 0; i < volumes.size(); ++i) {
        merged[i].fate = steps.steps[i].fate;
        if (merged[i].fate == Fate::added || merged[i].fate == Fate::changed)
            merged[i].told = volumes[i].rows.told;
    }
    tell(steps, &merged);
    clear();
    database_.commit();
    return merged;
}

void Merge::touch(const std::vector<KnownVolume> &volumes)
{
    if (volumes.empty())
        return;
    std::string given = "[";
    for (const KnownVolume &volume : volumes)
        given += (given.size() > 1 ? ",[" : "[") + std::to_string(volume.id) + "," +
                 RowText().real(volume.file.changed, -1).values() + "]";
    const char *values = database_.is_postgresql()
                             ? "select cast(g.value->>0 as bigint) as volid,"
                               " cast(g.value->>1 as double precision) as changed"
                               " from jsonb_array_elements(cast(:given as jsonb)) as g(value)"
                             : "select json_extract(value, '$[0]') as volid,"
                               " json_extract(value, '$[1]') as changed from json_each(:given)";
    database_.begin();
    lock_archive(&database_);
    database_.run("update quarl_volume set changed = n.changed from (" + std::string(values) +
                      ") n where n.volid = quarl_volume.volid",
                  given + "]");
    database_.commit();
}

void Merge::remove(const std::vector<std::int64_t> &volumes)
{
    database_.begin();
    lock_archive(&database_);
    take_back(volumes);
    std::string files = "[";
    const TextRows rows = database_.ask("select v.volid, v.path || '.' from gone_volume g"
                                        " cross join quarl_volume v where v.volid = g.volid",
                                        2);
    for (std::size_t row = 0; row < rows.count(); ++row)
        files += (files.size() > 1 ? ",[" : "[") + split(field_text(rows, row, 1)).values() + "," +
                 std::string(rows.field(row, 0)) + "]";
    database_.run("delete from quarl_volume where volid in (select volid from gone_volume)");
    derived_->set_data(files + "]", "[]");
    settle();
    clear();
    database_.commit();
}

std::vector<KnownVolume> Merge::list(std::int64_t after, std::size_t most)
{
    return read_known(database_.ask("select " + std::string(Known_Columns) +
                                        " from quarl_volume v where v.volid >"
                                        " cast(:given as bigint) order by v.volid limit " +
                                        std::to_string(most),
                                    6, std::to_string(after)));
}

void Merge::finish() { database_.leave_alone(); }

} // namespace quarl::archive
