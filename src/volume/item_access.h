// How the reading fills the item that it yields.
#pragma once

#include "blockette/flaws.h"
#include "volume/data_room.h"
#include "volume/rseed.h"

#include <quarl/item.h>

namespace quarl
{

struct ItemAccess {
    Item &item;

    void room(DataRoom *room) { item.room_ = room; }

    /// A new item begins at the byte `offset` of the input file; nothing more is known of it.
    void begin(const SeedInput &in, int file, std::int64_t offset)
    {
        Place &place = item.place_;
        place.file = file;
        place.offset = offset;
        place.record = in.recno();
        place.sequence_number = in.seq_num();
        place.type_code = in.type_code();
        place.continuation_code = in.cont_code();
        item.type_ = 0;
        item.length_ = 0;
        item.bad_ = item.cut_ = false;
        item.missing_ = 0;
        item.flaws_ = nullptr;
        item.record_ = nullptr;
        item.fields_size_ = 0;
        item.bytes_ = {};
        item.room_->has_record = false;
    }
    void type(int type, int length)
    {
        item.type_ = type;
        item.length_ = length;
    }
    void record(const record_t *record) { item.record_ = record; }
    void bytes(std::string_view bytes) { item.bytes_ = bytes; }
    /// The input lacks so many of them.
    void missing(int bytes)
    {
        item.missing_ = bytes;
        item.cut_ |= bytes > 0;
    }
    /// The fields without a value; they stay where they are until the next item begins.
    void flaws(Flaws *flaws)
    {
        item.cut_ |= flaws->cut;
        item.bad_ |= flaws->bad;
        if (flaws->empty())
            return;
        flaws->sort();
        item.flaws_ = flaws;
    }
    /// A data record stands at `bytes` behind a header that is not its own.
    void data(const blk_dh_t *header, const char *bytes, const std::array<char, 8> &own_header)
    {
        item.length_ = header->length;
        item.bytes_ = {bytes, static_cast<std::size_t>(header->length)};
        item.record_header_ = own_header;
        item.record_ = header;
        item.room_->has_record = true;
        item.room_->has_chain = false;
    }
    void parsed(const record_t *record, bool bad, std::size_t fields_size)
    {
        item.record_ = record;
        item.bad_ = bad;
        item.fields_size_ = fields_size;
    }
};

} // namespace quarl
