#include "check/series_ends.h"

#include <algorithm>

namespace quarl
{

namespace
{

ChannelCode without_network(const ChannelCode &code)
{
    return {{}, code.station(), code.location(), code.channel()};
}

} // namespace

void SeriesSeen::End::join(const End &other)
{
    if (!other.met)
        return;
    const bool is_last = !met || other.end >= end;
    start = met ? std::min(start, other.start) : other.start;
    end = is_last ? other.end : end;
    rate = is_last ? other.rate : rate;
    met = true;
}

/// The end at a place, with no data yet.
std::size_t SeriesEnds::open(std::size_t *place)
{
    if (*place == None || ends_[*place].met) {
        *place = ends_.size();
        ends_.emplace_back();
    }
    return *place;
}

SeriesEnds::Pointers SeriesEnds::point(int number, const ChannelCode &channel)
{
    std::map<ChannelCode, Places> &channels = places_[number].channels;
    Places &nameless = channels[without_network(channel)];
    if (channel.network().empty())
        return {open(&nameless.any), None};
    return {open(&nameless.same), open(&channels[channel].same)};
}

void SeriesEnds::add(const SeriesIndexEntry &entry)
{
    entries_.push_back({entry, point(entry.first_sequence_number, entry.code),
                        point(entry.last_sequence_number, entry.code)});
}

void SeriesEnds::note(std::size_t place, const SeriesSeen::End &data)
{
    if (place != None)
        ends_[place].join(data);
}

void SeriesEnds::meet(int number, const ChannelCode &channel, const SeriesSeen::End &data)
{
    const auto numbered = places_.find(number);
    if (numbered == places_.end())
        return;
    numbered->second.met = true;
    const auto &channels = numbered->second.channels;
    const auto nameless = channels.find(without_network(channel));
    if (nameless == channels.end())
        return;
    note(nameless->second.any, data);
    const auto named = channel.network().empty() ? nameless : channels.find(channel);
    if (named != channels.end())
        note(named->second.same, data);
}

SeriesSeen::End SeriesEnds::joined(const Pointers &pointers) const
{
    SeriesSeen::End end;
    for (const std::size_t place : pointers)
        if (place != None)
            end.join(ends_[place]);
    return end;
}

std::vector<SeriesSeen> SeriesEnds::seen() const
{
    std::vector<SeriesSeen> all;
    all.reserve(entries_.size());
    for (const Entry &entry : entries_)
        all.push_back({entry.entry, joined(entry.first), joined(entry.last)});
    const auto has = [this](int number) {
        const auto found = places_.find(number);
        return found != places_.end() && found->second.met;
    };
    for (SeriesSeen &series : all) {
        series.first.has_record = has(series.entry.first_sequence_number);
        series.last.has_record = has(series.entry.last_sequence_number);
    }
    return all;
}

} // namespace quarl
