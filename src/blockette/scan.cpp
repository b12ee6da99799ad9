#include "blockette/scan.h"

#include "platform/elog.h"
#include "platform/read_number.h"
#include "platform/text.h"

#include <algorithm>
#include <array>

namespace quarl
{

namespace
{

/// The field could not be converted although it is not blank.
template <MessageKind Kind, Literal Text> void report_bad_field(std::string_view field)
{
    if (blank(field))
        return;
    elog_log<Kind, Text>(0, field);
    parsing().Bad_blkflag = 1;
}

using Room = std::array<char, 256>; ///< larger than any real field

/// `field` with a blank after its first exponent letter replaced by "+", so that "1.5E 02" is 150.
/// What needs no repair is returned as it is, the rest is kept in `room`.
std::string_view repaired(std::string_view field, Room &room)
{
    const std::size_t letter = field.find_first_of("eE");
    if (letter == std::string_view::npos || letter + 1 == field.size() || field[letter + 1] != ' ')
        return field;
    const std::size_t size = std::min(field.size(), room.size());
    std::copy_n(field.begin(), size, room.begin());
    room[letter + 1] = '+';
    return {room.data(), size};
}

/// Ends a text that ran over its room: keeps what fits, reports, and skips to behind the "~".
std::size_t cut_var_str(std::string_view text, char *dest, std::size_t maxchars)
{
    dest[maxchars - 1] = '\0';
    elog_complain<MessageKind::text_too_long,
                  "variable string '%s' exceeded %d characters at %.80s\n">(
        0, std::string_view(dest, maxchars - 1), maxchars, up_to_nul(text));
    parsing().Bad_blkflag = 1;
    const std::size_t end = std::min(text.find_first_of(std::string_view("~\0", 2)), text.size());
    return end + (end < text.size() && text[end] == '~');
}

} // namespace

int scan_int(Cursor *str, int len)
{
    const std::string_view field = str->field(len);
    std::size_t used = 0;
    const int value = leading_int(field, &used);
    if (used == 0)
        report_bad_field<MessageKind::bad_integer, "Could not convert '%s' to an integer\n">(field);
    return value;
}

int scan_count(Cursor *str, int len)
{
    const int count = scan_int(str, len);
    if (count >= 0)
        return count;
    elog_complain<MessageKind::negative_count, "Negative count %d of a list\n">(0, count);
    parsing().Bad_blkflag = 1;
    return 0;
}

int scan_listed_count(Cursor *str, int len)
{
    return parsing().for_listing ? scan_int(str, len) : scan_count(str, len);
}

double scan_double(Cursor *str, int len)
{
    const std::string_view field = str->field(len);
    std::size_t used = 0;
    double value = read_real(field, &used);
    if (used == field.size())
        return value;
    Room room;
    const std::string_view text = repaired(field, room);
    if (text.data() != field.data())
        value = read_real(text, &used);
    if (used == 0)
        report_bad_field<MessageKind::bad_real, "Couldn't convert '%s' to a real number.\n">(text);
    return value;
}

char scan_char(Cursor *str)
{
    const std::string_view rest = str->rest();
    str->advance(1);
    return rest.empty() ? '\0' : rest.front();
}

std::string_view scan_raw(Cursor *str, int len) { return str->field(len); }

void scan_var_str(Cursor *source, char *dest, std::size_t maxchars)
{
    std::string_view text = source->rest();
    if (text.starts_with('~')) {
        *dest = '\0';
        source->advance(1);
        return;
    }
    const auto *first = std::find_if_not(text.begin(), text.end(), is_space);
    const auto skipped = static_cast<std::size_t>(first - text.begin());
    text.remove_prefix(skipped);
    const auto *stop = std::find_if(text.begin(), text.begin() + std::min(text.size(), maxchars),
                                    [](char c) { return c == '~' || c == '\0'; });
    auto size = static_cast<std::size_t>(stop - text.begin());
    if (size == maxchars) {
        std::copy_n(text.begin(), maxchars - 1, dest);
        source->advance(skipped + cut_var_str(text, dest, maxchars));
        return;
    }
    const bool closed = size < text.size() && text[size] == '~';
    source->advance(skipped + size + closed);
    while (size > 0 && is_space(text[size - 1]))
        --size;
    std::copy_n(text.begin(), size, dest);
    dest[size] = '\0';
}

void scan_head(Cursor *str, blk_t *blk)
{
    blk->type = scan_int(str, 3);
    blk->length = scan_int(str, 4);
}

bool begins_within(const Cursor &in, int length)
{
    return in.position() < static_cast<std::size_t>(std::max(length, 0));
}

int entries_held(const Cursor &in, int length, int promised, std::size_t size)
{
    const auto end = static_cast<std::size_t>(std::max(length, 0));
    const std::size_t room = end > in.position() ? (end - in.position()) / size : 0;
    return static_cast<int>(std::min<std::size_t>(std::max(promised, 0), room));
}

void log_abort(std::string_view what, int i)
{
    elog_log<MessageKind::list_abandoned, "Aborting input of %s at #%d\n">(0, what, i);
}

} // namespace quarl
