#include "blockette/scan.h"

#include "platform/elog.h"
#include "platform/read_number.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quarl
{

namespace
{

/// The field could not be converted although it is not blank.
template <MessageKind Kind, Literal Text> void report_bad_field(std::string_view field)
{
    if (blank(field))
        return;
    if (!parsing().abandoned)
        elog_log<Kind, Text>(0, field);
    parsing().Bad_blkflag = 1;
}

/// What a strict cursor has to say of a field of which `used` characters are a number.
Absence judged(const Cursor &in, std::string_view field, std::size_t used)
{
    if (in.ran_out())
        return Absence::cut;
    if (blank(field))
        return Absence::blank;
    return used > 0 && blank(field.substr(used)) ? Absence::none : Absence::unreadable;
}

/// Judges an integer, which may be written with decimals that are 0. Returns its value; 0 for what
/// is cut.
int judged_int(Cursor *in, std::string_view field, std::size_t used, int value)
{
    if (used > 0 && used < field.size() && field[used] == '.')
        used = std::min(field.find_first_not_of('0', used + 1), field.size());
    const Absence absence = judged(*in, field, used);
    in->flaw(absence);
    return absence == Absence::cut ? 0 : value;
}

using Room = std::array<char, 256>; ///< larger than any real field

/// `field` with its first "D" replaced by "E", when a digit or a point stands before it.
std::string_view without_d(std::string_view field, Room &room)
{
    const std::size_t letter = field.find_first_of("dD");
    if (letter == std::string_view::npos || letter == 0 || field.size() > room.size() ||
        (!is_digit(field[letter - 1]) && field[letter - 1] != '.'))
        return field;
    std::copy(field.begin(), field.end(), room.begin());
    room[letter] = 'E';
    return {room.data(), field.size()};
}

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

/// A whole field whose value is a finite decimal number.
bool is_plain(const Cursor &in, std::string_view field, double value)
{
    return !in.ran_out() && !field.empty() && std::isfinite(value) &&
           field.find('x') == std::string_view::npos && field.find('X') == std::string_view::npos;
}

/// Judges a real number, whose exponent may be Fortran's. Returns its value; 0 for what is cut.
double judged_real(Cursor *in, std::string_view field, std::size_t used, double value)
{
    Room room;
    Room room_for_sign;
    if (used < field.size() && used > 0) {
        const std::string_view text = repaired(without_d(field, room), room_for_sign);
        if (text.data() != field.data())
            value = read_real(text, &used);
    }
    const Absence absence = judged(*in, field, used);
    const bool no_number = absence == Absence::none &&
                           (!std::isfinite(value) || field.find_first_of("xX") < field.size());
    in->flaw(no_number ? Absence::unreadable : absence);
    return absence == Absence::cut ? 0.0 : value;
}

/// Ends a text that ran over its room: keeps what fits, reports, and skips to behind the "~".
std::size_t cut_var_str(std::string_view text, char *dest, std::size_t maxchars)
{
    dest[maxchars - 1] = '\0';
    if (!parsing().abandoned)
        elog_complain<MessageKind::text_too_long,
                      "variable string '%s' exceeded %d characters at %.80s\n">(
            0, std::string_view(dest, maxchars - 1), maxchars, up_to_nul(text));
    parsing().Bad_blkflag = 1;
    const std::size_t end = std::min(text.find_first_of(std::string_view("~\0", 2)), text.size());
    return end + (end < text.size() && text[end] == '~');
}

/// A text that nothing closes.
void leave_open(Cursor *source, char *dest)
{
    *dest = '\0';
    const bool at_end = source->position() >= source->size();
    source->flaw(at_end ? Absence::cut : Absence::unreadable);
    source->note(dest);
}

} // namespace

void Cursor::keep_flaw(const void *value)
{
    Flaws &flaws = parsing().flaws;
    if (flaw_ == Absence::cut && older_)
        flaw_ = Absence::left_out;
    flaws.add(value, flaw_);
    flaws.cut |= flaw_ == Absence::cut;
    flaw_ = Absence::none;
}

int scan_int(Cursor *str, int len)
{
    const std::string_view field = str->field(len);
    std::size_t used = 0;
    const int value = leading_int(field, &used);
    if (used == 0)
        report_bad_field<MessageKind::bad_integer, "Could not convert '%s' to an integer\n">(field);
    if (str->is_strict() && (used < field.size() || used == 0 || str->ran_out()))
        return judged_int(str, field, used, value);
    return value;
}

int scan_count(Cursor *str, int len)
{
    const int count = scan_int(str, len);
    if (count >= 0)
        return count;
    if (!parsing().abandoned)
        elog_complain<MessageKind::negative_count, "Negative count %d of a list\n">(0, count);
    parsing().Bad_blkflag = 1;
    str->flaw(Absence::unreadable);
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
    if (used == field.size() && (!str->is_strict() || is_plain(*str, field, value)))
        return value;
    Room room;
    const std::string_view text = repaired(field, room);
    if (text.data() != field.data())
        value = read_real(text, &used);
    if (used == 0)
        report_bad_field<MessageKind::bad_real, "Couldn't convert '%s' to a real number.\n">(text);
    return str->is_strict() ? judged_real(str, text, used, value) : value;
}

void scan_char(Cursor *str, char *to)
{
    const std::string_view rest = str->rest();
    str->advance(1);
    *to = rest.empty() ? '\0' : rest.front();
    if (str->is_strict() && rest.empty()) {
        str->flaw(Absence::cut);
        str->note(to);
    }
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
    if (!closed && source->is_strict())
        return leave_open(source, dest);
    while (size > 0 && is_space(text[size - 1]))
        --size;
    std::copy_n(text.begin(), size, dest);
    dest[size] = '\0';
}

void scan_head(Cursor *str, blk_t *blk)
{
    scan_int(str, 3, &blk->type);
    scan_int(str, 4, &blk->length);
}

bool begins_within(const Cursor &in, int length)
{
    return in.position() < static_cast<std::size_t>(std::max(length, 0)) &&
           (!in.is_strict() || in.position() < in.size());
}

int entries_held(const Cursor &in, int length, int promised, std::size_t size)
{
    const auto declared = static_cast<std::size_t>(std::max(length, 0));
    const std::size_t end = in.is_strict() ? std::min(declared, in.size()) : declared;
    const std::size_t room = end > in.position() ? (end - in.position()) / size : 0;
    return static_cast<int>(std::min<std::size_t>(std::max(promised, 0), room));
}

int entries_begun(const Cursor &in, int promised, std::size_t size)
{
    const std::size_t rest = in.size() - std::min(in.position(), in.size());
    return static_cast<int>(std::min<std::size_t>(std::max(promised, 0), (rest + size - 1) / size));
}

void log_abort(std::string_view what, int i)
{
    elog_log<MessageKind::list_abandoned, "Aborting input of %s at #%d\n">(0, what, i);
}

} // namespace quarl
