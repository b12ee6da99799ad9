#include "blockette/sdblknam.h"

#include "platform/elog.h"

#include <algorithm>
#include <array>

namespace quarl
{

namespace
{

constexpr int Nseed = 49;

// Blanks at the end of names are part of them: listing and statistics print them as they stand.
constexpr std::array<Sdinfo, Nseed> sdinfo = {{
    {-1, 48, "Data"},
    {5, 14, "Field Volume Identifier "},
    {8, 27, "Telemetry Volume Identifier "},
    {10, 15, "Volume Identifier "},
    {11, 21, "Volume Station Header Index "},
    {12, 19, "Volume Time Span Index"},
    {30, 18, "Data Format Dictionary "},
    {31, 16, "Comment Description "},
    {32, 12, "Cited Source Dictionary"},
    {33, 11, "Generic Abbreviation"},
    {34, 11, "Units Abbreviation"},
    {35, 33, "Beam Configuration "},
    {41, 23, "FIR Dictionary"},
    {43, 49, "Response (Poles and Zeros) Dictionary"},
    {44, 27, "Response (Coefficients) Dictionary"},
    {45, 22, "Response List Dictionary"},
    {46, 22, "Generic Response Dictionary"},
    {47, 53, "Decimation Dictionary Blockette"},
    {48, 38, "Channel Sensitivity/Gain Dictionary"},
    {50, 61, "Station Identifier"},
    {51, 19, "Station Comment"},
    {52, 100, "Channel Identifier"},
    {53, 46, "Response (Poles and Zeros)"},
    {54, 24, "Response (Coefficients) "},
    {55, 19, "FAP Response List"},
    {56, 19, "Generic Response"},
    {57, 51, "Decimation"},
    {58, 35, "Channel Sensitivity/Gain"},
    {59, 18, "Channel Comment"},
    {60, 17, "Response Reference"},
    {61, 21, "FIR Response"},
    {62, 105, "Polynomial response map"},
    {70, 10, "Time Span Identifier"},
    {71, 40, "Hypocenter Information"},
    {72, 49, "Event Phases"},
    {73, 30, "Time Span Data Start Index"},
    {74, 47, "Time Series Index"},
    {100, 12, "Sample Rate"},
    {200, 28, "Generic Event Detection"},
    {201, 36, "Murdock Event Detection"},
    {202, 0, "Log-Z Event Detection"},
    {300, 32, "Step Calibration"},
    {310, 32, "Sine Calibration "},
    {320, 28, "Pseudo-random Calibration "},
    {390, 28, "Generic Calibration"},
    {395, 16, "Calibration Abort "},
    {400, 16, "Beam "},
    {405, 6, "Beam Delay"},
    {1000, 8, "Data Only SEED"},
}};
static_assert(std::is_sorted(sdinfo.begin(), sdinfo.end(),
                             [](const Sdinfo &a, const Sdinfo &b) { return a.id < b.id; }));

} // namespace

const Sdinfo *find_sdinfo(int type)
{
    const auto *row = std::lower_bound(sdinfo.begin(), sdinfo.end(), type,
                                       [](const Sdinfo &a, int id) { return a.id < id; });
    return row != sdinfo.end() && row->id == type ? row : nullptr;
}

std::string_view sdblknam(int type)
{
    if (const Sdinfo *row = find_sdinfo(type))
        return row->name;
    elog_log<MessageKind::blockette_unknown, "sdblknam: Unknown blockette type %d\n">(0, type);
    return "Unknown Type";
}

int sdminsz(int type)
{
    if (const Sdinfo *row = find_sdinfo(type))
        return row->minsz;
    elog_log<MessageKind::blockette_unknown, "sdminsz: Unknown blockette type %d\n">(0, type);
    return 0;
}

} // namespace quarl
