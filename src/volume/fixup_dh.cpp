#include "volume/fixup_dh.h"

#include "platform/calendar.h"
#include "platform/elog.h"
#include "platform/number.h"
#include "platform/text.h"
#include "volume/run.h"
#include "volume/seedformat.h"

namespace quarl
{

namespace
{

constexpr int Default_Length = 4096;
constexpr int Correction_Applied =
    0x02; ///< activity flag: the time correction is in the start time
constexpr double Ticks_Per_Second = 10000.0;

/// Samples per second of factor F and multiplier M: negative ones are divisors.
double sample_rate(double f, double m)
{
    if (f > 0)
        return m > 0 ? f * m : -f / m;
    return m > 0 ? -m / f : 1 / (f * m);
}

} // namespace

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

bool fixup_dh(blk_dh_t *blk, const read_handle_t *handle)
{
    fix_dh(blk, 0, 0);
    if (!(blk->activity & Correction_Applied))
        blk->sec_frac = saturated_sum(blk->sec_frac, blk->time_cor); // it may be corrupt
    blk->epoch = h2e(blk->year, blk->doy, blk->hour, blk->minutes,
                     blk->sec_int + blk->sec_frac / Ticks_Per_Second);
    blk->format[0] = '\0';
    if (lookup_rec_list(handle->rec_list, blk))
        return true;
    blk->length = Default_Length;
    if (run().Db.database == dbINVALID)
        return false;
    copy_text(blk->format, lookup_seedformat(blk->stn_id, blk->chan_id, blk->epoch));
    if (!*blk->format)
        elog_complain<MessageKind::format_not_in_database,
                      "No data format for '%s', '%s' at time %s (file #%d)\n">(
            0, blk->stn_id, blk->chan_id, blk->start_time, run().Tapefile);
    return false;
}

} // namespace quarl
