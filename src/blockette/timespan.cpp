// Time spans and events. These parsers have no abort rule: every field is read whatever came
// before.
#include "blockette/blockette.h"
#include "blockette/scan.h"
#include "platform/elog.h"

namespace quarl
{

namespace
{

constexpr double Networks_Since = 2.3; ///< the format's version that brought network codes

} // namespace

void parse_070(blk_070_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_char(&in, &blk->span_flag);
    scan_var_str(&in, blk->beg_time);
    scan_var_str(&in, blk->end_time);
}

void parse_071(blk_071_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_var_str(&in, blk->origin_time);
    scan_int(&in, 2, &blk->source_id);
    scan_double(&in, 10, &blk->lat);
    scan_double(&in, 11, &blk->lon);
    scan_double(&in, 7, &blk->depth);
    scan_listed_count(&in, 2, &blk->num_mags_promised);
    blk->num_mags = scan_fixed_list(blk->num_mags_promised, blk_071_t::Capacity, [&](auto &&keep) {
        blk->num_mags_held += begins_within(in, blk->length);
        scan_double(&in, 5, &keep(blk->mag));
        scan_var_str(&in, keep(blk->mag_type));
        scan_int(&in, 2, &keep(blk->mag_source));
    });
    blk->num_mags_held = std::min(blk->num_mags_held, blk->num_mags);
    scan_int(&in, 3, &blk->grn);
    scan_int(&in, 4, &blk->srn);
    scan_var_str(&in, blk->gregion);
}

void parse_072(blk_072_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_str<5>(&in, blk->stn_id);
    scan_str<2>(&in, blk->loc_id);
    scan_str<3>(&in, blk->chan_id);
    scan_var_str(&in, blk->arr_time);
    scan_double(&in, 10, &blk->amp);
    scan_double(&in, 10, &blk->period);
    scan_double(&in, 10, &blk->snr);
    scan_var_str(&in, blk->phase);
    scan_int(&in, 2, &blk->source);
    in.may_end_before(Networks_Since);
    scan_str<2>(&in, blk->network_code);
}

void parse_073(blk_073_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_listed_count(&in, 4, &blk->num_segs);
    if (blk->num_segs > blk_073_t::Capacity) {
        elog_die<MessageKind::too_many_segments, "ERROR(parse_073) - num_segs is too large: %i\n">(
            0, blk->num_segs);
    }
    for (int i = 0; i < blk->num_segs; ++i) {
        blk->num_segs_held += begins_within(in, blk->length);
        scan_str<5>(&in, blk->stn_id[i]);
        scan_str<2>(&in, blk->loc_id[i]);
        scan_str<3>(&in, blk->chan_id[i]);
        scan_var_str(&in, blk->series_start_time[i]);
        scan_int(&in, 6, &blk->seq_num[i]);
        scan_int(&in, 2, &blk->sub_seq_num[i]);
    }
}

void parse_074(blk_074_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_str<5>(&in, blk->stn_id);
    scan_str<2>(&in, blk->loc_id);
    scan_str<3>(&in, blk->chan_id);
    scan_var_str(&in, blk->series_start_time);
    scan_int(&in, 6, &blk->first_seq_num);
    scan_int(&in, 2, &blk->first_sub_seq_num);
    scan_var_str(&in, blk->series_end_time);
    scan_int(&in, 6, &blk->last_seq_num);
    scan_int(&in, 2, &blk->last_sub_seq_num);
    scan_listed_count(&in, 3, &blk->num_repeats_promised);
    blk->num_repeats =
        scan_fixed_list(blk->num_repeats_promised, blk_074_t::Capacity, [&](auto &&keep) {
            blk->num_repeats_held += begins_within(in, blk->length);
            scan_var_str(&in, keep(blk->rec_start_time));
            scan_int(&in, 6, &keep(blk->req_seq_num));
            scan_int(&in, 2, &keep(blk->req_sub_seq_num));
        });
    blk->num_repeats_held = std::min(blk->num_repeats_held, blk->num_repeats);
    in.may_end_before(Networks_Since);
    scan_str<2>(&in, blk->network_code);
}

} // namespace quarl
