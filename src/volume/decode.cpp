#include "volume/decode.h"

#include "blockette/msd.h"
#include "platform/elog.h"
#include "volume/run.h"

#include <algorithm>
#include <array>

namespace quarl
{

namespace
{

constexpr int Nseed_formats = 18;

constexpr std::array<SeedFormat, Nseed_formats> seed_formats = {{
    {"", "**", 0},
    {"32-Bit Integer Format", "t4", 4, 3},
    {"SUN IEEE integer", "t4", 4, 3},
    {"ASRO Gain-Ranged Format", "t4", 4},
    {"SRO Gain-Ranged Format", "t4", 4, 30},
    {"CDSN Gain-Ranged Format", "t4", 4, 16},
    {"DWWSSN SUN IEEE short integer", "t4", 4, 1},
    {"DWWSSN Integer Format", "t4", 4, 32},
    {"Steim Integer Compression Format", "t4", 4, 10},
    {"Steim2 Integer Compression Format", "t4", 4, 11},
    {"IEEE single precision real", "t4", 4, 4},
    {"SUN IEEE single precision real", "t4", 4, 4},
    {"DWWSSN demultiplexed short (16 bit) 68000 integer", "t4", 4, 32},
    {"Geoscope gain-range on 3 bits", "t4", 12, 13},
    {"Geoscope-3 byte (switched gain)", "t4", 12, 12},
    {"Geoscope gain range on 4 bits", "t4", 12, 14},
    {"ASCII RefTek Log Files, State of Health", "as", 1, 0},
    {"USNSN Integer Compression", "t4", 4, 15},
}};

constexpr int nseedname = 7;

/// Names of the encoding formats of Blockette 1000.
constexpr std::array<Xlat, nseedname> seedname = {{
    {"DWWSSN SUN IEEE short integer", 1},
    {"32-Bit Integer Format", 3},
    {"IEEE single precision real", 4},
    {"Steim Integer Compression Format", 10},
    {"Steim2 Integer Compression Format", 11},
    {"USNSN Integer Compression", 15},
    {"CDSN Gain-Ranged Format", 16},
}};

FormatsMet &formats_met() { return Current<FormatsMet>::get(); }

int find_format(std::string_view name)
{
    const auto *aliases = pfget_arr(run().Parameters, "data_type_aliases");
    if (const std::string *alias = aliases ? getarr(*aliases, name) : nullptr)
        name = *alias;
    const auto *row = std::find_if(seed_formats.begin(), seed_formats.end(),
                                   [&](const SeedFormat &format) { return format.seed == name; });
    return row == seed_formats.end() ? 0 : static_cast<int>(row - seed_formats.begin());
}

int encoding_index(int encoding)
{
    int &index = formats_met().encoding_rows[encoding];
    if (index < 0) {
        const char *name = xlatnum(encoding, seedname.data(), nseedname);
        index = name ? find_format(name) : 0;
    }
    return index;
}

} // namespace

int sd_data_type(std::string_view name)
{
    FormatsMet &met = formats_met();
    if (met.last_row < 0 || met.last_name != name) {
        met.last_row = find_format(name);
        met.last_name = name;
    }
    return met.last_row;
}

B1000 parse_b1000(const char *record, std::size_t available)
{
    constexpr int Preset_Length = 256;
    MsdHeader unpacked{record, available, 0, Preset_Length, 0};
    if (msdhdr_unpack(&unpacked) != 0)
        return {};
    return {unpacked.encoding, encoding_index(unpacked.encoding), unpacked.record_length, true,
            unpacked.word_order};
}

const SeedFormat &seed_format(int type)
{
    return seed_formats[type > 0 && type < Nseed_formats ? type : 0];
}

const char *encoding_name(int encoding) { return xlatnum(encoding, seedname.data(), nseedname); }

void b030_problem(const blk_dh_t &header, std::string_view dictionary_name,
                  std::string_view b1000_name)
{
    std::string channel =
        formatted<"%s_%s_%s%s%s">(header.network_code, header.stn_id, header.chan_id,
                                  std::string_view(*header.loc_id ? "_" : ""), header.loc_id);
    const auto [key, is_new] = formats_met().reported_channels.insert(std::move(channel));
    if (!is_new)
        return;
    elog_complain<MessageKind::formats_differ,
                  "\n*** Serious inconsistency in seed volume.\n"
                  "    For the channel %s, the 030 blockettes indicate the datatype\n"
                  "        %s\n"
                  "    but the blockette 1000 embedded in the data says the data is\n"
                  "        %s\n"
                  "    This inconsistency may cause problems.">(0, *key, dictionary_name,
                                                                b1000_name);
}

} // namespace quarl
