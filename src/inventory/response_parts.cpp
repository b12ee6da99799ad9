#include "inventory/response_parts.h"

#include <utility>

namespace quarl
{

std::optional<int> ResponseParts::add(const Item &item)
{
    std::optional<StagePart> part = stage_part(item, &make_);
    if (!part)
        return std::nullopt;
    if (unit_changes_ < 0)
        unit_changes_ = dictionaries_.unit_changes();
    open_.push_back({part->stage, No_Key, std::move(part->part)});
    return part->stage;
}

void ResponseParts::refer(int stage, int key, std::int64_t record)
{
    refers_ = true;
    open_.push_back({stage, key, Gain(), record});
}

Part ResponseParts::named(const Part &part)
{
    const auto *filter = std::get_if<FilterPtr>(&part);
    if (!filter)
        return part;
    const Filter &raw = **filter;
    const Unit input{raw.input().code, dictionaries_.unit(raw.input().code)};
    const Unit output{raw.output().code, dictionaries_.unit(raw.output().code)};
    if (input == raw.input() && output == raw.output())
        return part;
    FilterPtr &known = named_[*filter];
    if (!known)
        known = pool_.filters(Filter(raw.shape(), input, output, raw.name()));
    return known;
}

void ResponseParts::resolve(const Raw &reference, ChannelEpoch *epoch)
{
    const DictionaryEntry *entry = dictionaries_.find(Dictionary::responses, reference.key);
    if (!entry || entry->damaged || entry->held < entry->promised)
        epoch->lacks.push_back({60, reference.key, reference.stage, reference.record});
    if (entry)
        for (const Part &part : entry->parts)
            builder_.add(reference.stage, named(part));
}

void ResponseParts::resolve(const std::vector<Raw> &raw, ChannelEpoch *epoch)
{
    for (const Raw &each : raw) {
        if (each.key == No_Key)
            builder_.add(each.stage, named(each.part));
        else
            resolve(each, epoch);
    }
    epoch->response = builder_.take(epoch->sample_rate);
}

Response ResponseParts::renamed(const Response &response)
{
    for (const StagePtr &stage : response.stages)
        for (const Part &part : stage->parts)
            builder_.add(stage->number, named(part));
    return builder_.take(response.sample_rate);
}

void ResponseParts::close(std::size_t index, ChannelEpoch *epoch)
{
    if (std::exchange(refers_, false)) {
        waiting_.emplace_back(index, open_);
    } else {
        for (Raw &raw : open_)
            builder_.add(raw.stage, std::move(raw.part));
        epoch->response = builder_.take(epoch->sample_rate);
    }
    open_.clear();
}

void ResponseParts::finish(std::deque<ChannelEpoch> *epochs)
{
    if (unit_changes_ >= 0 && unit_changes_ != dictionaries_.unit_changes())
        for (ChannelEpoch &epoch : *epochs)
            epoch.response = renamed(epoch.response);
    for (const auto &[index, raw] : waiting_)
        resolve(raw, &(*epochs)[index]);
    waiting_.clear();
}

} // namespace quarl
