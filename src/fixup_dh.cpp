#include "fixup_dh.h"

#include "blockette/scan.h"
#include "platform/elog.h"
#include "platform/msd.h"
#include "platform/text.h"
#include "platform/timeconv.h"
#include "seed/seed.h"
#include "seedformat.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

namespace
{

constexpr int Default_Length = 4096;
constexpr int Correction_Applied =
    0x02; ///< activity flag: the time correction is in the start time
constexpr double Ticks_Per_Second = 10000.0;

/// Reads the binary fields of a header one after the other; beyond the end they are 0.
class BinaryCursor
{
public:
    BinaryCursor(std::string_view bytes, int swap) : bytes_(bytes), swap_(swap) {}

    int read4() { return int2int(next<4>(), swap_); }
    int read2() { return short2int(next<2>(), swap_); }
    int read1() { return char2int(next<1>()); }

private:
    template <std::size_t Size> const char *next()
    {
        static constexpr char Nothing[Size] = {};
        if (bytes_.size() < Size)
            return Nothing;
        const char *at = bytes_.data();
        bytes_.remove_prefix(Size);
        return at;
    }

    std::string_view bytes_;
    int swap_;
};

/// Samples per second of factor F and multiplier M: negative ones are divisors.
double sample_rate(double f, double m)
{
    if (f > 0)
        return m > 0 ? f * m : -f / m;
    return m > 0 ? -m / f : 1 / (f * m);
}

/// A corrupt time correction may be as large as an int.
int saturated_sum(int a, int b)
{
    constexpr std::int64_t Min = std::numeric_limits<int>::min();
    constexpr std::int64_t Max = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(std::int64_t{a} + b, Min, Max));
}

} // namespace

std::unique_ptr<blk_dh_t> new_dh()
{
    auto blk = allocate_one<blk_dh_t>("new_blk", 1, Where());
    init_dh(blk.get());
    return blk;
}

void init_dh(blk_dh_t *blk) { *blk = blk_dh_t(); }

int int2int(const char *src, int swap)
{
    std::int32_t value = 0;
    std::memcpy(&value, src, sizeof value);
    if (swap)
        swap4(&value, &value, 1);
    return value;
}

int short2int(const char *src, int swap)
{
    std::int16_t value = 0;
    std::memcpy(&value, src, sizeof value);
    if (swap)
        swap2(&value, &value, 1);
    return value;
}

int char2int(const char *src) { return static_cast<signed char>(*src); }

void parse_dh(blk_dh_t *blk, std::string_view buff)
{
    Cursor codes(buff);
    scan_str<5>(&codes, blk->stn_id);
    scan_str<2>(&codes, blk->loc_id);
    scan_str<3>(&codes, blk->chan_id);
    scan_str<2>(&codes, blk->network_code);
    const std::string_view binary = codes.rest();
    blk->byteswap = binary.size() >= 2 && year_is_swapped(binary.data()) ? -1 : 0;
    BinaryCursor in(binary, blk->byteswap);
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

void fix_dh(blk_dh_t *blk, int /*long_order*/, int /*word_order*/)
{
    blk->rate_f = word_comp(blk->rate_f);
    blk->rate_m = word_comp(blk->rate_m);
    if (blk->rate_f == 0 || blk->rate_m == 0)
        blk->rate_f = blk->rate_m = 0;
    blk->samp_rate = blk->rate_f == 0 ? 0.0 : sample_rate(blk->rate_f, blk->rate_m);
    put_text<"%04i,%03i,%02i:%02i:%02i.%04i">(blk->start_time, blk->year, blk->doy, blk->hour,
                                              blk->minutes, blk->sec_int, blk->sec_frac);
}

void fixup_dh(blk_dh_t *blk, const read_handle_t *handle)
{
    fix_dh(blk, 0, 0);
    if (!(blk->activity & Correction_Applied))
        blk->sec_frac = saturated_sum(blk->sec_frac, blk->time_cor);
    blk->epoch = h2e(blk->year, blk->doy, blk->hour, blk->minutes,
                     blk->sec_int + blk->sec_frac / Ticks_Per_Second);
    blk->format[0] = '\0';
    if (lookup_rec_list(handle->rec_list, blk))
        return;
    blk->length = Default_Length;
    if (Db.database == dbINVALID)
        return;
    copy_text(blk->format, lookup_seedformat(blk->stn_id, blk->chan_id, blk->epoch));
    if (!*blk->format)
        elog_complain<"No data format for '%s', '%s' at time %s (file #%d)\n">(
            0, blk->stn_id, blk->chan_id, blk->start_time, Tapefile);
}
