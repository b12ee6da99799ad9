// Volume index: volume identifier, station header index, time span index.
#include "blockette/blockette.h"
#include "blockette/scan.h"

namespace quarl
{

namespace
{

constexpr double Names_Since = 2.3; ///< the format's version that says who made a volume, and when
constexpr std::size_t Station_Entry = 5 + 6; ///< characters

} // namespace

void parse_010(blk_010_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_double(&in, 4, &blk->version);
    scan_int(&in, 2, &blk->rec_len);
    scan_var_str(&in, blk->beg_time);
    scan_var_str(&in, blk->end_time);
    parsing().version = blk->version;
    in.may_end_before(Names_Since);
    scan_var_str(&in, blk->volume_time);
    scan_var_str(&in, blk->originating_org);
    in.may_end(); // many writers leave out an empty label, even its mark
    scan_var_str(&in, blk->label);
}

void parse_011(blk_011_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_listed_count(&in, 3, &blk->num_stn);
    blk->num_stn_held = entries_held(in, blk->length, blk->num_stn, Station_Entry);
    allocate(blk->stn_id, blk->num_stn * static_cast<int>(blk_011_t::Slot), "blk->stn_id");
    allocate(blk->seq_num, blk->num_stn, "blk->seq_num");
    const int count = in.is_strict() ? blk->num_stn_held : blk->num_stn;
    for (int i = 0; i < count; ++i) {
        const std::string_view station = scan_text(&in, 5);
        char *slot = &blk->stn_id[i * blk_011_t::Slot];
        std::copy(station.begin(), station.end(), slot);
        in.note_text(slot);
        scan_int(&in, 6, &blk->seq_num[i]);
    }
    in.advance(Station_Entry * static_cast<std::size_t>(blk->num_stn - count));
}

void parse_012(blk_012_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_listed_count(&in, 4, &blk->num_span_promised);
    blk->num_span = scan_fixed_list(blk->num_span_promised, blk_012_t::Capacity, [&](auto &&keep) {
        blk->num_span_held += begins_within(in, blk->length);
        scan_var_str(&in, keep(blk->beg_span));
        scan_var_str(&in, keep(blk->end_span));
        scan_int(&in, 6, &keep(blk->seq_num));
    });
    blk->num_span_held = std::min(blk->num_span_held, blk->num_span);
}

} // namespace quarl
