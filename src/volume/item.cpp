#include "blockette/chain.h"
#include "blockette/flaws.h"
#include "blockette/sdblknam.h"
#include "volume/data_room.h"

#include <algorithm>
#include <quarl/item.h>
#include <utility>

namespace quarl
{

std::string_view Item::name() const
{
    const Sdinfo *row = find_sdinfo(type_);
    const std::string_view name = row ? row->name : std::string_view();
    return name.substr(0, name.find_last_not_of(' ') + 1);
}

std::string_view Item::bytes() const
{
    if (type_ != Data_Record || bytes_.empty())
        return bytes_;
    std::string &bytes = room_->bytes;
    bytes.assign(bytes_);
    std::copy_n(record_header_.begin(), std::min(bytes.size(), record_header_.size()),
                bytes.begin());
    return bytes;
}

Absence Item::absence_at(const void *field) const
{
    return flaws_ ? flaws_->find(field) : Absence::none;
}

const DataBlockettes &Item::data_blockettes() const
{
    static const DataBlockettes None;
    const auto *header = get<blk_dh_t>();
    if (!header || !room_->has_record) // or a control blockette that says it is one
        return None;
    if (!std::exchange(room_->has_chain, true))
        read_chain(*header, bytes_.substr(0, bytes_.size() - static_cast<std::size_t>(missing_)),
                   &room_->chain);
    return room_->chain;
}

} // namespace quarl
