#include "worst_data.h"

#include "compose/blockette_text.h"
#include "compose/volume.h"

#include <cstdio>

namespace
{

constexpr int Number = 7; ///< of all records that an index points to
constexpr int Data_Length = 256;

/// Minute `number` of 2020, as a SEED time.
std::string minute(std::int64_t number)
{
    constexpr int Minutes = 60;
    constexpr int Day = 24 * Minutes;
    const int at = static_cast<int>(number % (Day * 366));
    char text[80];
    std::snprintf(text, sizeof text, "2020,%03d,%02d:%02d:00.0000", 1 + at / Day, at / Minutes % 24,
                  at % Minutes);
    return text;
}

VolumeBuilder begin_station(const std::string &network)
{
    VolumeBuilder volume(4096);
    volume.header('V').blockette(10, b010(2.4, 12, "2020,001", "", "", "", ""));
    volume.header('A').blockette(30, b030("Steim2 Integer Compression Format", 1, 50, {}));
    volume.header('S').blockette(50, b050({.network = network}));
    volume.blockette(52, b052({}));
    return volume;
}

/// A record of five seconds.
DataRecord record_at(std::int64_t at)
{
    return {.seq = Number, .time = minute(at), .length = Data_Length, .b1000 = DataOnly{11, 1, 8}};
}

/// Adds records until the volume has `size` bytes.
template <class Make> std::string fill(VolumeBuilder volume, std::int64_t size, Make make)
{
    const auto written = static_cast<std::int64_t>(VolumeBuilder(volume).volume().size());
    for (std::int64_t i = 0; i < (size - written) / Data_Length; i++)
        volume.data(make(i));
    return volume.volume();
}

std::string worst_series(std::int64_t size)
{
    constexpr std::int64_t Entry_Size = 89;
    VolumeBuilder volume = begin_station("XX");
    volume.header('T').blockette(70, b070('P', "2020,001", ""));
    for (std::int64_t i = 0; i < size / 2 / Entry_Size; i++)
        volume.blockette(74, b074({.first = {minute(i), Number}, .last = {minute(i), Number}}));
    return fill(std::move(volume), size, record_at);
}

std::string worst_spans(std::int64_t size)
{
    constexpr int Most = 180; // entries that the length of a blockette allows
    constexpr int Per_Record = 74;
    constexpr std::int64_t Both_Size = 2 * 54;
    VolumeBuilder volume = begin_station("XX");
    const std::int64_t count = size / Both_Size;
    volume.header('V');
    for (std::int64_t i = 0; i < count;) {
        std::vector<SpanEntry> entries;
        for (; i < count && entries.size() < Most; i++)
            entries.push_back({minute(2 * i), minute(2 * i + 2), Number});
        volume.blockette(12, b012(entries));
    }
    volume.header('T');
    for (std::int64_t i = 0; i < count; i++) {
        if (i % Per_Record == 0)
            volume.sequence(Number);
        volume.blockette(70, b070('P', minute(2 * i + 1), minute(2 * i + 2)));
    }
    return volume.volume();
}

std::string worst_networks(std::int64_t size)
{
    const auto letter = [](std::int64_t i) { return static_cast<char>(1 + i % 255); };
    return fill(begin_station(""), size, [&](std::int64_t i) {
        DataRecord record = record_at(size - i); // from back to front
        record.network = {letter(i), letter(i / 255)};
        return record;
    });
}

std::string worst_repeats(std::int64_t size)
{
    constexpr std::int64_t Round = 256;
    return fill(begin_station("XX"), size, [](std::int64_t i) { return record_at(i % Round); });
}

} // namespace

std::string worst_data(std::string_view kind, std::int64_t size)
{
    if (kind == "series")
        return worst_series(size);
    if (kind == "span")
        return worst_spans(size);
    if (kind == "networks")
        return worst_networks(size);
    return kind == "repeats" ? worst_repeats(size) : std::string();
}
