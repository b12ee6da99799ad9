// What the parsers remember from one blockette to the next.
#pragma once

#include "blockette/flaws.h"
#include "platform/containers.h"
#include "platform/current.h"

#include <cstddef>
#include <memory>
#include <quarl/records.h>

namespace quarl
{

/// What is found out about one blockette.
struct BlocketteFound {
    int Bad_blkflag = 0;         ///< a field of the blockette being parsed is bad
    bool abandoned = false;      ///< the listing has given up the blockette
    std::size_t fields_size = 0; ///< bytes that the fields of the last blockette took
};

/// State of the parsers during one run.
struct Parsing : BlocketteFound {
    Parsing() { blk_050.network_code[0] = '\0'; }

    bool for_listing = true;            ///< as the listing wants it, or strictly
    bool input_cut = false;             ///< the input ends inside the blockette being parsed
    Flaws flaws;                        ///< of the last item, where it is not read for a listing
    double version = 2.4;               ///< of the format, as the last volume identifier has it
    blk_050_t blk_050;                  ///< the last station identifier; its texts are empty before
    blk_052_t blk_052;                  ///< the last channel identifier
    bool channel_is_of_station = false; ///< no station identifier came after that channel
    Arr<char> Geoscope_channels;     ///< last character of a subchannel's name by station:channel
    std::unique_ptr<blk_dh_t> spare; ///< the data record header released last: the next takes it
};

inline Parsing &parsing() { return Current<Parsing>::get(); }

} // namespace quarl
