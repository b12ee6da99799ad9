#include "volume/handle.h"

#include "blockette/msd.h"
#include "blockette/seed_utl.h"
#include "platform/allocate.h"
#include "platform/elog.h"
#include "platform/text.h"
#include "volume/run.h"

#include <algorithm>

namespace quarl
{

namespace
{

template <class Element> int span_cmp(const Element &a, const Element &b)
{
    if (a.start >= b.start && a.start < b.end)
        return 0;
    const double difference = a.start - b.start;
    return (difference > 0) - (difference < 0);
}

} // namespace

Codes rec_len_t::code() const { return pack(stn, chan_id, loc_id); }

Codes order_t::code() const { return pack(stn, {}, {}); }

int rec_len_cmp(const rec_len_t &a, const rec_len_t &b)
{
    if (const int difference = std::strcmp(a.stn, b.stn))
        return difference;
    if (const int difference = std::strcmp(a.chan_id, b.chan_id))
        return difference;
    if (const int difference = std::strcmp(a.loc_id, b.loc_id))
        return difference;
    return span_cmp(a, b);
}

int order_cmp(const order_t &a, const order_t &b)
{
    const int difference = std::strcmp(a.stn, b.stn);
    return difference != 0 ? difference : span_cmp(a, b);
}

std::unique_ptr<read_handle_t> seed_read(const std::string &path)
{
    auto handle = allocate_one<read_handle_t>("handle", 1, Where());
    handle->logical = newSeedInput(path);
    return handle;
}

void update_fmt_list(FmtList &fmt_list, const blk_030_t &b030)
try {
    if (const std::string *old = gettbl(fmt_list, b030.format_id)) {
        if (*old == b030.name)
            elog_complain<MessageKind::format_code_repeated,
                          "Data format id code #%d used twice for %s">(0, b030.format_id,
                                                                       b030.name);
        else
            elog_complain<MessageKind::format_code_redefined,
                          "Data format id code #%d used for both %s and %s">(0, b030.format_id,
                                                                             *old, b030.name);
    }
    settbl(fmt_list, b030.format_id, std::string(b030.name));
} catch (const std::bad_alloc &) {
    out_of_memory(Where(), 1, "fmt_elem");
}

void update_order_list(OrderList &order_list, const blk_050_t &b050)
try {
    order_t element;
    copy_text(element.stn, b050.station);
    element.start = start_epoch(b050.start_date);
    element.end = end_epoch(b050.end_date);
    element.long_order = b050.long_order;
    element.word_order = b050.word_order;
    order_list.add(element);
} catch (const std::bad_alloc &) {
    out_of_memory(Where(), 1, "order_elem");
}

void update_rec_list(RecList &rec_list, const char (&stn)[Station_Size], const FmtList &fmt_list,
                     const blk_052_t &b052)
try {
    rec_len_t element;
    copy_text(element.stn, stn);
    copy_text(element.chan_id, b052.chan_id);
    copy_text(element.loc_id, b052.loc_id);
    element.start = start_epoch(b052.start_date);
    element.end = end_epoch(b052.end_date);
    element.len = record_length(b052.record_length);
    if (const std::string *format = gettbl(fmt_list, b052.format_id))
        copy_text(element.format, *format);
    else
        elog_complain<MessageKind::format_code_undefined,
                      "No data format for format id %d sta=%s chan=%s loc=%s File #%d\n">(
            0, b052.format_id, stn, b052.chan_id, b052.loc_id, run().Tapefile);
    rec_list.add(element);
} catch (const std::bad_alloc &) {
    out_of_memory(Where(), 1, "rec_elem");
}

int lookup_rec_list(const RecList &rec_list, blk_dh_t *header)
{
    if (rec_list.is_empty()) // data records alone
        return 0;
    const Codes codes = pack(header->stn_id, header->chan_id, header->loc_id);
    const rec_len_t *found = rec_list.find(codes, header->epoch);
    if (!found)
        return 0;
    header->length = found->len;
    std::memcpy(header->format, found->format, sizeof header->format);
    return 1;
}

} // namespace quarl
