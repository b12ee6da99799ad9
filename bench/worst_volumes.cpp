#include "worst_volumes.h"

#include "compose/blockette_text.h"
#include "compose/volume.h"
#include "worst_data.h"
#include "worst_responses.h"

#include <cstdio>
#include <stdexcept>

namespace
{

constexpr std::int64_t Blockette_Prefix = 7;

VolumeBuilder begin_volume()
{
    VolumeBuilder volume(4096);
    volume.header('V').blockette(10, b010(2.4, 12, "2020,001", "", "", "", ""));
    return volume;
}

/// As many blockettes as make `size` bytes. `fields(i)` are those of the i-th.
template <class Fields>
std::string fill(VolumeBuilder volume, std::int64_t size, int type, Fields fields)
{
    for (std::int64_t i = 0, written = 0; written < size; i++) {
        const std::string text = fields(i);
        volume.blockette(type, text);
        written += Blockette_Prefix + static_cast<std::int64_t>(text.size());
    }
    return volume.volume();
}

VolumeBuilder begin_station()
{
    VolumeBuilder volume = begin_volume();
    volume.header('A').blockette(30, b030("Steim2 Integer Compression Format", 1, 50, {}));
    volume.header('S').blockette(50, b050({}));
    return volume;
}

/// Hour `number` counted back from the end of 2029, as a SEED time.
std::string hour_before_2030(std::int64_t number)
{
    constexpr std::int64_t Days = 365;
    constexpr std::int64_t Hours = 24;
    const std::int64_t day = number / Hours;
    char text[80];
    std::snprintf(text, sizeof text, "%04d,%03d,%02d", static_cast<int>(2029 - day / Days),
                  static_cast<int>(Days - day % Days),
                  static_cast<int>(Hours - 1 - number % Hours));
    return text;
}

/// The i-th of the location and channel codes of upper-case letters.
B052 channel(std::int64_t i)
{
    std::string codes(5, 'A');
    for (char &c : codes) {
        c = static_cast<char>('A' + i % 26);
        i /= 26;
    }
    return {.location = codes.substr(3), .channel = codes.substr(0, 3), .start = "2020,001"};
}

} // namespace

std::string worst_volume(std::string_view kind, std::int64_t size)
{
    if (kind == "records") // the volume identifier does not give an exponent
        return "000001V 0100000" + std::string(static_cast<std::size_t>(size), '0');
    if (kind == "counts")
        return fill(begin_volume(), size, 54, [](auto) { return "D0100200399999999"; });
    if (kind == "lengths") {
        VolumeBuilder volume = begin_volume();
        for (std::int64_t written = 0; written < size; written += Blockette_Prefix)
            volume.blockette(33, "0000", "");
        return volume.volume();
    }
    if (kind == "epochs")
        return fill(begin_station(), size, 52,
                    [](auto i) { return b052({.start = hour_before_2030(i)}); });
    if (kind == "channels")
        return fill(begin_station(), size, 52, [](auto i) { return b052(channel(i)); });
    if (std::string data = worst_data(kind, size); !data.empty())
        return data;
    if (std::string responses = worst_responses(kind, size); !responses.empty())
        return responses;
    throw std::invalid_argument("bad kind 'worst-" + std::string(kind) + "'");
}
