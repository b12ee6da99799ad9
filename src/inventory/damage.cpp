#include "inventory/damage.h"

#include "platform/read_number.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <quarl/time.h>
#include <string_view>

namespace quarl
{

namespace
{

/// A field of so many characters that should hold a number; 0: not a number, passed over.
struct NumberField {
    int field;
    int width;
};

bool is_number(std::string_view text)
{
    std::size_t used = 0;
    (void)read_real(up_to_nul(text), &used);
    return used > 0;
}

/// Adds the fields, which stand side by side from `at` on, that are no numbers; `must` are
/// those that may not be blank either.
void look_at_numbers(std::string_view bytes, std::size_t at,
                     std::initializer_list<NumberField> fields, std::initializer_list<int> must,
                     BadFields *bad)
{
    for (const auto [field, width] : fields) {
        const std::string_view text = bytes.substr(std::min(at, bytes.size()), width);
        at += width;
        const bool needed = std::find(must.begin(), must.end(), field) != must.end();
        if (!is_number(text) && (needed || !blank(text)))
            bad->add(field);
    }
}

void look_at_times(const char *start, const char *end, int first, BadFields *bad)
{
    if (std::isnan(start_seconds(start)))
        bad->add(first);
    if (std::isnan(end_seconds(end)))
        bad->add(first + 1);
}

} // namespace

BadFields bad_fields(const Item &item, const blk_050_t &blk)
{
    BadFields bad;
    if (item.bad() || blk.lat == 0.0 || blk.lon == 0.0)
        look_at_numbers(item.bytes(), 3 + 4 + 5, {{4, 10}, {5, 11}, {6, 7}}, {4, 5}, &bad);
    look_at_times(blk.start_date, blk.end_date, 13, &bad);
    return bad;
}

BadFields bad_fields(const Item &item, const blk_052_t &blk)
{
    BadFields bad;
    if (item.bad() || blk.lat == 0.0 || blk.lon == 0.0) {
        const std::string_view bytes = item.bytes();
        const std::size_t comment = bytes.find('~', 3 + 4 + 2 + 3 + 4 + 3);
        const std::size_t at = std::min(comment, bytes.size()) + 1 + 3 + 3;
        look_at_numbers(bytes, at,
                        {{10, 10},
                         {11, 11},
                         {12, 7},
                         {13, 5},
                         {14, 5},
                         {15, 5},
                         {16, 4},
                         {17, 2},
                         {18, 10},
                         {19, 10}},
                        {10, 11}, &bad);
    }
    look_at_times(blk.start_date, blk.end_date, 22, &bad);
    return bad;
}

bool is_damaged(const Item &item)
{
    if (item.get<blk_058_t>()) { // whatever its history is like
        BadFields bad;
        look_at_numbers(item.bytes(), 3 + 4, {{3, 2}, {4, 12}, {5, 12}}, {3, 4}, &bad);
        return bad.any();
    }
    if (item.bad())
        return true;
    if (!item.beyond_length())
        return false;
    // Some writers leave out a last count that is 0.
    const int missing = static_cast<int>(item.fields_size()) - item.length();
    if (const auto *roots = item.get<blk_053_t>())
        return missing > 3 || roots->num_zeros_held < roots->num_zeros || roots->num_poles > 0;
    if (const auto *blk = item.get<blk_054_t>())
        return missing > 4 || blk->num_numer_held < blk->num_numer || blk->num_denom > 0;
    return missing > 2 || !item.get<blk_048_t>();
}

} // namespace quarl
