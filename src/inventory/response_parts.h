// The parts of channel epochs' responses while a volume is read: the dictionaries that they refer
// to are complete at its end only.
#pragma once

#include "inventory/dictionaries.h"
#include "inventory/parts.h"

#include <quarl/contents.h>
#include <unordered_map>
#include <vector>

namespace quarl
{

/// Collects parts by channel epoch, equal filters once, and makes responses of them in the end.
class ResponseParts
{
public:
    /// A part of the channel epoch with this index.
    void add(std::size_t epoch, StagePart part);
    /// A stage of it is entry `key` of the response dictionary.
    void refer(std::size_t epoch, int stage, int key);
    /// Gives `epoch`, whose index it is, its response. Units are named by the dictionary.
    void resolve(const Dictionaries &dictionaries, std::size_t index, ChannelEpoch *epoch);

private:
    static constexpr int No_Key = -1;
    struct Raw {
        int stage = 0;
        int key = No_Key;
        Part part; ///< when it is no reference
    };
    Part named(const Dictionaries &dictionaries, const Part &part);

    std::vector<std::vector<Raw>> raw_; ///< by channel epoch
    ResponsePool pool_;
    std::unordered_map<const Filter *, FilterPtr> named_;
};

} // namespace quarl
