#include "worst_volumes.h"

#include "compose/blockette_text.h"
#include "compose/volume.h"
#include "worst_data.h"
#include "worst_responses.h"

#include <algorithm>
#include <array>
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

std::string digits(std::int64_t number, int width)
{
    char text[32];
    std::snprintf(text, sizeof text, "%0*lld", width, static_cast<long long>(number));
    return text;
}

/// A blockette that is nearly all promises: type and fields.
struct Promise {
    int type;
    std::string fields;
};

/// One of each type with a list, as long as its count can ask for. Its units, or else a key or
/// time, are others each time: what is alike is kept once.
Promise promise(std::int64_t i)
{
    const std::int64_t round = i / 17;
    const std::string units = digits(round % 1000, 3) + digits(round / 1000 % 1000, 3);
    const std::string key = digits(round % 10000, 4) + "~";
    const std::string reals(24, ' ');
    switch (i % 17) {
    case 0:
        return {11, "999"};
    case 1:
        return {12, "0999"};
    case 2:
        return {30, "~" + digits(round % 10000, 4) + "05099"};
    case 3:
        return {43, key + "A" + units + reals + "999"};
    case 4:
        return {43, key + "A" + units + reals + "000999"};
    case 5:
        return {44, key + "D" + units + "9999"};
    case 6:
        return {44, key + "D" + units + "00009999"};
    case 7:
        return {45, key + units + "9999"};
    case 8:
        return {46, key + units + "9999"};
    case 9:
        return {48, key + reals + "99"};
    case 10:
        return {53, "A01" + units + reals + "999"};
    case 11:
        return {54, "D01" + units + "00009999"};
    case 12:
        return {55, "01" + units + "9999"};
    case 13:
        return {56, "01" + units + "9999"};
    case 14:
        return {58, "01" + reals + "99"};
    case 15:
        return {61, "01~A" + units + "9999"};
    default:
        return {60, "990199"};
    }
}

/// One FIR filter in as many blockettes as it has coefficients, and epochs with 99 stages of 24
/// references each, to it or to a short one: in another order each time, as what is alike is kept
/// once.
std::string references(std::int64_t size)
{
    constexpr std::int64_t Part = 38;
    constexpr int Stages = 99;
    constexpr int Keys = 24;
    const std::int64_t parts = std::clamp<std::int64_t>(size / 2 / Part, 1, 9999);
    VolumeBuilder volume = begin_volume();
    volume.header('A').blockette(41, "0002F~A0010010001" + digits(1, 14));
    for (std::int64_t i = 0; i < parts; i++)
        volume.blockette(41, "0001F~A001001" + digits(parts, 4) + digits(i, 14));
    volume.header('S').blockette(50, b050({}));
    std::int64_t written = parts * Part;
    for (std::int64_t i = 0; written < size; i++) {
        std::string stages = digits(Stages, 2);
        for (int stage = 1; stage <= Stages; stage++) {
            stages += digits(stage, 2) + digits(Keys, 2);
            for (int key = 0; key < Keys; key++)
                stages += (i >> key & 1) == 0 ? "0001" : "0002";
        }
        volume.blockette(52, b052(channel(i))).blockette(60, stages);
        written += static_cast<std::int64_t>(stages.size());
    }
    return volume.volume();
}

/// Channels that a hash of their codes without a secret, modulo the number of buckets that as many
/// ask for, puts into one bucket: the first such in the order of their codes.
std::string colliding_codes(std::int64_t size)
{
    constexpr std::array<std::uint64_t, 7> Buckets = {2357,  5087,  10273, 20753,
                                                      42043, 85229, 172933};
    constexpr std::uint64_t Odd = 0x9E3779B97F4A7C15;
    constexpr std::uint64_t Station = 0x4C5251; // "QRL"
    const auto count = static_cast<std::uint64_t>(size) / (b052({}).size() + Blockette_Prefix);
    const std::uint64_t buckets = *std::lower_bound(Buckets.begin(), Buckets.end() - 1, count);
    std::uint64_t at = 0;
    const auto next = [&] {
        for (;; ++at) {
            std::array<unsigned char, 5> code{}; // channel, location
            for (std::uint64_t rest = at, k = 0; k < code.size(); ++k, rest /= 90)
                code[k] = static_cast<unsigned char>('!' + rest % 90);
            const std::uint64_t word = std::uint64_t{code[0]} << 32 | std::uint64_t{code[1]} << 40 |
                                       std::uint64_t{code[2]} << 48 | code[3] << 8 | code[4];
            const std::uint64_t hash = (Station * Odd ^ word) * Odd;
            if ((hash ^ hash >> 47) % buckets != 0)
                continue;
            ++at;
            const std::string text(code.begin(), code.end());
            return b052({.location = text.substr(3), .channel = text.substr(0, 3)});
        }
    };
    return fill(begin_station(), size, 52, [&](auto) { return next(); });
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
    if (kind == "promises") {
        VolumeBuilder volume = begin_station();
        volume.blockette(52, b052({}));
        for (std::int64_t i = 0, written = 0; written < size; i++) {
            const Promise one = promise(i);
            volume.blockette(one.type, one.fields);
            written += Blockette_Prefix + static_cast<std::int64_t>(one.fields.size());
        }
        return volume.volume();
    }
    if (kind == "long-filter")
        return references(size);
    if (kind == "codes")
        return colliding_codes(size);
    if (std::string data = worst_data(kind, size); !data.empty())
        return data;
    if (std::string responses = worst_responses(kind, size); !responses.empty())
        return responses;
    throw std::invalid_argument("bad kind 'worst-" + std::string(kind) + "'");
}
