// Station and channel identifiers, station comments.
#include "blockette/blockette.h"
#include "blockette/scan.h"
#include "platform/elog.h"
#include "platform/text.h"

#include <cmath>

namespace quarl
{

namespace
{

/// Appends the leading letters and digits of `from`; the new end of the name.
char *append_code(char *to, const char *from)
{
    while (is_alnum(*from))
        *to++ = *from++;
    return to;
}

bool near(double value, double target, double tolerance)
{
    return std::fabs(value - target) < tolerance;
}

/// The letter for an azimuth and a dip, or NUL. The first row that fits wins. The tolerances differ
/// on purpose: N takes 10 degrees around 180 but only 2 around 0, E takes a dip of up to 10.
char orientation(double az, double dip)
{
    const bool slanted = near(std::fabs(dip), 60, 2);
    if (near(std::fabs(dip), 90, 2) && near(az, 0, 2))
        return 'Z';
    if (near(dip, 0, 2) && (near(az, 180, 10) || near(az, 0, 2)))
        return 'N';
    if (near(dip, 0, 10) && (near(az, 90, 2) || near(az, 270, 2)))
        return 'E';
    if (slanted && (near(az, 0, 2) || near(az, 180, 2)))
        return 'A';
    if (slanted && (near(az, 120, 2) || near(az, 300, 2)))
        return 'B';
    if (slanted && (near(az, 240, 2) || near(az, 60, 2)))
        return 'C';
    return '\0';
}

constexpr int Standard_Exponent = 12;
constexpr int Min_Exponent = 8;

/// Exponents 8 to 11 pass with a remark; 12 is the one standard value, and what is outside becomes
/// it.
void check_record_length(blk_052_t *blk)
{
    if (blk->record_length < Min_Exponent || blk->record_length > Standard_Exponent) {
        elog_complain<MessageKind::record_length_illegal,
                      "%s:%s block length is %d which is out of the legal range 8-12: setting to "
                      "12\n">(0, blk->station, blk->chan_id, blk->record_length);
        blk->record_length = Standard_Exponent;
    } else if (blk->record_length != Standard_Exponent) {
        elog_complain<MessageKind::record_length_unusual,
                      "%s:%s has a non-standard block length %d\n">(0, blk->station, blk->chan_id,
                                                                    blk->record_length);
    }
}

constexpr double Networks_Since = 2.3;        ///< the format's version that brought network codes
constexpr std::size_t Skipped_Counts = 4 + 3; ///< numbers of channels and of station comments

} // namespace

void parse_050(blk_050_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_str<5>(&in, blk->station);
    scan_double(&in, 10, &blk->lat);
    scan_double(&in, 11, &blk->lon);
    scan_double(&in, 7, &blk->elev);
    in.advance(Skipped_Counts);
    scan_var_str(&in, blk->name);
    scan_int(&in, 3, &blk->net_id);
    scan_int(&in, 4, &blk->long_order);
    scan_int(&in, 2, &blk->word_order);
    scan_var_str(&in, blk->start_date);
    scan_var_str(&in, blk->end_date);
    scan_char(&in, &blk->update);
    in.may_end_before(Networks_Since);
    copy_text(blk->network_code, scan_raw(&in, 2));
    in.note_text(blk->network_code);
    parsing().blk_050 = *blk;
    parsing().channel_is_of_station = false;
}

void parse_051(blk_051_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_var_str(&in, blk->beg_time);
    scan_var_str(&in, blk->end_time);
    scan_int(&in, 4, &blk->comment_key);
    scan_int(&in, 6, &blk->comment_level);
    copy_text(blk->station, parsing().blk_050.station);
    copy_text(blk->network_code, parsing().blk_050.network_code);
}

void parse_052(blk_052_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_str<2>(&in, blk->loc_id);
    scan_str<3>(&in, blk->chan_id);
    scan_int(&in, 4, &blk->subchan_id);
    scan_int(&in, 3, &blk->instr_id);
    scan_var_str(&in, blk->comment);
    scan_int(&in, 3, &blk->units_signal);
    scan_int(&in, 3, &blk->units_cal);
    scan_double(&in, 10, &blk->lat);
    scan_double(&in, 11, &blk->lon);
    scan_double(&in, 7, &blk->elev);
    scan_double(&in, 5, &blk->depth);
    scan_double(&in, 5, &blk->azimuth);
    scan_double(&in, 5, &blk->dip);
    scan_int(&in, 4, &blk->format_id);
    scan_int(&in, 2, &blk->record_length_read);
    parsing().flaws.repeat(&blk->record_length_read, &blk->record_length);
    blk->record_length = blk->record_length_read;
    scan_double(&in, 10, &blk->sample_rate);
    scan_double(&in, 10, &blk->max_drift);
    scan_int(&in, 4, &blk->num_comments);
    scan_var_str(&in, blk->chan_flags);
    scan_var_str(&in, blk->start_date);
    scan_var_str(&in, blk->end_date);
    scan_char(&in, &blk->update);
    copy_text(blk->station, parsing().blk_050.station);
    copy_text(blk->network_code, parsing().blk_050.network_code);
    fix_channel(blk);
    check_record_length(blk);
    parsing().blk_052 = *blk;
    parsing().channel_is_of_station = true;
}

void fix_channel(blk_052_t *blk)
try {
    char *end = append_code(append_code(blk->channel, blk->chan_id), blk->loc_id);
    end[0] = '\0';
    if (blk->subchan_id <= 0)
        return;
    end[0] = static_cast<char>('0' + blk->subchan_id);
    end[1] = '\0';
    const std::string key = formatted<"%s:%s">(blk->station, blk->channel);
    if (const char letter = orientation(blk->azimuth, blk->dip))
        end[0] = letter;
    else
        elog_complain<MessageKind::orientation_unknown,
                      "Warning... Azimuth and Dip out of Range on %s,%s\n">(0, blk->station,
                                                                            blk->channel);
    setarr(parsing().Geoscope_channels, key, end[0]);
} catch (const std::bad_alloc &) {
    out_of_memory(Where(), 1, "Geoscope_channels");
}

} // namespace quarl
