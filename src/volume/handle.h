// The read handle: the input stream and the dictionaries that a volume's headers fill.
#pragma once

#include "blockette/pfree.h"
#include "platform/containers.h"
#include "platform/keyed_hash.h"
#include "volume/item_access.h"
#include "volume/item_buffer.h"
#include "volume/rseed.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <quarl/item.h>
#include <quarl/options.h>
#include <string>

namespace quarl
{

/// Station, channel and location code, padded with NULs; the key of both sorted sets.
struct Codes {
    std::array<std::uint64_t, 2> words{};
    bool operator==(const Codes &) const = default;
};

struct CodesHash {
    std::size_t operator()(const Codes &codes) const { return keyed_hash(codes.words); }
    static std::size_t place(const Codes &codes)
    {
        constexpr std::uint64_t Odd = 0x9E3779B97F4A7C15;
        const std::uint64_t hash = (codes.words[0] * Odd ^ codes.words[1]) * Odd;
        return hash ^ hash >> 47;
    }
};

/// The key of a channel; an empty channel or location code leaves its part out. The texts are
/// NUL-padded, and a station code has at most five characters in every layout.
inline Codes pack(const char (&stn)[Station_Size], const char (&chan)[Channel_Id_Size],
                  const char (&loc)[Location_Size])
{
    static_assert(Channel_Id_Size + Location_Size <= sizeof(std::uint64_t));
    Codes codes;
    std::memcpy(&codes.words[0], stn, sizeof codes.words[0]);
    std::uint32_t channel = 0;
    std::memcpy(&channel, chan, Channel_Id_Size);
    codes.words[1] = std::uint64_t{channel} << 32 | static_cast<unsigned char>(loc[0]) << 8 |
                     static_cast<unsigned char>(loc[1]);
    return codes;
}

/// One channel epoch of the channel dictionary, from a channel identifier.
struct rec_len_t {
    char stn[Station_Size] = "";
    char loc_id[Location_Size] = "";
    char chan_id[Channel_Id_Size] = "";
    double start = 0.0;                 ///< epoch seconds
    double end = 0.0;                   ///< epoch seconds, exclusive
    int len = 0;                        ///< data record length in bytes
    char format[Format_Name_Size] = ""; ///< data format name; empty when its code is not defined

    [[nodiscard]] Codes code() const;
};

/// One station epoch, from a station identifier.
struct order_t {
    char stn[Station_Size] = "";
    double start = 0.0;
    double end = 0.0;
    int long_order = 0;
    int word_order = 0;

    [[nodiscard]] Codes code() const;
};

using RecList = Stbl<rec_len_t, Codes, CodesHash>;
using OrderList = Stbl<order_t, Codes, CodesHash>;
using FmtList = Tbl<std::string>; ///< data format names by data format identifier code

/// Lives for the whole run: the dictionaries persist over input files.
struct read_handle_t {
    read_handle_t() { ItemAccess{now}.room(&data_room); }
    read_handle_t(const read_handle_t &) = delete;
    read_handle_t &operator=(const read_handle_t &) = delete;

    std::unique_ptr<SeedInput> logical;
    int seq_num = 0;     ///< sequence number of the logical record of the last data record
    int sub_seq_num = 0; ///< number of the last data record within it
    RecList rec_list;
    OrderList order_list;
    FmtList fmt_list;
    char stn[Station_Size] = ""; ///< station of the last station identifier
    ItemBuffer item;             ///< the item being read, where the input does not hold it
    DataRoom data_room;          ///< for what is asked of a data record
    Item now;                    ///< the item being read, or read last
    bool framing = false;        ///< there is one
    bool cut = false;            ///< this file ended inside an item
    std::function<void(const Item &)> on_bad_item;
    int largest_record = Area_Size; ///< bytes of a data record
    bool reads_unlisted = false;    ///< types without a listing get records too
    std::function<void(const PassedOver &)> on_passed_over;
    Record unlisted; ///< the record of such a one
};

/// The orderings that the sorted sets stand for: codes as text (the channel before the location),
/// then 0 when the start of `a` lies in the span of `b`, else the sign of the difference of the
/// starts.
int rec_len_cmp(const rec_len_t &a, const rec_len_t &b);
int order_cmp(const order_t &a, const order_t &b);

/// Opens `path` ("-": standard input); one that cannot be opened ends the run.
std::unique_ptr<read_handle_t> seed_read(const std::string &path);

/// Registers a data format. A code that is defined again is complained about; the later name wins.
void update_fmt_list(FmtList &fmt_list, const blk_030_t &b030);

/// Registers a station epoch, unless it starts inside one that is known.
void update_order_list(OrderList &order_list, const blk_050_t &b050);

/// Registers a channel epoch of station `stn`, unless it starts inside one that is known.
void update_rec_list(RecList &rec_list, const char (&stn)[Station_Size], const FmtList &fmt_list,
                     const blk_052_t &b052);

/// Gives a data record the length and format of its channel at its `epoch`. 1; 0 with the header
/// unchanged when the channel is not known then.
int lookup_rec_list(const RecList &rec_list, blk_dh_t *header);

} // namespace quarl
