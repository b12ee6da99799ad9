#include "seed/seed.h"

#include "blockette/blockette.h"
#include "decode.h"
#include "fixup_dh.h"
#include "pbrief.h"
#include "platform/elog.h"
#include "platform/msd.h"
#include "platform/text.h"
#include "sdblknam.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace
{

constexpr int Record_Header = 8; ///< logical record header, consumed by the input stream
constexpr int Prefix = 7;        ///< type and length of a control blockette
constexpr int Area_Size = 10000; ///< largest item
constexpr int Data_Header =
    128; ///< bytes of a data record that are read before its length is known

/// The bytes of an item behind a fixed logical record header, so that a data record is held whole.
/// The area is zero beyond the item.
class ItemBuffer
{
public:
    [[nodiscard]] const char *record() const { return bytes_.data(); }
    char *area() { return bytes_.data() + Record_Header; }
    [[nodiscard]] std::string_view text() const
    {
        return {bytes_.data() + Record_Header, Area_Size};
    }

    /// The next `size` bytes of the area are about to be written.
    char *write(int at, int size)
    {
        used_ = std::max(used_, at + size);
        return area() + at;
    }
    /// The item has `size` bytes: clears what a longer one left behind it.
    void end_item(int size)
    {
        if (used_ > size)
            std::memset(area() + size, 0, used_ - size);
        used_ = size;
    }

private:
    std::array<char, Record_Header + Area_Size> bytes_{'0', '0', '0', '0', '0', '0', 'D', ' '};
    int used_ = 0;
};

ItemBuffer Item;

/// A field was bad: shows the item's text and its listing on standard error.
void report_bad_item(const record_t *record, int type, std::string_view text)
{
    elog_complain<"Error at BLK%03d : %s\n">(0, type, up_to_nul(text));
    pbrief_blk(elog_stream(), record, type);
    elog_clear_register(1);
}

void number_record(read_handle_t *handle, blk_dh_t *header)
{
    header->seq_num = handle->seq_num;
    header->sub_seq_num = handle->sub_seq_num;
}

void count_record(read_handle_t *handle)
{
    if (handle->seq_num == handle->logical->seq_num) {
        ++handle->sub_seq_num;
        return;
    }
    handle->seq_num = handle->logical->seq_num;
    handle->sub_seq_num = 1;
}

/// Lets an embedded Blockette 1000 decide over the format and length that the dictionary gave.
void apply_b1000(blk_dh_t *header, const char *record)
{
    const B1000 b1000 = parse_b1000(record, Record_Header + Data_Header);
    const int dictionary = sd_data_type(header->format);
    header->type = b1000.index != 0 ? b1000.index : dictionary;
    if (b1000.index != 0 && dictionary != 0 && dictionary != b1000.index)
        b030_problem(*header, header->format, std::string_view(encoding_name(b1000.encoding)));
    if (b1000.usable && b1000.record_length != header->length) {
        elog_complain<"different record sizes in 030 blockette (%d) and 1000 blockette (%d)">(
            0, header->length, b1000.record_length);
        header->length = b1000.record_length;
    }
}

/// Reads what follows the prefix of a data record up to the end of its header. Returns the record
/// behind the fixed record header: where the input's buffer holds it, else in the item's. Null when
/// the input ends.
const char *read_data_header(SeedInput *in)
{
    constexpr int Rest = Data_Header - Prefix;
    if (in->cur == in->start + Record_Header + Prefix && Rest <= bytes_left(in) &&
        Rest <= in->pbytes - in->cur) {
        in->cur += Rest;
        char *record = in->buffer + in->start;
        std::memcpy(record, Item.record(), Record_Header);
        return record;
    }
    in->length_open = true;
    const int whole = read_remainder(in, Item.write(Prefix, Rest), Rest);
    in->length_open = false;
    if (whole)
        return Item.record();
    elog_complain<"Unexpected end of file reading data header File #%d\n">(1, Tapefile);
    return nullptr;
}

/// Reads a data record's bytes behind its header. A record that the input's buffer holds stays
/// there, since copying it would take a tenth of the time of a listing; another is gathered in the
/// item's. Returns where it is; null when the input ends.
const char *read_data(SeedInput *in, const char *record, int length)
{
    if (length > Area_Size)
        elog_die<"Data blockette size = %d: too large for internal buffer.\n">(0, length);
    in->recsiz = length;
    const int rest = length - Record_Header - Data_Header;
    if (record != Item.record()) {
        if (rest <= in->pbytes - in->cur) {
            in->cur += std::max(rest, 0);
            return record;
        }
        std::memcpy(Item.write(0, Data_Header), record + Record_Header, Data_Header);
    }
    tell_if_cut(in);
    if (rest > 0 && !read_remainder(in, Item.write(Data_Header, rest), rest)) {
        elog_complain<"Unexpected end of file reading data record File #%d.\n">(1, Tapefile);
        return nullptr;
    }
    Item.end_item(std::max(length - Record_Header, Data_Header));
    return Item.record();
}

int frame_data(read_handle_t *handle, Record *record, int *type)
{
    SeedInput *in = handle->logical.get();
    count_record(handle);
    const char *bytes = read_data_header(in);
    if (!bytes)
        return 0;
    *type = Data_Record;
    *record = parse_blk({bytes + Record_Header, Data_Header}, Data_Record);
    auto *header = static_cast<blk_dh_t *>(record->get());
    number_record(handle, header);
    fixup_dh(header, handle);
    apply_b1000(header, bytes);
    bytes = read_data(in, bytes, header->length);
    if (!bytes)
        return 0;
    header->raw = bytes;
    if (header->beg_data >= 0 && header->beg_data < header->length)
        header->data = bytes + header->beg_data;
    return 1;
}

void feed_dictionaries(read_handle_t *handle, const record_t *record, int type)
{
    switch (type) {
    case 10:
        setReadRecLen(handle->logical.get(), static_cast<const blk_010_t *>(record)->rec_len);
        break;
    case 30:
        update_fmt_list(handle->fmt_list, *static_cast<const blk_030_t *>(record));
        break;
    case 50:
        copy_text(handle->stn, static_cast<const blk_050_t *>(record)->station);
        update_order_list(handle->order_list, *static_cast<const blk_050_t *>(record));
        break;
    case 52:
        update_rec_list(handle->rec_list, handle->stn, handle->fmt_list,
                        *static_cast<const blk_052_t *>(record));
        break;
    default:
        break;
    }
}

int frame_control(read_handle_t *handle, Record *record, int *type)
{
    const std::string_view prefix = up_to_nul({Item.area(), Prefix});
    *type = to_int(prefix.substr(0, 3));
    const int length = to_int(up_to_nul({Item.area() + 3, Prefix - 3}));
    if (length > Area_Size)
        elog_die<"Blockette type %d size = %d: too large for internal buffer.\n">(0, *type, length);
    if (sdminsz(*type) > length)
        elog_complain<"Blockette type %d size = %d: too small! (file #%d)\n">(0, *type, length,
                                                                              Tapefile);
    const int rest = std::max(length - Prefix, 0);
    if (!read_remainder(handle->logical.get(), Item.write(Prefix, rest), rest)) {
        elog_complain<"Unexpected end of file reading blockette type %d file #%d\n">(1, *type,
                                                                                     Tapefile);
        return 0;
    }
    Item.end_item(Prefix + rest);
    *record = parse_blk(Item.text(), *type);
    if (Bad_blkflag)
        report_bad_item(record->get(), *type,
                        Item.text().substr(0, length >= 0 ? length : Area_Size));
    feed_dictionaries(handle, record->get(), *type);
    return 1;
}

} // namespace

Record parse_blk(std::string_view bytes, int type)
{
    Bad_blkflag = 0;
    switch (type) {
    case Data_Record: {
        auto blk = new_dh();
        parse_dh(blk.get(), bytes);
        return Record(blk.release(), FreeBlk{type});
    }
#define CASE_PARSE(number, name)                                                                   \
    case number: {                                                                                 \
        auto blk = new_##name();                                                                   \
        parse_##name(blk.get(), bytes);                                                            \
        return Record(blk.release(), FreeBlk{type});                                               \
    }
        SEED_BLOCKETTES(CASE_PARSE)
#undef CASE_PARSE
    default:
        elog_complain<"WARNING(parse_blk) - Unknown blockette: %i\n">(0, type);
        return nullptr;
    }
}

int read_blk(read_handle_t *handle, Record *record, int *type)
{
    SeedInput *in = handle->logical.get();
    while (read_fixed_header(in, Item.write(0, Prefix), Prefix)) {
        if (is_ok_msd_quality(in->type_code))
            return frame_data(handle, record, type);
        if (!blank(up_to_nul({Item.area(), Prefix})))
            return frame_control(handle, record, type);
        if (advanceLogicalRecord(in) != 0) // the rest of the record is padding
            break;
    }
    return 0;
}
