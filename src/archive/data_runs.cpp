#include "archive/data_runs.h"

#include <cmath>
#include <quarl/time.h>

namespace quarl::archive
{

std::int64_t julian_date(double time)
{
    const auto point = time_of(time);
    if (!point || time <= Always)
        return -1;
    const TimeParts parts = parts_of(*point);
    return parts.year < 1 ? -1 : parts.year * std::int64_t{1000} + parts.day_of_year;
}

void DataRuns::add(const Item &item, const blk_dh_t &header)
{
    const DataRefinement more = item.data_blockettes().refinement();
    const auto times = data_times(header, more);
    const double rate = more.sample_rate > 0.0 ? more.sample_rate : header.samp_rate;
    if (!times || header.nsamps <= 0 || !(rate > 0.0) || times->next == Time::max())
        return;
    const ChannelCode code(header.network_code, header.stn_id, header.loc_id, header.chan_id);
    if (!selection_.has(code))
        return;
    const double start = seconds(times->start);
    const auto [known, is_new] = open_.try_emplace(code, runs_.size());
    if (!is_new) {
        Run &run = runs_[known->second];
        if (run.rate == rate && std::fabs(start - run.next) <= 0.5 / rate) {
            run.end = seconds(times->end);
            run.next = seconds(times->next);
            run.samples += header.nsamps;
            return;
        }
        known->second = runs_.size();
    }
    runs_.push_back({code, start, seconds(times->end), seconds(times->next), rate, header.nsamps,
                     item.place().offset});
}

Rows DataRuns::take()
{
    Rows rows;
    for (const Run &run : runs_) {
        RowText row;
        row.whole(run.offset).text(run.code.station());
        row.text(std::string(run.code.channel()) + std::string(run.code.location()));
        row.real(run.start, Always).whole(julian_date(run.start)).real(run.end, Forever);
        row.whole(run.samples).real(run.rate, -1.0).any("o").any("sd");
        rows.add(row);
    }
    runs_.clear();
    return rows;
}

} // namespace quarl::archive
