#include "inventory/response_parts.h"

#include <utility>

namespace quarl
{

void ResponseParts::add(const Item &item)
{
    std::optional<StagePart> part = stage_part(item, &make_);
    if (!part)
        return;
    if (unit_changes_ < 0)
        unit_changes_ = dictionaries_.unit_changes();
    open_.push_back({part->stage, No_Key, std::move(part->part)});
}

void ResponseParts::refer(int stage, int key)
{
    refers_ = true;
    open_.push_back({stage, key, Gain()});
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

Response ResponseParts::resolved(const std::vector<Raw> &raw, double sample_rate)
{
    for (const Raw &each : raw) {
        const DictionaryEntry *entry =
            each.key == No_Key ? nullptr : dictionaries_.find(Dictionary::responses, each.key);
        if (each.key == No_Key)
            builder_.add(each.stage, named(each.part));
        else if (entry)
            for (const Part &part : entry->parts)
                builder_.add(each.stage, named(part));
    }
    return builder_.take(sample_rate);
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
    for (const auto &[index, raw] : waiting_) {
        ChannelEpoch &epoch = (*epochs)[index];
        epoch.response = resolved(raw, epoch.sample_rate);
    }
    waiting_.clear();
}

} // namespace quarl
