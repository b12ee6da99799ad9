#include "blockette/data_format.h"

#include <algorithm>
#include <array>

namespace quarl
{

namespace
{

constexpr std::array<SeedFormat, 18> Formats = {{
    {"", "**", 0},
    {"32-Bit Integer Format", "t4", 4, 3, true},
    {"SUN IEEE integer", "t4", 4, 3},
    {"ASRO Gain-Ranged Format", "t4", 4},
    {"SRO Gain-Ranged Format", "t4", 4, 30},
    {"CDSN Gain-Ranged Format", "t4", 4, 16, true},
    {"DWWSSN SUN IEEE short integer", "t4", 4, 1, true},
    {"DWWSSN Integer Format", "t4", 4, 32},
    {"Steim Integer Compression Format", "t4", 4, 10, true},
    {"Steim2 Integer Compression Format", "t4", 4, 11, true},
    {"IEEE single precision real", "t4", 4, 4, true},
    {"SUN IEEE single precision real", "t4", 4, 4},
    {"DWWSSN demultiplexed short (16 bit) 68000 integer", "t4", 4, 32},
    {"Geoscope gain-range on 3 bits", "t4", 12, 13},
    {"Geoscope-3 byte (switched gain)", "t4", 12, 12},
    {"Geoscope gain range on 4 bits", "t4", 12, 14},
    {"ASCII RefTek Log Files, State of Health", "as", 1, 0},
    {"USNSN Integer Compression", "t4", 4, 15, true},
}};

} // namespace

const SeedFormat &seed_format(int type)
{
    return Formats[type > 0 && static_cast<std::size_t>(type) < Formats.size() ? type : 0];
}

int find_seed_format(std::string_view name)
{
    const auto *row = std::find_if(Formats.begin(), Formats.end(),
                                   [&](const SeedFormat &format) { return format.seed == name; });
    return row == Formats.end() ? 0 : static_cast<int>(row - Formats.begin());
}

std::string_view encoding_name(int encoding)
{
    const auto *row = std::find_if(Formats.begin(), Formats.end(), [&](const SeedFormat &format) {
        return format.names_encoding && format.encoding == encoding;
    });
    return row == Formats.end() ? std::string_view() : row->seed;
}

} // namespace quarl
