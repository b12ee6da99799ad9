// What a merge finds, besides what the check of each volume does.
#include "archive/merge.h"

#include "platform/sha256.h"

namespace quarl::archive
{

void Merge::keep_finding(const Ambiguity &found, std::int64_t number, std::int64_t other,
                         Rows *rows)
{
    RowText row;
    row.whole(found.volume).whole(number);
    row.any(sha256(found.rule + "\n" + found.subject + "\n" + found.text).substr(0, 16));
    row.any(found.rule).any(other < 0 ? "note" : "warning").any(found.subject).any(found.text);
    row.whole(0).whole(0).whole(other);
    rows->add(row);
}

/// What CSS 3.0 and the table of formats cannot keep apart.
std::vector<Merge::Ambiguity> Merge::ambiguities()
{
    std::vector<Ambiguity> found;
    const auto ask = [&](const char *rule, const char *text, const std::string &query) {
        const TextRows rows = database_.ask(query, 4);
        for (std::size_t row = 0; row < rows.count(); ++row)
            found.push_back({whole_field(rows, row, 0), rule, std::string(rows.field(row, 1)),
                             text + std::string(rows.field(row, 2)) + "' and '" +
                                 std::string(rows.field(row, 3)) + "'"});
    };
    ask("station-shared", "site has one row for the networks '",
        "select n.volid, n.sta, min(o.net), max(o.net) from (select sta, min(volid) as volid"
        " from new_quarl_station group by sta) n cross join quarl_station o"
        " where o.sta = n.sta and o.wins = 1 group by n.volid, n.sta"
        " having min(o.net) <> max(o.net) order by n.sta");
    ask("formats-differ", "locations or networks have the formats '",
        "select n.volid, n.sta || ' ' || o.code, min(o.format), max(o.format)"
        " from (select sta, min(volid) as volid from new_quarl_epoch group by sta) n"
        " cross join quarl_epoch o where o.sta = n.sta and o.wins = 1 and o.format <> '-'"
        " group by n.volid, n.sta, o.code having min(o.format) <> max(o.format)"
        " and min(o.net || '.' || o.loc) <> max(o.net || '.' || o.loc) order by n.sta, o.code");
    return found;
}

void Merge::tell(const Plan &plan, std::vector<Merged> *merged)
{
    Rows rows;
    std::int64_t number = 1'000'000'000; // behind those of the check
    std::vector<Contradiction> found;
    std::vector<std::int64_t> others;
    for (const auto &each : sources_)
        for (Contradiction &one : each->contradictions()) {
            keep_finding({one.volume, "volumes-contradict", one.subject,
                          one.told + (one.wins ? " there" : " there, which wins")},
                         ++number, one.other, &rows);
            others.push_back(one.other);
            found.push_back(std::move(one));
        }
    for (const Ambiguity &one : ambiguities()) {
        keep_finding(one, ++number, -1, &rows);
        (*merged)[plan.by_id.at(one.volume)].told.push_back(one.subject + ": " + one.text);
    }
    if (number == 1'000'000'000)
        return;
    const auto paths = paths_of(std::move(others));
    for (const Contradiction &one : found) {
        Merged &of = (*merged)[plan.by_id.at(one.volume)];
        of.contradicts = true;
        of.told.push_back(one.subject + ": " + one.told + " in " + paths.at(one.other) +
                          (one.wins ? ", which loses" : ", which wins"));
    }
    std::string array = "[";
    rows.append_to(&array, "", nullptr);
    std::vector<Column> columns = our_table("quarl_finding").columns;
    columns.pop_back();
    database_.run(dialect_.insert_rows("quarl_finding", columns), array + "]");
}

void Merge::write_findings(const std::vector<VolumeToMerge> &volumes, const Plan &plan)
{
    std::string array = "[";
    for (std::size_t i = 0; i < volumes.size(); ++i)
        if (plan.steps[i].fate == Fate::added || plan.steps[i].fate == Fate::changed)
            volumes[i].rows.findings.append_to(&array, std::to_string(plan.steps[i].id) + ",",
                                               nullptr);
    if (array.size() == 1)
        return;
    std::vector<Column> columns = our_table("quarl_finding").columns;
    columns.pop_back(); // the time of loading
    columns.pop_back(); // another volume
    database_.run(dialect_.insert_rows("quarl_finding", columns), array + "]");
}

} // namespace quarl::archive
