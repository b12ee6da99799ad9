#include "worst_responses.h"

#include "compose/blockette_text.h"
#include "compose/volume.h"

#include <algorithm>
#include <cstdio>
#include <random>

namespace
{

constexpr int Entries = 10;       ///< of the dictionary
constexpr int Coefficients = 700; ///< of each, as many as fit into a blockette

std::string digits(int number, int width)
{
    char text[16];
    std::snprintf(text, sizeof text, "%0*d", width, number);
    return text;
}

/// A FIR filter of the dictionary.
std::string entry(int key)
{
    std::string text = digits(key, 4) + "F" + digits(key, 1) + "~A001001" + digits(Coefficients, 4);
    for (int i = 0; i < Coefficients; i++) {
        char number[16];
        std::snprintf(number, sizeof number, "%+.7E", (i * Entries + key) % 97 / 97.0 - 0.5);
        text += number;
    }
    return text;
}

/// Stage 1 of an epoch: `count` references.
std::string references(int count, std::mt19937 *random)
{
    constexpr int Most = 99; // in one part of the list
    std::string text = digits((count + Most - 1) / Most, 2);
    for (int left = count; left > 0; left -= Most) {
        text += "01" + digits(std::min(left, Most), 2);
        for (int i = 0; i < std::min(left, Most); i++)
            text += digits(static_cast<int>((*random)() % Entries) + 1, 4);
    }
    return text;
}

} // namespace

std::string worst_responses(std::string_view kind, std::int64_t size)
{
    const int count = kind == "joined" ? 14 : kind == "references" ? 1000 : 0;
    if (count == 0)
        return {};
    VolumeBuilder volume(4096);
    volume.header('V').blockette(10, b010(2.4, 12, "2020,001", "", "", "", ""));
    volume.header('A').blockette(34, b034(1, "COUNTS", "Counts"));
    for (int key = 1; key <= Entries; key++)
        volume.blockette(41, entry(key));
    volume.header('S').blockette(50, b050({}));
    std::mt19937 random; // NOLINT: the same numbers in every run
    for (std::int64_t written = 0, i = 0; written < size; i++) {
        const std::pair<int, std::string> parts[] = {
            {52, b052({.start = "2020,001,00:00:" + digits(static_cast<int>(i % 60), 2)})},
            {60, references(count, &random)},
            {57, b057(1, 20, 1, 0, 0, 0)},
            {58, b058(1, 1, 1)}};
        for (const auto &[type, text] : parts) {
            volume.blockette(type, text);
            written += 7 + static_cast<std::int64_t>(text.size());
        }
    }
    return volume.volume();
}
