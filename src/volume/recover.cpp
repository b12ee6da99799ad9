#include "volume/recover.h"

#include "blockette/msd.h"
#include "blockette/record_header.h"
#include "blockette/sdblknam.h"
#include "platform/calendar.h"
#include "platform/text.h"
#include "volume/item_buffer.h"

#include <algorithm>
#include <vector>

namespace quarl
{

namespace
{

constexpr std::size_t Number = 6; ///< characters of a sequence number
constexpr std::size_t Prefix = 7; ///< of a blockette's type and length

bool is_digit_or_blank(char c) { return is_digit(c) || c == ' '; }

bool is_mark(char c) { return c == ' ' || c == '*' || c == '\0'; }

/// Type and length of a blockette, which stand at the beginning of `text`; false: they do not.
bool read_prefix(std::string_view text, int *type, std::size_t *length)
{
    if (text.size() < Prefix ||
        !std::all_of(text.begin(), text.begin() + Prefix, is_digit_or_blank))
        return false;
    *type = to_int(text.substr(0, 3));
    *length = static_cast<std::size_t>(std::max(to_int(text.substr(3, 4)), 0));
    return *length >= Prefix;
}

bool is_catalogued(int type)
{
    constexpr int Last = 99; // those of data records have higher numbers
    return type > 0 && type <= Last && find_sdinfo(type) != nullptr;
}

bool is_end(std::string_view rest)
{
    return rest.size() < Prefix || is_fill(rest.substr(0, Prefix));
}

int byte_at(std::string_view bytes, std::size_t at)
{
    return static_cast<unsigned char>(bytes[at]);
}

int number_at(std::string_view bytes, std::size_t at, bool swapped)
{
    const int high = byte_at(bytes, swapped ? at + 1 : at);
    const int low = byte_at(bytes, swapped ? at : at + 1);
    return high * 256 + low;
}

/// The fixed header of a data record may stand here: its codes are text, its time one of the
/// calendar, in either byte order.
bool may_be_data(std::string_view record)
{
    constexpr std::size_t Header = 48;
    constexpr std::size_t Time = 20;
    constexpr int Oldest = 1900;
    constexpr int Newest = 2200;
    if (record.size() < Header ||
        !std::all_of(record.begin() + 8, record.begin() + Time,
                     [](char c) { return c == '\0' || (c >= ' ' && c <= '~'); }))
        return false;
    const auto has_time = [&](bool swapped) {
        const int year = number_at(record, Time, swapped);
        return year >= Oldest && year <= Newest &&
               exists(year, number_at(record, Time + 2, swapped), byte_at(record, Time + 4),
                      byte_at(record, Time + 5), byte_at(record, Time + 6));
    };
    return has_time(false) || has_time(true);
}

bool is_record(std::string_view bytes)
{
    constexpr std::size_t Header = 8;
    if (bytes.size() < Header || !std::all_of(bytes.begin(), bytes.begin() + Number, is_digit) ||
        !is_mark(bytes[Header - 1]))
        return false;
    const std::string_view body = bytes.substr(Header);
    if (is_ok_msd_quality(bytes[Number]))
        return may_be_data(bytes);
    return is_header_type(bytes[Number]) &&
           (bytes[Header - 1] == '*' || is_end(body) || may_begin_blockette(body));
}

} // namespace

bool may_begin_blockette(std::string_view text)
{
    int type = 0;
    std::size_t length = 0;
    if (!read_prefix(text, &type, &length))
        return false;
    if (is_catalogued(type))
        return true;
    int next = 0;
    std::size_t ignored = 0;
    return length < text.size() &&
           (is_end(text.substr(length)) || read_prefix(text.substr(length), &next, &ignored));
}

std::size_t find_blockette(std::string_view text)
{
    // From the end: how many blockettes lead from a byte to the end, 2 standing for more.
    constexpr unsigned char Enough = 2;
    std::vector<unsigned char> chain(text.size() + 1, 0);
    std::size_t found = std::string_view::npos;
    bool ends = true; ///< nothing but fill is behind the byte
    for (std::size_t at = text.size(); at-- > 0;) {
        ends = ends && is_fill(text.substr(at, 1));
        int type = 0;
        std::size_t length = 0;
        if (text[at] == '\n') {
            chain[at] = chain[at + 1];
        } else if (!ends && read_prefix(text.substr(at), &type, &length) && is_catalogued(type)) {
            const std::size_t behind = at + length;
            if (behind > text.size())
                chain[at] = 1;
            else if (is_end(text.substr(behind)) || chain[behind] > 0)
                chain[at] = Enough;
        }
        if (chain[at] >= Enough && text[at] != '\n')
            found = at;
    }
    return found;
}

bool goes_on(std::string_view body, std::size_t wanted, bool is_next, bool is_marked)
{
    if (is_next && is_marked)
        return true;
    if (!is_marked && may_begin_blockette(body))
        return false;
    if (wanted >= body.size())
        return is_next;
    const std::string_view rest = body.substr(wanted);
    return may_begin_blockette(rest) || (is_next && (is_end(rest) || rest.front() == '\n'));
}

std::size_t find_record(std::string_view bytes)
{
    for (std::size_t at = 1; at < bytes.size(); ++at)
        if (is_digit(bytes[at]) && is_record(bytes.substr(at)))
            return at;
    return std::string_view::npos;
}

bool may_begin_volume(std::string_view bytes)
{
    constexpr std::size_t Header = 8;
    int type = 0;
    std::size_t length = 0;
    return bytes.size() > Header && read_prefix(bytes.substr(Header), &type, &length) &&
           (type == 5 || type == 8 || type == 10);
}

int guessed_length(std::string_view bytes)
{
    constexpr std::size_t Header = 8;
    if (bytes.size() < Header)
        return 0;
    const int number = to_int(bytes.substr(0, Number));
    constexpr int Smallest = 8;
    constexpr int Largest = 16;
    for (int exponent = Smallest; exponent <= Largest; ++exponent) {
        const std::size_t length = std::size_t{1} << exponent;
        if (length + Header > bytes.size())
            break;
        const std::string_view next = bytes.substr(length);
        if (is_record(next) && to_int(next.substr(0, Number)) == number + 1)
            return static_cast<int>(length);
    }
    return 0;
}

} // namespace quarl
