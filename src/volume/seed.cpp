#include "volume/seed.h"

#include "blockette/blockette.h"
#include "blockette/data_header.h"
#include "blockette/msd.h"
#include "blockette/sdblknam.h"
#include "platform/elog.h"
#include "platform/text.h"
#include "volume/data_frame.h"
#include "volume/item_access.h"
#include "volume/resume.h"
#include "volume/run.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace quarl
{

namespace
{

constexpr int Broken_Off = -1; ///< the item was given up, another one follows

/// An item begins at the byte `at` of the current record.
void begin_item(read_handle_t *handle, int at)
{
    handle->framing = true;
    const SeedInput &in = *handle->logical;
    ItemAccess{handle->now}.begin(in, run().Tapefile, in.record_begin() + at);
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

/// Nothing is known of the blockette that is parsed next.
void begin_parsing()
{
    static_cast<BlocketteFound &>(parsing()) = {};
    parsing().flaws.clear();
}

/// Hears nothing: the listing knows nothing of what is read.
class Deaf : public Host
{
    void hear(Message & /*message*/) override {}
};

/// Reads a blockette once more, as the listing does; null where the listing ends.
Record as_listed(const read_handle_t &handle)
{
    Parsing &state = parsing();
    BlocketteFound &found = state;
    const BlocketteFound kept = std::exchange(found, {});
    const blk_050_t station = state.blk_050;
    const blk_052_t channel = state.blk_052;
    state.for_listing = true;
    Record record;
    try {
        Deaf deaf;
        const Current<Host> host(deaf);
        with_family(handle.now.type(), [&](auto family) {
            auto made = family.make();
            family.parse(made.get(), handle.item.text());
            record = Record(made.release(), FreeBlk{handle.now.type()});
        });
    } catch (const Error &) {
        record.reset();
    }
    state.for_listing = false;
    state.blk_050 = station;
    state.blk_052 = channel;
    found = kept;
    return record;
}

/// A field was bad: the item's text is reported, and whoever reads may show more, as the listing
/// has it.
void report_bad_item(read_handle_t *handle, std::string_view text)
{
    elog_complain<MessageKind::blockette_bad, "Error at BLK%03d : %s\n">(0, handle->now.type(),
                                                                         up_to_nul(text));
    if (!handle->on_bad_item)
        return;
    const Record listed = parsing().for_listing ? Record() : as_listed(*handle);
    ItemAccess item{handle->now};
    const record_t *own = handle->now.record();
    if (listed)
        item.record(listed.get());
    handle->on_bad_item(handle->now);
    item.record(own);
}

/// Reads a blockette that the listing does not know.
void read_unlisted(read_handle_t *handle, std::string_view text, int type)
{
    with_any_family(type, [&](auto family) {
        auto made = family.make();
        family.parse(made.get(), text);
        if constexpr (requires { made->lookup_key; })
            keep_text(&run().Tbl_responses, made->lookup_key, made->response_name);
        handle->unlisted = Record(made.release(), FreeBlk{type});
    });
}

/// Reads of a blockette what the listing does not: all of it, or what stands behind what is listed.
void read_beyond_listing(read_handle_t *handle, std::string_view text, record_t *listed, int type)
{
    handle->unlisted.reset();
    Deaf deaf;
    const Current<Host> host(deaf);
    const auto reread = [&](auto family) {
        auto *blk = static_cast<typename decltype(family)::Record *>(listed);
        if constexpr (requires { read_whole(blk, text); }) {
            begin_parsing();
            read_whole(blk, text);
        }
    };
    if (listed)
        with_family(type, reread);
    else
        read_unlisted(handle, text, type);
}

/// The listing reads beyond an item, where the area is zero; who is strict reads what there is.
std::string_view text_to_parse(const read_handle_t &handle)
{
    if (parsing().for_listing)
        return handle.item.text();
    const std::size_t size = handle.now.bytes().size(); // those of type -1 are another text
    const auto missing = static_cast<std::size_t>(handle.now.missing());
    return handle.item.text().substr(0, size - std::min(missing, size));
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
    SeedInput *in = handle->logical.get();
    if (!read_remainder(in, handle->item.write(Prefix, rest), rest)) {
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
    item.missing(in->filled());
    parsing().input_cut = in->filled() > 0;
    const std::string_view text = text_to_parse(*handle);
    *record = parse_blk(text, *type);
    const bool listed_bad = parsing().Bad_blkflag != 0;
    if (handle->reads_unlisted)
        read_beyond_listing(handle, text, record->get(), *type);
    item.parsed(*record ? record->get() : handle->unlisted.get(), parsing().Bad_blkflag != 0,
                parsing().fields_size);
    item.flaws(&parsing().flaws);
    if (*record && listed_bad)
        report_bad_item(handle, handle->item.text().substr(0, length >= 0 ? length : Area_Size));
    visit(record->get(), *type, [&](const auto &blk) { keep(handle, blk); });
    return 1;
}

} // namespace

Record parse_blk(std::string_view bytes, int type)
{
    begin_parsing();
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
    in->clear_filled();
    while (read_fixed_header(in, handle->item.write(0, Prefix), Prefix)) {
        const Step step = in->recovers ? find_step(handle) : Step::right;
        if (step == Step::end)
            break;
        if (step == Step::found)
            continue;
        if (is_ok_msd_quality(in->type_code())) {
            begin_item(handle, 0);
            return parsing().for_listing ? frame_data(handle, record, type)
                                         : frame_data_strictly(handle, record, type);
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
        in->clear_filled();
    }
    return 0;
}

} // namespace quarl
