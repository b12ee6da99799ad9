// Samples of any encoding from any bytes; Steim's against the plain way to undo them.
#include "fuzz/harness.h"
#include "support/plain_steim.h"

#include <algorithm>
#include <array>
#include <quarl/samples.h>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    constexpr std::size_t Choice = 4;
    if (size < Choice)
        return 0;
    static SampleBuffer Buffer;
    const std::vector<char> exact(data + Choice, data + size);
    const EncodedSamples encoded = {.data = {exact.data(), exact.size()},
                                    .encoding = static_cast<Encoding>(data[0]),
                                    .little_endian = (data[1] & 1) != 0,
                                    .count = std::size_t{data[2]} << 8 | data[3]};
    const Samples samples = decode(encoded, Buffer);
    if (samples.size() > encoded.count || samples.expected != encoded.count ||
        (samples.size() < encoded.count) > !samples.problems.empty())
        __builtin_trap();
    const auto *values = samples.get<Integers>();
    const auto version = static_cast<int>(encoded.encoding) - 9;
    if ((version == 1 || version == 2) &&
        !std::ranges::equal(
            *values, plain_steim(version, samples.little_endian, encoded.data, encoded.count)))
        __builtin_trap();
    blk_dh_t header; // the bytes as a record, all its numbers from them too
    header.raw = exact.data();
    header.length = static_cast<int>(exact.size());
    header.beg_data = data[1];
    header.nsamps = static_cast<int>(encoded.count);
    header.encoding = data[0];
    header.word_order = data[3] & 3;
    decode(header, Buffer);
    return 0;
}
