// Reads times as ISO 8601 writes them.
#include "platform/calendar.h"
#include "platform/text.h"

#include <quarl/time.h>

namespace quarl
{

namespace
{

/// What is left of a text; all functions take from its front.
class Rest
{
public:
    explicit Rest(std::string_view text) : text_(text) {}

    [[nodiscard]] bool is_empty() const { return text_.empty(); }
    /// How many digits are next.
    [[nodiscard]] std::size_t digits() const
    {
        std::size_t size = 0;
        while (size < text_.size() && is_digit(text_[size]))
            ++size;
        return size;
    }
    /// Takes any one of `marks`.
    bool take(std::string_view marks)
    {
        if (text_.empty() || marks.find(text_.front()) == std::string_view::npos)
            return false;
        text_.remove_prefix(1);
        return true;
    }
    /// Takes exactly `size` digits.
    bool take(std::size_t size, int *value)
    {
        if (digits() < size)
            return false;
        *value = to_int(text_.substr(0, size));
        text_.remove_prefix(size);
        return true;
    }
    /// Takes all digits that are next as decimals; those behind the sixth do not count.
    bool take_decimals(int *microseconds)
    {
        int unit = 1'000'000;
        const std::size_t size = digits();
        for (const char c : text_.substr(0, size))
            *microseconds += (unit /= 10) * (c - '0');
        text_.remove_prefix(size);
        return size > 0;
    }

private:
    std::string_view text_;
};

/// "-07-10", "-191" or, which no time of day may follow, "-07" behind the year. A day that the
/// calendar does not have is 0.
bool take_day(Rest *rest, TimeParts *parts, bool *whole)
{
    *whole = false;
    if (!rest->take("-"))
        return true;
    *whole = true;
    if (rest->digits() == 3)
        return rest->take(3, &parts->day_of_year);
    Date date{parts->year, 0, 1};
    if (!rest->take(2, &date.month))
        return false;
    *whole = rest->take("-");
    if (*whole && !rest->take(2, &date.day))
        return false;
    parts->day_of_year = day_of_year(date);
    return true;
}

/// "12", "12:30", "12:30:00" or with decimals.
bool take_clock(Rest *rest, TimeParts *parts)
{
    if (!rest->take(2, &parts->hour))
        return false;
    if (!rest->take(":"))
        return true;
    if (!rest->take(2, &parts->minute))
        return false;
    if (!rest->take(":"))
        return true;
    return rest->take(2, &parts->second) &&
           (!rest->take(".,") || rest->take_decimals(&parts->microsecond));
}

/// "Z", "+02", "+0200", "+02:00" or nothing.
bool take_zone(Rest *rest, std::chrono::minutes *east)
{
    if (rest->take("Zz"))
        return true;
    const bool is_west = rest->take("-");
    if (!is_west && !rest->take("+"))
        return true;
    int hours = 0;
    int minutes = 0;
    if (!rest->take(2, &hours))
        return false;
    if (!rest->is_empty() && (rest->take(":"), !rest->take(2, &minutes)))
        return false;
    *east = std::chrono::hours(hours) + std::chrono::minutes(minutes);
    if (is_west)
        *east = -*east;
    return hours < 24 && minutes < 60;
}

} // namespace

std::optional<Time> read_iso_time(std::string_view text)
{
    Rest rest(text);
    TimeParts parts;
    bool whole = false;
    if (rest.digits() != 4 || !rest.take(4, &parts.year) || !take_day(&rest, &parts, &whole))
        return std::nullopt;
    std::chrono::minutes east(0);
    if (whole && rest.take("Tt ") && (!take_clock(&rest, &parts) || !take_zone(&rest, &east)))
        return std::nullopt;
    if (!rest.is_empty() ||
        !exists(parts.year, parts.day_of_year, parts.hour, parts.minute, parts.second))
        return std::nullopt;
    return time_of(parts) - east;
}

} // namespace quarl
