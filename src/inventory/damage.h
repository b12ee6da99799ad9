// What blockettes should say and do not.
#pragma once

#include <quarl/contents.h>
#include <quarl/item.h>
#include <quarl/records.h>

namespace quarl
{

/// The fields of a station or channel identifier that cannot be taken as they stand.
BadFields bad_fields(const Item &item, const blk_050_t &blk);
BadFields bad_fields(const Item &item, const blk_052_t &blk);

/// A blockette of a response, or of its dictionary, has a bad field, or ends before all is said:
/// what it says cannot be relied on.
bool is_damaged(const Item &item);

} // namespace quarl
