// Data format identification.
#pragma once

#include <quarl/records.h>

#include <array>
#include <cstddef>
#include <set>
#include <string>
#include <string_view>

namespace quarl
{

/// A known data format.
struct SeedFormat {
    std::string_view seed; ///< name as a data format dictionary spells it
    std::string_view css;  ///< CSS 3.0 waveform data type code
    int size;              ///< bytes per sample unit
    int encoding = -1;     ///< that decodes it, by the codes of Blockette 1000; -1: none
};

/// What a run remembers of the formats that it met. A row of -1 has not been asked for.
struct FormatsMet {
    FormatsMet() { encoding_rows.fill(-1); }

    std::string last_name; ///< a format's name as it stands, before aliases
    int last_row = -1;     ///< its row: data records ask for the same one again and again
    std::array<int, 256> encoding_rows;                   ///< by encoding format code
    std::set<std::string, std::less<>> reported_channels; ///< whose formats differ
};

/// The row of `seed_formats` that is named `name`, after the aliases of the parameter file; 0 when
/// the format is unknown.
int sd_data_type(std::string_view name);

/// The row of `seed_formats` for the `type` of a data record; any number that is no row gives row
/// 0, whose name is empty.
const SeedFormat &seed_format(int type);

/// What a data record's Blockette 1000 says.
struct B1000 { // what is copied together stands apart: loading two stores as one is slow
    int encoding = 0;
    int index = 0;         ///< row of seed_formats; 0 when the encoding has no name
    int record_length = 0; ///< bytes
    bool usable = false;   ///< there is one; the other members mean something
    int word_order = 0;
};

/// The data format name of an encoding format code of Blockette 1000, or null.
const char *encoding_name(int encoding);

/// Reads the Blockette 1000 of a data record of which `available` bytes, from its byte 0 on, may be
/// read.
B1000 parse_b1000(const char *record, std::size_t available);

/// Reports, once per channel and run, that dictionary and Blockette 1000 name different data
/// formats.
void b030_problem(const blk_dh_t &header, std::string_view dictionary_name,
                  std::string_view b1000_name);

} // namespace quarl
