#include "volume/seed.h"

#include "blockette/blockette.h"
#include "blockette/data_format.h"
#include "blockette/data_header.h"
#include "blockette/msd.h"
#include "blockette/sdblknam.h"
#include "platform/elog.h"
#include "platform/text.h"
#include "volume/fixup_dh.h"
#include "volume/format_lookup.h"
#include "volume/item_access.h"
#include "volume/resume.h"
#include "volume/run.h"

#include <algorithm>
#include <cstring>

namespace quarl
{

namespace
{

constexpr int Broken_Off = -1; ///< the item was given up, another one follows
constexpr int Data_Header =
    128; ///< bytes of a data record that are read before its length is known

/// A field was bad: the item's text is reported, and whoever reads may show more.
void report_bad_item(read_handle_t *handle, std::string_view text)
{
    elog_complain<MessageKind::blockette_bad, "Error at BLK%03d : %s\n">(0, handle->now.type(),
                                                                         up_to_nul(text));
    if (handle->on_bad_item)
        handle->on_bad_item(handle->now);
}

/// The input ended inside the item: true when that is a fault, and not what was asked for.
bool is_cut(read_handle_t *handle)
{
    handle->cut = handle->logical->ending() != Ending::stop;
    return handle->cut;
}

/// An item begins at the byte `at` of the current record.
void begin_item(read_handle_t *handle, int at)
{
    handle->framing = true;
    const SeedInput &in = *handle->logical;
    ItemAccess{handle->now}.begin(in, run().Tapefile, in.record_begin() + at);
}

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
void apply_b1000(blk_dh_t *header, const char *record)
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
    if (length > Area_Size)
        elog_die<MessageKind::item_too_large,
                 "Data blockette size = %d: too large for internal buffer.\n">(0, length);
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

int frame_data(read_handle_t *handle, Record *record, int *type)
{
    *type = Data_Record;
    ItemAccess item{handle->now};
    item.type(Data_Record, 0);
    count_record(handle);
    // The listing of a record that is shorter than what is read of it here goes astray behind it.
    if (handle->reads_unlisted)
        handle->logical->hold_header(Record_Header + Data_Header);
    const char *bytes = read_data_header(handle);
    if (!bytes)
        return 0;
    auto made = new_dh();
    blk_dh_t *header = made.get();
    parse_dh(header, {bytes + Record_Header, Data_Header});
    *record = Record(made.release(), FreeBlk{Data_Record});
    header->quality_indicator = handle->logical->type_code();
    number_record(handle, header);
    fixup_dh(header, handle);
    apply_b1000(header, bytes);
    bytes = read_data(handle, bytes, header->length);
    if (!bytes)
        return 0;
    header->raw = bytes;
    if (header->beg_data >= 0 && header->beg_data < header->length)
        header->data = bytes + header->beg_data;
    item.data(header, bytes, handle->logical->header());
    return 1;
}

/// A text of a dictionary, under its code.
void keep_text(Tbl<std::string> *tbl, int code, const char *text)
try {
    settbl(*tbl, code, std::string(text));
} catch (const std::bad_alloc &) {
    out_of_memory(Where(), 1, "abbreviation");
}

// What later items refer to is kept; the record is gone after its turn.
void keep(read_handle_t * /*handle*/, const blk_t & /*other*/) {}
void keep(read_handle_t *handle, const blk_010_t &b)
{
    setReadRecLen(handle->logical.get(), b.rec_len);
}
void keep(read_handle_t *handle, const blk_030_t &b) { update_fmt_list(handle->fmt_list, b); }
void keep(read_handle_t * /*handle*/, const blk_031_t &b)
{
    keep_text(&run().Tbl_031, b.comment_id, b.comment);
}
void keep(read_handle_t * /*handle*/, const blk_032_t &b)
{
    keep_text(&run().Tbl_032, b.source_id, b.author);
}
void keep(read_handle_t * /*handle*/, const blk_033_t &b)
{
    keep_text(&run().Tbl_033, b.abbrev_id, b.abbrev);
}
void keep(read_handle_t * /*handle*/, const blk_034_t &b)
{
    keep_text(&run().Tbl_034, b.unit_id, b.unit_name);
}
void keep(read_handle_t *handle, const blk_050_t &b)
{
    copy_text(handle->stn, b.station);
    update_order_list(handle->order_list, b);
}
void keep(read_handle_t *handle, const blk_052_t &b)
{
    update_rec_list(handle->rec_list, handle->stn, handle->fmt_list, b);
}

/// Hears nothing: the listing knows nothing of what is read.
class Deaf : public Host
{
    void hear(Message & /*message*/) override {}
};

/// Reads a blockette that the listing does not know.
void read_unlisted(read_handle_t *handle, int type)
{
    with_any_family(type, [&](auto family) {
        auto made = family.make();
        family.parse(made.get(), handle->item.text());
        if constexpr (requires { made->lookup_key; })
            keep_text(&run().Tbl_responses, made->lookup_key, made->response_name);
        handle->unlisted = Record(made.release(), FreeBlk{type});
    });
}

/// Reads of a blockette what the listing does not: all of it, or what stands behind what is listed.
void read_beyond_listing(read_handle_t *handle, record_t *listed, int type)
{
    handle->unlisted.reset();
    Deaf deaf;
    const Current<Host> host(deaf);
    const auto reread = [&](auto family) {
        auto *blk = static_cast<typename decltype(family)::Record *>(listed);
        if constexpr (requires { read_whole(blk, handle->item.text()); }) {
            parsing().Bad_blkflag = 0;
            read_whole(blk, handle->item.text());
        }
    };
    if (listed)
        with_family(type, reread);
    else
        read_unlisted(handle, type);
}

int frame_control(read_handle_t *handle, Record *record, int *type)
{
    const std::string_view prefix = up_to_nul({handle->item.area(), Prefix});
    *type = to_int(prefix.substr(0, 3));
    const int length = to_int(up_to_nul({handle->item.area() + 3, Prefix - 3}));
    ItemAccess item{handle->now};
    item.type(*type, length);
    if (length > Area_Size)
        elog_die<MessageKind::item_too_large,
                 "Blockette type %d size = %d: too large for internal buffer.\n">(0, *type, length);
    if (sdminsz(*type) > length)
        elog_complain<MessageKind::blockette_too_small,
                      "Blockette type %d size = %d: too small! (file #%d)\n">(0, *type, length,
                                                                              run().Tapefile);
    const int rest = std::max(length - Prefix, 0);
    if (!read_remainder(handle->logical.get(), handle->item.write(Prefix, rest), rest)) {
        if (broke_off(handle, *type))
            return Broken_Off;
        if (is_cut(handle))
            elog_complain<MessageKind::item_cut,
                          "Unexpected end of file reading blockette type %d file #%d\n">(
                1, *type, run().Tapefile);
        return 0;
    }
    handle->item.end_item(Prefix + rest);
    item.bytes(handle->item.text().substr(0, Prefix + rest));
    *record = parse_blk(handle->item.text(), *type);
    const bool listed_bad = parsing().Bad_blkflag != 0;
    if (handle->reads_unlisted)
        read_beyond_listing(handle, record->get(), *type);
    item.parsed(*record ? record->get() : handle->unlisted.get(), parsing().Bad_blkflag != 0,
                parsing().fields_size);
    if (*record && listed_bad)
        report_bad_item(handle, handle->item.text().substr(0, length >= 0 ? length : Area_Size));
    visit(record->get(), *type, [&](const auto &blk) { keep(handle, blk); });
    return 1;
}

} // namespace

Record parse_blk(std::string_view bytes, int type)
{
    parsing().Bad_blkflag = 0;
    parsing().fields_size = 0;
    Record record;
    const auto make = [&](auto made, auto parse) {
        parse(made.get(), bytes);
        record = Record(made.release(), FreeBlk{type});
    };
    if (type == Data_Record)
        make(new_dh(), parse_dh);
    else if (!with_family(type, [&](auto family) { make(family.make(), family.parse); }))
        elog_complain<MessageKind::blockette_unknown,
                      "WARNING(parse_blk) - Unknown blockette: %i\n">(0, type);
    return record;
}

int read_blk(read_handle_t *handle, Record *record, int *type)
{
    SeedInput *in = handle->logical.get();
    handle->framing = false;
    while (read_fixed_header(in, handle->item.write(0, Prefix), Prefix)) {
        const Step step = in->recovers ? find_step(handle) : Step::right;
        if (step == Step::end)
            break;
        if (step == Step::found)
            continue;
        if (is_ok_msd_quality(in->type_code())) {
            begin_item(handle, 0);
            return frame_data(handle, record, type);
        }
        if (!blank(up_to_nul({handle->item.area(), Prefix}))) {
            begin_item(handle, in->record_read() - Prefix);
            const int framed = frame_control(handle, record, type);
            if (framed != Broken_Off)
                return framed;
            continue;
        }
        if (advanceLogicalRecord(in) != 0) // the rest of the record is padding
            break;
    }
    return 0;
}

} // namespace quarl
