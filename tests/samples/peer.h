// Records as libmseed reads them, and whether their samples are the same.
#pragma once

#include <cstdint>
#include <cstring>
#include <libmseed.h>
#include <memory>
#include <quarl/samples.h>

using namespace quarl; // NOLINT: all is about it

struct FreeRecord {
    void operator()(MSRecord *record) const { msr_free(&record); }
};
using Peer = std::unique_ptr<MSRecord, FreeRecord>;

/// Bit for bit, and of the same type.
template <class Ours> bool is_same(const Samples &samples, const MSRecord &peer)
{
    const auto *ours = samples.get<Ours>();
    return ours && static_cast<std::int64_t>(ours->size()) == peer.numsamples &&
           std::memcmp(ours->data(), peer.datasamples, ours->size() * sizeof *ours->data()) == 0;
}

inline bool is_same_of_any_type(const Samples &samples, const MSRecord &peer)
{
    if (peer.numsamples == 0)
        return samples.size() == 0;
    switch (peer.sampletype) {
    case 'a':
        return is_same<Text>(samples, peer);
    case 'i':
        return is_same<Integers>(samples, peer);
    case 'f':
        return is_same<Floats>(samples, peer);
    default:
        return is_same<Doubles>(samples, peer);
    }
}
