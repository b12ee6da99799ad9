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

/// What a run remembers of the formats that it met. A row of -1 has not been asked for.
struct FormatsMet {
    FormatsMet() { encoding_rows.fill(-1); }

    std::string last_name; ///< a format's name as it stands, before aliases
    int last_row = -1;     ///< its row: data records ask for the same one again and again
    std::array<int, 256> encoding_rows;                   ///< by encoding format code
    std::set<std::string, std::less<>> reported_channels; ///< whose formats differ
};

/// The row of the data format (blockette/data_format) that is named `name`, after the aliases of
/// the parameter file; 0 when the format is unknown.
int sd_data_type(std::string_view name);

/// What a data record's Blockette 1000 says.
struct B1000 { // what is copied together stands apart: loading two stores as one is slow
    int encoding = 0;
    int index = 0;         ///< row of the data format; 0 when the encoding has no name
    int record_length = 0; ///< bytes
    bool usable = false;   ///< there is one; the other members mean something
    int word_order = 0;
};

/// Reads the Blockette 1000 of a data record of which `available` bytes, from its byte 0 on, may be
/// read.
B1000 parse_b1000(const char *record, std::size_t available);

/// Reports, once per channel and run, that dictionary and Blockette 1000 name different data
/// formats.
void b030_problem(const blk_dh_t &header, std::string_view dictionary_name,
                  std::string_view b1000_name);

} // namespace quarl
