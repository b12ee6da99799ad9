// How the reading fills the item that it yields.
#pragma once

#include <array>
#include <quarl/item.h>

namespace quarl
{

struct ItemAccess {
    Item &item;

    /// A new item begins at `place`; nothing more is known of it.
    void begin(const Place &place)
    {
        item.type_ = 0;
        item.length_ = 0;
        item.bad_ = false;
        item.record_ = nullptr;
        item.fields_size_ = 0;
        item.bytes_ = {};
        item.place_ = place;
    }
    void type(int type, int length)
    {
        item.type_ = type;
        item.length_ = length;
    }
    void bytes(std::string_view bytes) { item.bytes_ = bytes; }
    /// A data record stands at `record` with a header that is not its own; `room` is for the day
    /// when its own bytes are asked for.
    void data(const char *record, int length, std::string *room)
    {
        item.length_ = length;
        item.bytes_ = {record, static_cast<std::size_t>(length)};
        item.room_ = room;
    }
    void record_header(const std::array<char, 8> &own) { item.record_header_ = own; }
    void parsed(const record_t *record, bool bad, std::size_t fields_size)
    {
        item.record_ = record;
        item.bad_ = bad;
        item.fields_size_ = fields_size;
    }
};

} // namespace quarl
