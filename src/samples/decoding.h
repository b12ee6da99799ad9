// What the decoders of samples share: one record's task, and the room that outlives it.
#pragma once

#include <quarl/samples.h>

#include <cstddef>
#include <string>
#include <vector>

namespace quarl
{

/// Rooms only grow, so that a record allocates nothing.
struct SampleBuffer::Room {
    std::vector<std::int32_t> integers;
    std::vector<float> floats;
    std::vector<double> doubles;
    std::vector<char> text;
    std::vector<SampleProblem> problems;
};

/// The first of at least `size` elements.
template <class T> T *take_room(std::vector<T> *room, std::size_t size)
{
    if (room->size() < size)
        room->resize(size);
    return room->data();
}

/// One record's samples on the way from bytes to values.
struct Decoding {
    const EncodedSamples &encoded;
    SampleBuffer::Room &room;
    Samples &samples;

    void complain(SampleFault fault, std::string text) const;
    /// Tells when fewer samples are there than should be.
    void complain_of_count(std::size_t there) const;
};

using SampleDecoder = void (*)(const Decoding &task);

} // namespace quarl
