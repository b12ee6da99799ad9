#include "volume/data_frame.h"

#include "blockette/data_format.h"
#include "blockette/data_header.h"
#include "blockette/parsing.h"
#include "platform/elog.h"
#include "volume/fixup_dh.h"
#include "volume/format_lookup.h"
#include "volume/item_access.h"
#include "volume/run.h"

#include <algorithm>
#include <cstring>
#include <tuple>
#include <utility>

namespace quarl
{

namespace
{

constexpr int Prefix = 7; ///< bytes behind the record header that were read to know what comes
constexpr int Data_Header =
    128; ///< bytes of a data record that are read before its length is known
constexpr int Fixed_Header = 48; ///< bytes of a record

void number_record(read_handle_t *handle, blk_dh_t *header)
{
    header->seq_num = handle->seq_num;
    header->sub_seq_num = handle->sub_seq_num;
}

void count_record(read_handle_t *handle)
{
    if (handle->seq_num == handle->logical->seq_num()) {
        ++handle->sub_seq_num;
        return;
    }
    handle->seq_num = handle->logical->seq_num();
    handle->sub_seq_num = 1;
}

/// Lets an embedded Blockette 1000 decide over the format and length that the dictionary gave.
/// Returns whether there is one.
bool apply_b1000(blk_dh_t *header, const char *record)
{
    const B1000 b1000 = parse_b1000(record, Record_Header + Data_Header);
    if (b1000.usable) {
        header->encoding = b1000.encoding;
        header->word_order = b1000.word_order;
    }
    const int dictionary = sd_data_type(header->format);
    header->type = b1000.index != 0 ? b1000.index : dictionary;
    if (b1000.index != 0 && dictionary != 0 && dictionary != b1000.index)
        b030_problem(*header, header->format, encoding_name(b1000.encoding));
    if (b1000.usable && b1000.record_length != header->length) {
        elog_complain<MessageKind::record_lengths_differ,
                      "different record sizes in 030 blockette (%d) and 1000 blockette (%d)">(
            0, header->length, b1000.record_length);
        header->length = b1000.record_length;
    }
    return b1000.usable;
}

void check_length(const read_handle_t &handle, int length)
{
    if (length > handle.largest_record)
        elog_die<MessageKind::item_too_large,
                 "Data blockette size = %d: too large for internal buffer.\n">(0, length);
}

/// Reads what follows the prefix of a data record up to the end of its header. Returns the record
/// behind the fixed record header: where the input's buffer holds it, else in the item's. Null when
/// the input ends.
const char *read_data_header(read_handle_t *handle)
{
    SeedInput *in = handle->logical.get();
    constexpr int Rest = Data_Header - Prefix;
    if (char *record = record_in_place(in, Record_Header + Prefix, Rest)) {
        std::memcpy(record, handle->item.record(), Record_Header);
        return record;
    }
    const int whole = read_open_remainder(in, handle->item.write(Prefix, Rest), Rest);
    if (whole)
        return handle->item.record();
    if (is_cut(handle))
        elog_complain<MessageKind::item_cut,
                      "Unexpected end of file reading data header File #%d\n">(1, run().Tapefile);
    return nullptr;
}

/// Reads a data record's bytes behind its header. A record that the input's buffer holds stays
/// there, since copying it would take a tenth of the time of a listing; another is gathered in the
/// item's. Returns where it is; null when the input ends.
const char *read_data(read_handle_t *handle, const char *record, int length)
{
    SeedInput *in = handle->logical.get();
    check_length(*handle, length);
    set_record_length(in, length);
    const int rest = length - Record_Header - Data_Header;
    if (record != handle->item.record()) {
        if (pass_held(in, rest))
            return record;
        std::memcpy(handle->item.write(0, Data_Header), record + Record_Header, Data_Header);
    }
    tell_if_cut(in);
    if (rest > 0 && !read_remainder(in, handle->item.write(Data_Header, rest), rest)) {
        if (is_cut(handle))
            elog_complain<MessageKind::item_cut,
                          "Unexpected end of file reading data record File #%d.\n">(1,
                                                                                    run().Tapefile);
        return nullptr;
    }
    handle->item.end_item(std::max(length - Record_Header, Data_Header));
    return handle->item.record();
}

/// What the two ways of reading a data record begin with: its header, without what others know.
blk_dh_t *begin_header(read_handle_t *handle, const char *bytes, Record *record)
{
    auto made = new_dh();
    blk_dh_t *header = made.get();
    parse_dh(header, {bytes + Record_Header, Data_Header});
    *record = Record(made.release(), FreeBlk{Data_Record});
    header->quality_indicator = handle->logical->type_code();
    number_record(handle, header);
    return header;
}

void find_data(blk_dh_t *header, const char *bytes)
{
    header->raw = bytes;
    if (header->beg_data >= 0 && header->beg_data < header->length)
        header->data = bytes + header->beg_data;
}

/// The fraction of a second that the record holds is one, before any correction. The text of one
/// above 9999, which ends with the fourth digit, would look like a time.
bool has_fraction(const blk_dh_t &header)
{
    constexpr int Correction_Applied = 0x02;
    constexpr int Last = 9999;
    const std::int64_t stored = std::int64_t{header.sec_frac} -
                                (header.activity & Correction_Applied ? 0 : header.time_cor);
    return stored >= 0 && stored <= Last;
}

} // namespace

bool is_cut(read_handle_t *handle)
{
    handle->cut = handle->logical->ending() != Ending::stop;
    return handle->cut;
}

int frame_data(read_handle_t *handle, Record *record, int *type)
{
    *type = Data_Record;
    ItemAccess item{handle->now};
    item.type(Data_Record, 0);
    count_record(handle);
    const char *bytes = read_data_header(handle);
    if (!bytes)
        return 0;
    blk_dh_t *header = begin_header(handle, bytes, record);
    (void)fixup_dh(header, handle);
    (void)apply_b1000(header, bytes);
    bytes = read_data(handle, bytes, header->length);
    if (!bytes)
        return 0;
    find_data(header, bytes);
    item.data(header, bytes, handle->logical->header());
    return 1;
}

int frame_data_strictly(read_handle_t *handle, Record *record, int *type)
{
    *type = Data_Record;
    ItemAccess item{handle->now};
    item.type(Data_Record, 0);
    count_record(handle);
    SeedInput *in = handle->logical.get();
    HeldRecord held = hold_record(in, Record_Header + Data_Header);
    if (!held.bytes)
        return 0;
    std::memcpy(held.bytes, handle->item.record(), Record_Header);
    blk_dh_t *header = begin_header(handle, held.bytes, record);
    take_unsigned(header);
    const std::pair stored(header->rate_f, header->rate_m);
    const bool is_described = fixup_dh(header, handle);
    std::tie(header->rate_f, header->rate_m) = stored; // where one is 0 the listing shows two
    if (!has_fraction(*header))
        header->start_time[0] = '\0';
    const bool has_length = apply_b1000(header, held.bytes) || is_described;
    check_length(*handle, header->length);
    held = hold_record(in, header->length);
    if (!held.bytes)
        return 0;
    pass_record(in, header->length);
    tell_if_cut(in);
    find_data(header, held.bytes);
    item.data(header, held.bytes, in->header());
    item.missing(header->length - held.present);
    Flaws &flaws = parsing().flaws;
    flaws.clear();
    if (held.present < Fixed_Header) {
        note_missing(*header, held.present, &flaws);
        flaws.cut = true;
    }
    if (held.present < header->length && !has_length)
        flaws.add(&header->length, Absence::cut);
    item.flaws(&flaws);
    return 1;
}

} // namespace quarl
