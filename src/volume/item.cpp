#include "blockette/sdblknam.h"

#include <algorithm>
#include <quarl/item.h>

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
    room_->assign(bytes_);
    std::copy_n(record_header_.begin(), std::min(room_->size(), record_header_.size()),
                room_->begin());
    return *room_;
}

} // namespace quarl
