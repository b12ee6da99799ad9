#include "inventory/response_parts.h"

#include <utility>

namespace quarl
{

void ResponseParts::add(std::size_t epoch, const StagePart &part)
{
    if (raw_.size() <= epoch)
        raw_.resize(epoch + 1);
    raw_[epoch].push_back({part.stage, No_Key, parts_(Stage{part.stage, {part.part}})});
}

void ResponseParts::refer(std::size_t epoch, int stage, int key)
{
    if (raw_.size() <= epoch)
        raw_.resize(epoch + 1);
    raw_[epoch].push_back({stage, key, nullptr});
}

Part ResponseParts::named(const Dictionaries &dictionaries, const Part &part)
{
    const auto *filter = std::get_if<FilterPtr>(&part);
    if (!filter)
        return part;
    FilterPtr &known = named_[filter->get()];
    if (!known) {
        const Filter &raw = **filter;
        const auto unit = [&](int code) {
            const DictionaryEntry *entry = dictionaries.find(Dictionary::units, code);
            return Unit{code, entry ? entry->text : std::string()};
        };
        known = pool_.filters(
            Filter(raw.shape(), unit(raw.input().code), unit(raw.output().code), raw.name()));
    }
    return known;
}

void ResponseParts::resolve(const Dictionaries &dictionaries, std::size_t index,
                            ChannelEpoch *epoch)
{
    ResponseBuilder builder(pool_);
    if (index < raw_.size()) {
        for (const Raw &raw : raw_[index]) {
            const DictionaryEntry *entry =
                raw.part ? nullptr : dictionaries.find(Dictionary::responses, raw.key);
            if (raw.part)
                builder.add(raw.stage, named(dictionaries, raw.part->parts.front()));
            else if (entry)
                for (const Part &part : entry->parts)
                    builder.add(raw.stage, named(dictionaries, part));
        }
        raw_[index] = {};
    }
    epoch->response = builder.take(epoch->sample_rate);
}

} // namespace quarl
