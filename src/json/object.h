// Writes the fields of a record as members of a JSON object, by their descriptions.
#pragma once

#include "platform/json_text.h"
#include "platform/out.h"
#include "platform/text.h"
#include "json/keys.h"
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
    const Volume &volume;
    bool bad = false; ///< a time is none

    /// Claims what was written up to `to` and makes room for `size` more.
    [[nodiscard]] char *room(const char *to, std::size_t size) const
    {
        out.commit(to);
        return out.reserve(size);
    }
};

/// The text of a code that the standard or the volume defines; `defined` tells whether it does.
std::string_view meaning_of(const Pen &pen, Dictionary dictionary, int code, bool *defined);

inline char *put_value(char *to, bool value) { return put_bool(to, value); }
inline char *put_value(char *to, int value) { return put_number(to, value); }
inline char *put_value(char *to, std::int64_t value) { return put_number(to, value); }
inline char *put_value(char *to, double value) { return put_number(to, value); }
inline char *put_value(char *to, std::string_view text)
{
    return put_string(to, trimmed(text).substr(0, Longest_Text));
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

inline bool is_given(int value) { return value >= 0; }
inline bool is_given(std::string_view text) { return !text.empty(); }

/// A time with four decimals. One that the calendar has not is written as the text that SEED has
/// for times, and is bad.
inline char *put_time_or_text(Pen &pen, char *to, const BinaryTime &time)
{
    if (time == BinaryTime())
        return put_text(to, "null");
    if (char *end = put_time(to, time))
        return end;
    pen.bad = true;
    char text[Time_Size + 20];
    quarl::put_text<"%04i,%03i,%02i:%02i:%02i.%04i">(text, time.year, time.day_of_year, time.hour,
                                                     time.minute, time.second, time.fraction);
    return put_value(to, std::string_view(text));
}

inline char *put_time_or_text(Pen &pen, char *to, std::string_view text)
{
    if (text.empty())
        return put_text(to, "null");
    if (char *end = put_time(to, text))
        return end;
    pen.bad = true;
    return put_value(to, text);
}

/// The value of a field with this meaning.
template <Meaning M, class Value> char *put_meant(Pen &pen, char *to, const Value &value)
{
    if constexpr (M == Meaning::time || M == Meaning::end_time) {
        return put_time_or_text(pen, to, value);
    } else {
        if constexpr (M == Meaning::optional)
            if (!is_given(value))
                return put_text(to, "null");
        if constexpr (std::is_same_v<Value, double>)
            pen.bad |= !std::isfinite(value);
        return put_value(to, value);
    }
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
    return defined ? put_value(to, text) : put_text(to, "null");
}

/// Characters of a value, or of a code and its text.
template <class Value> constexpr std::size_t Value_Room = Number_Room;
template <> inline constexpr std::size_t Value_Room<std::string_view> = string_room(Longest_Text);
template <class T, std::size_t N>
inline constexpr std::size_t Value_Room<std::array<T, N>> = 2 + N *Number_Room;
constexpr std::size_t value_room(Meaning meaning, std::size_t room)
{
    return meaning == Meaning::code ? Number_Room + string_room(Longest_Text) : room;
}
/// Characters of a field, comma and key included.
template <class Field, class Value>
constexpr std::size_t Member_Room = 2 * (Field::name.size() + 12) +
                                    value_room(Field::meaning, Value_Room<Value>);

/// One field that is no list.
template <class Field, Literal Before = ",\"", class Value>
char *put_member(Pen &pen, char *to, const Value &value)
{
    if constexpr (Field::meaning == Meaning::absent) {
        return to;
    } else if constexpr (Field::meaning == Meaning::code) {
        return put_code<Field, Before>(pen, to, value);
    } else {
        to = Key<Field, Before, "\":">::put(to);
        return put_meant<Field::meaning>(pen, to, value);
    }
}

/// A field that holds several codes: their number and an object for each. Needs no room: it makes
/// its own, and then `size` more.
template <class Field>
char *put_codes(Pen &pen, char *to, const std::vector<int> &codes, std::size_t size)
{
    constexpr std::size_t Room = Member_Room<EachOf<Field>, int> + Number_Room;
    to = pen.room(to, Room);
    to = Key<Field, ",\"number_of_", "\":">::put(to);
    to = put_number(to, static_cast<std::int64_t>(codes.size()));
    to = Key<Field, ",\"", "\":[">::put(to);
    bool first = true;
    for (const int code : codes) {
        to = pen.room(to, Room);
        if (!std::exchange(first, false))
            *to++ = ',';
        to = put_code<EachOf<Field>, "{\"">(pen, to, code);
        *to++ = '}';
    }
    to = pen.room(to, size);
    *to++ = ']';
    return to;
}

template <class Set, std::size_t I, std::size_t... J>
constexpr std::size_t entry_room(std::index_sequence<J...> /*columns*/)
{
    return (Member_Room<ColumnAt<Set, I, J>, EntryOf<ColumnAt<Set, I, J>>> + ...) + 4;
}

template <class Set, std::size_t I, std::size_t J>
char *put_column(Pen &pen, char *to, const typename Set::Record &record, std::size_t entry,
                 std::size_t room)
{
    using Field = ColumnAt<Set, I, J>;
    decltype(auto) value = Field::field.value(record, entry);
    if constexpr (std::is_same_v<decltype(value), const std::vector<int> &>)
        return put_codes<Field>(pen, to, value, room);
    else if constexpr (J == 0)
        return put_member<Field, "{\"">(pen, to, value);
    else
        return put_member<Field>(pen, to, value);
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
        *to++ = '}';
    }
    return to;
}

/// A list: how many entries the volume promises, and those that are there.
template <class Set, std::size_t I>
char *put_list(Pen &pen, char *to, const typename Set::Record &record, std::size_t room)
{
    to = Key<CountAt<Set, I>, ",\"", "\":">::put(to);
    to = put_number(to, At<Set, I>::field.promised(record));
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
            to = put_member<Field>(pen, to, Field::field.value(record));
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
char *put_nulls(char *to, std::index_sequence<I...> /*fields*/)
{
    ((to = Key<At<Set, I>, ",\"", "\":null">::put(to)), ...);
    return to;
}

} // namespace quarl::json
