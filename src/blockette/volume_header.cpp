// Volume index: volume identifier, station header index, time span index.
#include "blockette/blockette.h"
#include "blockette/scan.h"

namespace quarl
{

void parse_010(blk_010_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    blk->version = scan_double(&in, 4);
    blk->rec_len = scan_int(&in, 2);
    scan_var_str(&in, blk->beg_time);
    scan_var_str(&in, blk->end_time);
    scan_var_str(&in, blk->volume_time);
    scan_var_str(&in, blk->originating_org);
    scan_var_str(&in, blk->label);
}

void parse_011(blk_011_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    blk->num_stn = scan_listed_count(&in, 3);
    blk->num_stn_held = entries_held(in, blk->length, blk->num_stn, 11);
    allocate(blk->stn_id, blk->num_stn * static_cast<int>(blk_011_t::Slot), "blk->stn_id");
    allocate(blk->seq_num, blk->num_stn, "blk->seq_num");
    for (int i = 0; i < blk->num_stn; ++i) {
        const std::string_view station = scan_text(&in, 5);
        std::copy(station.begin(), station.end(), &blk->stn_id[i * blk_011_t::Slot]);
        blk->seq_num[i] = scan_int(&in, 6);
    }
}

void parse_012(blk_012_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    blk->num_span_promised = scan_listed_count(&in, 4);
    blk->num_span = scan_fixed_list(blk->num_span_promised, blk_012_t::Capacity, [&](auto &&keep) {
        blk->num_span_held += begins_within(in, blk->length);
        scan_var_str(&in, keep(blk->beg_span));
        scan_var_str(&in, keep(blk->end_span));
        keep(blk->seq_num) = scan_int(&in, 6);
    });
    blk->num_span_held = std::min(blk->num_span_held, blk->num_span);
}

} // namespace quarl
