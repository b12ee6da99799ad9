// The data formats that are known by name.
#pragma once

#include <string_view>

namespace quarl
{

/// A known data format.
struct SeedFormat {
    std::string_view seed;       ///< name as a data format dictionary spells it
    std::string_view css;        ///< CSS 3.0 waveform data type code
    int size;                    ///< bytes per sample unit
    int encoding = -1;           ///< that decodes it, by the codes of Blockette 1000; -1: none
    bool names_encoding = false; ///< this is the name of that encoding
};

/// The row of a data record's `type`; any number that is no row gives row 0, whose name is empty.
const SeedFormat &seed_format(int type);

/// The row that is named `name`; 0 when there is none.
int find_seed_format(std::string_view name);

/// The data format name of an encoding format code of Blockette 1000; empty when it has none.
std::string_view encoding_name(int encoding);

} // namespace quarl
