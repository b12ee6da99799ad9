#include "inventory/response_parts.h"

#include <utility>

namespace quarl
{

void ResponseParts::add(std::size_t epoch, StagePart part)
{
    if (raw_.size() <= epoch)
        raw_.resize(epoch + 1);
    if (auto *filter = std::get_if<FilterPtr>(&part.part))
        *filter = pool_.filters(std::move(*filter));
    raw_[epoch].push_back({part.stage, No_Key, std::move(part.part)});
}

void ResponseParts::refer(std::size_t epoch, int stage, int key)
{
    if (raw_.size() <= epoch)
        raw_.resize(epoch + 1);
    raw_[epoch].push_back({stage, key, Gain()});
}

Part ResponseParts::named(const Dictionaries &dictionaries, const Part &part)
{
    const auto *filter = std::get_if<FilterPtr>(&part);
    if (!filter)
        return part;
    const Filter &raw = **filter;
    const Unit input{raw.input().code, dictionaries.unit(raw.input().code)};
    const Unit output{raw.output().code, dictionaries.unit(raw.output().code)};
    if (input == raw.input() && output == raw.output())
        return part; // as nearly always: its units were defined before it
    FilterPtr &known = named_[filter->get()];
    if (!known)
        known = pool_.filters(Filter(raw.shape(), input, output, raw.name()));
    return known;
}

void ResponseParts::resolve(const Dictionaries &dictionaries, std::size_t index,
                            ChannelEpoch *epoch)
{
    ResponseBuilder builder(pool_);
    if (index < raw_.size()) {
        for (const Raw &raw : raw_[index]) {
            const DictionaryEntry *entry =
                raw.key == No_Key ? nullptr : dictionaries.find(Dictionary::responses, raw.key);
            if (raw.key == No_Key)
                builder.add(raw.stage, named(dictionaries, raw.part));
            else if (entry)
                for (const Part &part : entry->parts)
                    builder.add(raw.stage, named(dictionaries, part));
        }
        raw_[index] = {};
    }
    epoch->response = builder.take(epoch->sample_rate);
}

} // namespace quarl
