#include "volume/seedformat.h"

#include "blockette/seed_utl.h"
#include "platform/text.h"
#include "volume/handle.h"
#include "volume/run.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <unordered_map>
#include <vector>

namespace quarl
{

namespace
{

constexpr std::size_t Code_Size = 32;

struct Row {
    char sta[Code_Size] = "";
    char chan[Code_Size] = "";
    double epochstart = 0.0;
    double epochend = 0.0;
    char seedformat[Format_Name_Size] = "";

    [[nodiscard]] bool applies(std::string_view stn, std::string_view channel, double epoch) const
    {
        return stn == sta && channel == chan && epoch >= epochstart &&
               (epochend >= epoch || epochend < 0.0);
    }
};

/// From each time on: the first row in table order that applies to one channel, or No_Row.
struct Step {
    double from;
    int row;
};

constexpr int No_Row = -1;

/// The steps of one channel, and the one that answered last: most look-ups touch nothing else,
/// however many rows the channel has.
struct Channel {
    std::vector<Step> steps;
    double from = 0.0;
    double until = 0.0;
    int row = No_Row;
};

} // namespace

struct FormatTable::Table {
    Dbptr view = dbinvalid();
    int n = 0; ///< rows in the view
    std::vector<Row> rows;
    std::unordered_map<Codes, Channel, CodesHash> channels;
    int cached = No_Row; ///< row that answered last, or the last row after a failure
};

namespace
{

Row read_row(Dbptr view)
{
    Row row;
    char start[Time_Size] = "";
    char end[Time_Size] = "";
    dbgetv(view, {{"sta", row.sta},
                  {"chan", row.chan},
                  {"seedstart", start},
                  {"seedend", end},
                  {"seedformat", row.seedformat}});
    row.epochstart = seed2epoch(start);
    row.epochend = seed2epoch(end);
    return row;
}

/// A row begins or ceases to apply.
struct Event {
    double time;
    int row;
    bool begins;
};

/// The steps of one channel from its rows: a sweep over all times at which a row begins or ceases
/// to apply, so that a look-up does not walk through the channel's rows.
std::vector<Step> make_steps(std::vector<Event> &events)
{
    std::sort(events.begin(), events.end(),
              [](const Event &a, const Event &b) { return a.time < b.time; });
    std::vector<Step> steps;
    std::set<int> applying;
    for (const Event &event : events) {
        if (event.begins)
            applying.insert(event.row);
        else
            applying.erase(event.row);
        const int first = applying.empty() ? No_Row : *applying.begin();
        if (!steps.empty() && steps.back().from == event.time)
            steps.back().row = first;
        else
            steps.push_back({event.time, first});
    }
    return steps;
}

void index_rows(FormatTable::Table *table)
{
    constexpr double Infinity = std::numeric_limits<double>::infinity();
    std::unordered_map<Codes, std::vector<Event>, CodesHash> events;
    for (int i = 0; i < table->n; ++i) {
        const Row &row = table->rows[i];
        const double end = row.epochend < 0.0 ? Infinity : row.epochend;
        if (row.epochstart > end || std::isnan(row.epochstart) || std::isnan(end) ||
            std::string_view(row.sta).size() > sizeof(std::uint64_t) ||
            std::string_view(row.chan).size() >= Channel_Id_Size)
            continue; // no data record can match it
        char stn[Station_Size];
        char chan[Channel_Id_Size];
        copy_text(stn, row.sta);
        copy_text(chan, row.chan);
        std::vector<Event> &of_channel = events[pack(stn, chan, {})];
        of_channel.push_back({row.epochstart, i, true});
        of_channel.push_back({std::nextafter(end, Infinity), i, false});
    }
    for (auto &[codes, of_channel] : events)
        table->channels[codes].steps = make_steps(of_channel);
}

/// Reads the table; an empty one is asked again at the next record.
void load(FormatTable::Table *table)
{
    const Current<Databases> databases(*run().databases);
    table->view = dblookup(run().Db, "seedformat");
    dbquery(table->view, dbRECORD_COUNT, &table->n);
    table->rows.reserve(table->n);
    for (table->view.record = 0; table->view.record < table->n; ++table->view.record)
        table->rows.push_back(read_row(table->view));
    index_rows(table);
}

/// Finds the step that holds at `epoch`.
void answer(Channel *channel, double epoch)
{
    constexpr double Infinity = std::numeric_limits<double>::infinity();
    const auto &steps = channel->steps;
    const auto next = std::upper_bound(steps.begin(), steps.end(), epoch,
                                       [](double time, const Step &s) { return time < s.from; });
    channel->until = next == steps.end() ? Infinity : next->from;
    channel->from = next == steps.begin() ? -Infinity : std::prev(next)->from;
    channel->row = next == steps.begin() ? No_Row : std::prev(next)->row;
}

int first_row(FormatTable::Table *table, const Codes &codes, double epoch)
{
    const auto found = table->channels.find(codes);
    if (found == table->channels.end())
        return No_Row;
    Channel &channel = found->second;
    if (!(epoch >= channel.from && epoch < channel.until))
        answer(&channel, epoch);
    return channel.row;
}

} // namespace

FormatTable::FormatTable() : table_(std::make_unique<Table>()) {}
FormatTable::~FormatTable() = default;

std::string_view lookup_seedformat(const char (&stn)[Station_Size],
                                   const char (&chan)[Channel_Id_Size], double epoch)
{
    FormatTable::Table &table = *run().format_table->table_;
    if (table.n == 0)
        load(&table);
    if (table.cached != No_Row && table.rows[table.cached].applies(stn, chan, epoch))
        return table.rows[table.cached].seedformat;
    const int row = first_row(&table, pack(stn, chan, {}), epoch);
    table.cached = row != No_Row ? row : table.n - 1;
    return row != No_Row ? table.rows[row].seedformat : "";
}

} // namespace quarl
