#include "blockette/data_header.h"

#include "blockette/parsing.h"
#include "blockette/scan.h"
#include "platform/allocate.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace quarl
{

namespace
{

constexpr std::size_t Header_Size = 40; ///< bytes of the fixed header behind the record's first 8

/// Reads a code of Len characters into `to`, which is zero, without surrounding blanks; returns
/// what follows. Eight bytes may be read. Nearly all codes are ASCII with blanks at the end at
/// most: these are trimmed in a register, all characters at once, since one by one would cost a
/// data record 20 ns.
template <int Len, std::size_t N> const char *read_code(const char *from, char (&to)[N])
{
    constexpr std::size_t Stored = std::min<std::size_t>(N, 8);
    constexpr std::uint64_t Ones = 0x0101010101010101 >> 8 * (8 - Len);
    constexpr std::uint64_t Blanks = ' ' * Ones;
    std::uint64_t word = 0;
    std::memcpy(&word, from, sizeof word);
    word &= 0xFF * Ones;
    const std::uint64_t above_blank = (word + (0x7F - ' ') * Ones) >> 7 & Ones;
    const std::uint64_t kept = above_blank * 0xFF;
    const bool ascii = (word & 0x80 * Ones) == 0;
    const bool at_the_front = (kept & (kept + 1)) == 0;
    const bool then_blank = (word & ~kept) == (Blanks & ~kept);
    if (std::endian::native == std::endian::little && ascii && at_the_front && then_blank) {
        word &= kept;
        std::memcpy(to, &word, Stored);
    } else {
        Cursor field({from, Len});
        scan_str<Len>(&field, to);
    }
    return from + Len;
}

/// Reads the binary fields of a header one after the other.
class BinaryCursor
{
public:
    BinaryCursor(const char *at, int swap) : at_(at), swap_(swap) {}

    int read4() { return int2int(std::exchange(at_, at_ + 4), swap_); }
    int read2() { return short2int(std::exchange(at_, at_ + 2), swap_); }
    int read1() { return char2int(std::exchange(at_, at_ + 1)); }

private:
    const char *at_;
    int swap_;
};

} // namespace

std::unique_ptr<blk_dh_t> new_dh()
{
    std::unique_ptr<blk_dh_t> blk = std::move(parsing().spare);
    if (!blk)
        return allocate_one<blk_dh_t>("new_blk", 1, Where());
    init_dh(blk.get());
    return blk;
}

void free_dh(blk_dh_t *blk)
{
    std::unique_ptr<blk_dh_t> owned(blk);
    if (Parsing *state = Current<Parsing>::find())
        state->spare = std::move(owned);
}

void init_dh(blk_dh_t *blk) { std::construct_at(blk); }

void parse_dh(blk_dh_t *blk, std::string_view buff)
{
    char padded[Header_Size] = {}; // a header that is cut short reads zeros
    const char *at = buff.data();
    if (buff.size() < Header_Size) {
        buff.copy(padded, Header_Size);
        at = padded;
    }
    at = read_code<5>(at, blk->stn_id);
    at = read_code<2>(at, blk->loc_id);
    at = read_code<3>(at, blk->chan_id);
    at = read_code<2>(at, blk->network_code);
    blk->byteswap = year_is_swapped(at) ? -1 : 0;
    BinaryCursor in(at, blk->byteswap);
    blk->year = in.read2();
    blk->doy = in.read2();
    blk->hour = in.read1();
    blk->minutes = in.read1();
    blk->sec_int = in.read1();
    (void)in.read1();
    blk->sec_frac = in.read2();
    blk->nsamps = in.read2();
    blk->rate_f = in.read2();
    blk->rate_m = in.read2();
    blk->activity = in.read1();
    blk->io_flags = in.read1();
    blk->quality = in.read1();
    blk->blks_fol = in.read1();
    blk->time_cor = in.read4();
    blk->beg_data = in.read2();
    blk->beg_blks = in.read2();
}

void take_unsigned(blk_dh_t *blk)
{
    blk->nsamps &= 0xFFFF;
    blk->beg_data &= 0xFFFF;
    blk->beg_blks &= 0xFFFF;
    blk->blks_fol &= 0xFF;
}

void note_missing(const blk_dh_t &blk, int size, Flaws *flaws)
{
    const struct {
        const void *value;
        int end; ///< bytes of the record that it needs
    } needs[] = {
        {blk.stn_id, 13},     {blk.loc_id, 15},    {blk.chan_id, 18},   {blk.network_code, 20},
        {blk.start_time, 30}, {&blk.nsamps, 32},   {&blk.rate_f, 34},   {&blk.rate_m, 36},
        {&blk.samp_rate, 36}, {&blk.activity, 37}, {&blk.io_flags, 38}, {&blk.quality, 39},
        {&blk.blks_fol, 40},  {&blk.time_cor, 44}, {&blk.beg_data, 46}, {&blk.beg_blks, 48},
    };
    for (const auto &need : needs)
        if (need.end > size)
            flaws->add(need.value, Absence::cut);
}

} // namespace quarl
