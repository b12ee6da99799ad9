// Writes the fields of a record as members of a JSON object, by their descriptions.
#pragma once

#include "platform/json_text.h"
#include "platform/out.h"
#include "platform/text.h"
#include "platform/utf8.h"
#include "json/keys.h"
#include "json/style.h"
#include "json/time.h"

#include <array>
#include <cmath>
#include <quarl/volume.h>
#include <vector>

namespace quarl::json
{

/// No text of a record or dictionary is longer.
inline constexpr std::size_t Longest_Text = 200;

/// Where an object goes, and what is found out while it is written.
struct Pen {
    Out &out;
    const Volume *volume; ///< what codes stand for; null where there are none
    const Style &style;
    const Item *flawed = nullptr; ///< the item, when there are fields without a value
    bool bad = false;             ///< a field is
    bool cut = false;             ///< the item ends before what it holds does
    bool leap_second = false;     ///< a time of the object at hand is in a second 60

    /// Claims what was written up to `to` and makes room for `size` more.
    [[nodiscard]] char *room(const char *to, std::size_t size) const
    {
        out.commit(to);
        return out.reserve(size);
    }
    /// Why the field has no value whose place in the record is `place`.
    [[nodiscard]] Absence absence(const void *place) const
    {
        return flawed ? flawed->absence_at(place) : Absence::none;
    }
};

/// The text of a code that the standard or the volume defines; `defined` tells whether it does.
std::string_view meaning_of(const Pen &pen, Dictionary dictionary, int code, bool *defined);

/// Whether a text is taken as UTF-8; it is Latin-1 otherwise, and the same when it is ASCII.
inline bool is_utf8(const Style &style, std::string_view text)
{
    return style.takes_utf8 && quarl::is_utf8(text);
}

inline char *put_value(char *to, bool value) { return put_bool(to, value); }
inline char *put_value(char *to, int value) { return put_number(to, value); }
inline char *put_value(char *to, std::int64_t value) { return put_number(to, value); }
inline char *put_value(char *to, double value) { return put_number(to, value); }
inline char *put_value(char *to, std::string_view text)
{
    return put_string(to, trimmed(text).substr(0, Longest_Text));
}
/// A text of any length, its blanks kept.
inline char *put_whole_text(const Style &style, char *to, std::string_view text)
{
    *to = '"';
    to = put_characters(to + 1, text, is_utf8(style, text) ? Shown_Utf8 : Shown_Latin);
    *to = '"';
    return to + 1;
}
inline char *put_value(const Style &style, char *to, std::string_view text)
{
    text = trimmed(text).substr(0, Longest_Text);
    return is_utf8(style, text) ? put_whole_text(style, to, text) : put_string(to, text);
}
template <class T, std::size_t N> char *put_value(char *to, const std::array<T, N> &numbers)
{
    *to++ = '[';
    for (std::size_t i = 0; i < N; ++i) {
        if (i > 0)
            *to++ = ',';
        to = put_number(to, numbers[i]);
    }
    *to++ = ']';
    return to;
}
/// A blank, or what a parser leaves beyond a blockette's end, is no character.
inline char *put_value(char *to, char c)
{
    return put_string(to, {&c, c == ' ' || c == '\0' ? std::size_t{0} : 1});
}
template <class T> char *put_value(const Style & /*style*/, char *to, const T &value)
{
    return put_value(to, value);
}

inline bool is_given(int value) { return value >= 0; }
inline bool is_given(std::string_view text) { return !text.empty(); }

/// The text of a time that the calendar has not, as SEED writes times.
inline std::string raw_text(const BinaryTime &time)
{
    return formatted<"%04i,%03i,%02i:%02i:%02i.%04i">(time.year, time.day_of_year, time.hour,
                                                      time.minute, time.second, time.fraction);
}
inline std::string_view raw_text(std::string_view text) { return text; }

/// A time; beside it, where they are wanted, the seconds since 1970, and the text as it stands
/// where it says more.
template <class Field, Literal Before, class Value>
char *put_time_member(Pen &pen, char *to, const Value &value)
{
    const TimeTold told = told_by(value, Field::meaning == Meaning::end_time);
    to = Key<Field, Before, "\":">::put(to);
    to = told.parts ? put_time(to, *told.parts) : put_text(to, "null");
    if (pen.style.has_seconds) {
        to = Key<Field, ",\"", "_seconds\":">::put(to);
        to = told.parts ? put_seconds(to, time_of(*told.parts)) : put_text(to, "null");
    }
    pen.leap_second |= told.leap_second;
    pen.bad |= told.bad;
    if (told.shows_raw) {
        to = Key<Field, ",\"", "_raw\":">::put(to);
        to = put_value(to, std::string_view(raw_text(value)));
    }
    return to;
}

/// The value of a field with this meaning.
template <Meaning M, class Value> char *put_meant(Pen &pen, char *to, const Value &value)
{
    if constexpr (M == Meaning::optional)
        if (!is_given(value))
            return put_text(to, "null");
    if constexpr (std::is_same_v<Value, double>)
        pen.bad |= !std::isfinite(value);
    return put_value(pen.style, to, value);
}

/// A code and, beside it, the text that it stands for.
template <class Field, Literal Before> char *put_code(Pen &pen, char *to, int code)
{
    bool defined = false;
    const std::string_view text = meaning_of(pen, Field::dictionary, code, &defined);
    to = Key<Field, Before, "_code\":">::put(to);
    if (Field::dictionary == Dictionary::encodings && code < 0)
        to = put_text(to, "null");
    else
        to = put_number(to, code);
    to = Key<Field, ",\"", "\":">::put(to);
    return defined ? put_value(pen.style, to, text) : put_text(to, "null");
}

/// A field of which the volume holds no value.
template <class Field, Literal Before> char *put_absent(Pen &pen, char *to, Absence absence)
{
    const bool fine =
        absence == Absence::left_out || (absence == Absence::blank && Field::may_be_blank);
    pen.bad |= !fine;
    if constexpr (Field::meaning == Meaning::code)
        return Key<Field, ",\"", "\":null">::put(Key<Field, Before, "_code\":null">::put(to));
    to = Key<Field, Before, "\":null">::put(to);
    if constexpr (Field::meaning == Meaning::time || Field::meaning == Meaning::end_time)
        if (pen.style.has_seconds)
            to = Key<Field, ",\"", "_seconds\":null">::put(to);
    return to;
}

/// A text that may be longer than any room: it goes out in parts. Behind it there is some room.
inline char *put_long_text(const Pen &pen, char *to, std::string_view text)
{
    constexpr std::size_t At_Once = 1024;
    const Shown &shown = is_utf8(pen.style, text) ? Shown_Utf8 : Shown_Latin;
    to = pen.room(to, 1);
    *to++ = '"';
    for (; !text.empty(); text.remove_prefix(std::min(text.size(), At_Once))) {
        const std::string_view part = text.substr(0, At_Once);
        to = put_characters(pen.room(to, string_room(part.size())), part, shown);
    }
    to = pen.room(to, At_Once);
    *to++ = '"';
    return to;
}

/// Characters of a value, or of a code and its text.
template <class Value> constexpr std::size_t Value_Room = Number_Room;
template <> inline constexpr std::size_t Value_Room<std::string_view> = string_room(Longest_Text);
template <>
inline constexpr std::size_t Value_Room<BinaryTime> = Time_Room + Number_Room +
                                                      string_room(Longest_Text);
template <class T, std::size_t N>
inline constexpr std::size_t Value_Room<std::array<T, N>> = 2 + N *Number_Room;
constexpr std::size_t value_room(Meaning meaning, std::size_t room)
{
    return meaning == Meaning::code ? Number_Room + string_room(Longest_Text) : room;
}
/// Characters of a field, comma and key included.
template <class Field, class Value>
constexpr std::size_t Member_Room = 3 * (Field::name.size() + 16) +
                                    value_room(Field::meaning, Value_Room<Value>);

/// One field that is no list, whose value stands at `place` of the record.
template <class Field, Literal Before = ",\"", class Value>
char *put_member(Pen &pen, char *to, const Value &value, const void *place = nullptr)
{
    if constexpr (Field::meaning == Meaning::absent)
        return to;
    if (const Absence absence = pen.absence(place); absence != Absence::none)
        return put_absent<Field, Before>(pen, to, absence);
    if constexpr (Field::meaning == Meaning::time || Field::meaning == Meaning::end_time) {
        return put_time_member<Field, Before>(pen, to, value);
    } else if constexpr (Field::meaning == Meaning::code) {
        return put_code<Field, Before>(pen, to, value);
    } else {
        to = Key<Field, Before, "\":">::put(to);
        return put_meant<Field::meaning>(pen, to, value);
    }
}

/// A number of entries, as the volume has it.
inline char *put_count(Pen &pen, char *to, int count, const void *place)
{
    if (pen.absence(place) == Absence::none)
        return put_number(to, count);
    pen.bad = true;
    return put_text(to, "null");
}

/// A field that holds several codes: their number and an object for each. Needs no room: it makes
/// its own, and then `size` more.
template <class Field>
char *put_codes(Pen &pen, char *to, const std::vector<int> &codes, const int &promised,
                std::size_t size)
{
    constexpr std::size_t Room = Member_Room<EachOf<Field>, int> + Number_Room;
    to = pen.room(to, Room);
    to = Key<Field, ",\"number_of_", "\":">::put(to);
    to = put_count(pen, to, promised, &promised);
    to = Key<Field, ",\"", "\":[">::put(to);
    bool first = true;
    for (const int &code : codes) {
        to = pen.room(to, Room);
        if (!std::exchange(first, false))
            *to++ = ',';
        to = put_member<EachOf<Field>, "{\"">(pen, to, code, &code);
        *to++ = '}';
    }
    to = pen.room(to, size);
    *to++ = ']';
    return to;
}

/// Ends an object that may have times.
inline char *put_end(Pen &pen, char *to)
{
    if (std::exchange(pen.leap_second, false))
        to = put_text(to, ",\"leap_second\":true");
    *to++ = '}';
    return to;
}

template <class Set, std::size_t I, std::size_t... J>
constexpr std::size_t entry_room(std::index_sequence<J...> /*columns*/)
{
    return (Member_Room<ColumnAt<Set, I, J>, EntryOf<ColumnAt<Set, I, J>>> + ...) + 32;
}

template <class Set, std::size_t I, std::size_t J>
char *put_column(Pen &pen, char *to, const typename Set::Record &record, std::size_t entry,
                 std::size_t room)
{
    using Field = ColumnAt<Set, I, J>;
    decltype(auto) value = Field::field.value(record, entry);
    if constexpr (std::is_same_v<decltype(value), const std::vector<int> &>)
        return put_codes<Field>(pen, to, value, record.promised_codes(entry), room);
    else if constexpr (J == 0)
        return put_member<Field, "{\"">(pen, to, value, Field::field.place(record, entry));
    else
        return put_member<Field>(pen, to, value, Field::field.place(record, entry));
}

template <class Set, std::size_t I, std::size_t... J>
char *put_entries(Pen &pen, char *to, const typename Set::Record &record,
                  std::index_sequence<J...> columns)
{
    constexpr std::size_t Room = entry_room<Set, I>(columns);
    static_assert(Room <= Out::Capacity);
    const std::size_t size = At<Set, I>::field.size(record);
    for (std::size_t entry = 0; entry < size; ++entry) {
        to = pen.room(to, Room);
        if (entry > 0)
            *to++ = ',';
        ((to = put_column<Set, I, J>(pen, to, record, entry, Room)), ...);
        to = put_end(pen, to);
    }
    return to;
}

/// A list: how many entries the volume promises, and those that are there.
template <class Set, std::size_t I>
char *put_list(Pen &pen, char *to, const typename Set::Record &record, std::size_t room)
{
    to = Key<CountAt<Set, I>, ",\"", "\":">::put(to);
    to = put_count(pen, to, At<Set, I>::field.promised(record),
                   At<Set, I>::field.promised_place(record));
    to = Key<At<Set, I>, ",\"", "\":[">::put(to);
    to = put_entries<Set, I>(pen, to, record, std::make_index_sequence<Columns<Set, I>>());
    to = pen.room(to, room + 1);
    *to++ = ']';
    return to;
}

template <class Set, std::size_t I> constexpr std::size_t field_room()
{
    using Field = At<Set, I>;
    if constexpr (Field::Is_List)
        return 2 * (Field::name.size() + CountAt<Set, I>::name.size() + 12) + Number_Room;
    else
        return Member_Room<Field, ValueOf<Field>>;
}

template <class Set, std::size_t... I>
constexpr std::size_t set_room(std::index_sequence<I...> /*fields*/)
{
    return (field_room<Set, I>() + ... + 0);
}

template <class Set, std::size_t... I>
char *put_set(Pen &pen, char *to, const typename Set::Record &record,
              std::index_sequence<I...> fields)
{
    constexpr std::size_t Room = set_room<Set>(fields) + 1;
    static_assert(Room <= Out::Capacity);
    to = pen.room(to, Room);
    const auto put = [&]<std::size_t Index>(std::integral_constant<std::size_t, Index>) {
        using Field = At<Set, Index>;
        if constexpr (Field::Is_List)
            to = put_list<Set, Index>(pen, to, record, Room);
        else
            to = put_member<Field>(pen, to, Field::field.value(record), Field::field.place(record));
    };
    (put(std::integral_constant<std::size_t, I>()), ...);
    return to;
}

/// All fields of a set, each with a comma before it.
template <class Set> char *put_set(Pen &pen, char *to, const typename Set::Record &record)
{
    return put_set<Set>(pen, to, record, Indices<Set>());
}

/// The keys of a set with nothing behind them.
template <class Set, std::size_t... I>
char *put_nulls(Pen &pen, char *to, std::index_sequence<I...> /*fields*/)
{
    ((to = put_absent<At<Set, I>, ",\"">(pen, to, Absence::left_out)), ...);
    return to;
}

} // namespace quarl::json
