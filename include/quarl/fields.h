// How the fields of a record are described: name, unit, meaning, and the way to the value.
//
// Each record type T has `T::fields()`, a row of these descriptions in the order of the standard:
//
//     quarl::for_each_field<quarl::blk_034_t>([&](const auto &field) {
//         if constexpr (!field.Is_List)
//             show(field.name, field.value(record));
//     });
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace quarl
{

/// The dictionaries that a volume's abbreviation headers fill.
enum class Dictionary {
    none,
    data_formats,  ///< 030: data format names
    comments,      ///< 031: comment descriptions
    sources,       ///< 032: authors of cited sources
    abbreviations, ///< 033: generic abbreviations
    units,         ///< 034: unit names
    responses,     ///< 041 to 048: response lookup keys
    encodings,     ///< encoding formats of Blockette 1000, which the standard defines
};

/// What a field holds.
enum class Meaning {
    number,
    text,
    time,     ///< SEED time as text; empty: not given
    end_time, ///< the same; empty: open
    code,     ///< refers to an entry of `dictionary`
    key,      ///< defines an entry of `dictionary`
    exponent, ///< of 2
    flag,     ///< true or false
    optional, ///< a number or text; a negative or an empty one: not given
    bytes,    ///< anything
    absent,   ///< has its place in the record, but no parser fills it
};

/// Why the volume has no value for a field.
enum class Absence : char {
    none,       ///< it has one
    blank,      ///< of a number
    unreadable, ///< not a finite number, with something behind it, or a text that nothing closes
    cut,        ///< the item's bytes end before the field does
    left_out,   ///< the same, where older versions of the format end, or writers as a rule
};

/// What is said of a field besides its value. Texts live for ever.
struct About {
    std::string_view name;      ///< the standard's term, in small letters and "_"
    std::string_view unit = {}; ///< "" for none
    Meaning meaning = Meaning::number;
    Dictionary dictionary = Dictionary::none;
    std::string_view each = {}; ///< the term for one of them, where a field holds several numbers
    bool may_be_blank = false;  ///< the standard lets a writer leave the number out
};

namespace fields
{

// Descriptions of several types side by side. A std::tuple of them takes the compiler ten times as
// long.
template <std::size_t I, class Description> struct Place {
    Description description;
};
template <class Indices, class... Descriptions> struct Places;
template <std::size_t... I, class... Descriptions>
struct Places<std::index_sequence<I...>, Descriptions...> : Place<I, Descriptions>... {
    static constexpr std::size_t Size = sizeof...(Descriptions);
};
template <class... Descriptions>
using Row = Places<std::index_sequence_for<Descriptions...>, Descriptions...>;

template <class... Descriptions>
constexpr Row<Descriptions...> all_fields(Descriptions... descriptions)
{
    return {{descriptions}...};
}

/// Description `I` of a row.
template <std::size_t I, class Description>
constexpr const Description &at(const Place<I, Description> &place)
{
    return place.description;
}

/// Calls f(description) for each one of a row.
template <std::size_t... I, class... Descriptions, class F>
constexpr void for_each(const Places<std::index_sequence<I...>, Descriptions...> &row, F &&f)
{
    (f(at<I>(row)), ...);
}

/// Values as they are handed out: bool, int (std::int64_t, where an int has no room), double, char,
/// text without terminator, times and lists of numbers as they are.
inline bool plain(bool value) { return value; }
inline int plain(int value) { return value; }
inline int plain(std::int8_t value) { return value; }
inline int plain(std::uint8_t value) { return value; }
inline int plain(std::uint16_t value) { return value; }
inline std::int64_t plain(std::uint32_t value) { return value; }
inline double plain(float value) { return value; }
inline double plain(double value) { return value; }
inline char plain(char value) { return value; }
inline std::string_view plain(const char *text) { return text; }
template <class T>
requires std::is_class_v<T>
constexpr const T &plain(const T &value) { return value; }

/// One field of a record.
template <class Member> struct Field : About {
    static constexpr bool Is_List = false;
    Member member;

    template <class Record> [[nodiscard]] decltype(auto) value(const Record &record) const
    {
        return plain(std::invoke(member, record));
    }
    /// The member that the value is read from: what Item::absence_at asks for.
    template <class Record> [[nodiscard]] const void *place(const Record &record) const
    {
        if constexpr (requires { record.*(member.flags); })
            return &(record.*(member.flags));
        else if constexpr (requires { record.*(member.byte); })
            return &(record.*(member.byte));
        else
            return &std::invoke(member, record);
    }
};

/// One field of each entry of a list: `array` is indexed by the entry, `part` is a member of an
/// entry, or nothing when the entry is the value.
template <class Array, class Part> struct Column : About {
    Array array;
    Part part;

    template <class Record>
    [[nodiscard]] decltype(auto) value(const Record &record, std::size_t entry) const
    {
        if constexpr (std::is_invocable_v<Array, const Record &, std::size_t>)
            return plain(std::invoke(array, record, entry));
        else if constexpr (std::is_same_v<Part, std::nullptr_t>)
            return plain(std::invoke(array, record)[entry]);
        else
            return plain(std::invoke(part, std::invoke(array, record)[entry]));
    }
    template <class Record>
    [[nodiscard]] const void *place(const Record &record, std::size_t entry) const
    {
        if constexpr (std::is_invocable_v<Array, const Record &, std::size_t>)
            return std::invoke(array, record, entry);
        else if constexpr (std::is_same_v<Part, std::nullptr_t>)
            return &std::invoke(array, record)[entry];
        else
            return &std::invoke(part, std::invoke(array, record)[entry]);
    }
};

/// A list: how many entries there are, how many the volume promises, and the fields of each.
template <class Count, class Promised, class... Columns> struct List : About {
    static constexpr bool Is_List = true;
    std::string_view count_name; ///< the standard's term for the number of entries
    Count count;
    Promised promised_count;
    Row<Columns...> columns;

    /// Entries that the record holds.
    template <class Record> [[nodiscard]] std::size_t size(const Record &record) const
    {
        const int kept = std::invoke(count, record);
        return kept < 0 ? 0 : static_cast<std::size_t>(kept);
    }
    /// Entries as counted by the volume.
    template <class Record> [[nodiscard]] int promised(const Record &record) const
    {
        return std::invoke(promised_count, record);
    }
    template <class Record> [[nodiscard]] const void *promised_place(const Record &record) const
    {
        return &std::invoke(promised_count, record);
    }
};

template <class Member>
constexpr auto number(std::string_view name, Member member, std::string_view unit = {})
{
    return Field<Member>{{name, unit, Meaning::number}, member};
}
template <class Member> constexpr auto text(std::string_view name, Member member)
{
    return Field<Member>{{name, {}, Meaning::text}, member};
}
template <class Member> constexpr auto when(std::string_view name, Member member)
{
    return Field<Member>{{name, {}, Meaning::time}, member};
}
template <class Member> constexpr auto until(std::string_view name, Member member)
{
    return Field<Member>{{name, {}, Meaning::end_time}, member};
}
template <class Member>
constexpr auto code(std::string_view name, Dictionary dictionary, Member member)
{
    return Field<Member>{{name, {}, Meaning::code, dictionary}, member};
}
template <class Member>
constexpr auto key(std::string_view name, Dictionary dictionary, Member member)
{
    return Field<Member>{{name, {}, Meaning::key, dictionary}, member};
}
/// A number, or the code of one, that the standard lets a writer leave blank.
template <class Description> constexpr Description or_blank(Description description)
{
    description.may_be_blank = true;
    return description;
}
/// Several numbers.
template <class Member>
constexpr auto numbers(std::string_view name, Member member, std::string_view unit = {})
{
    return Field<Member>{{name, unit, Meaning::number}, member};
}
template <class Member> constexpr auto bytes(std::string_view name, Member member)
{
    return Field<Member>{{name, {}, Meaning::bytes}, member};
}
/// One bit of a byte of flags.
template <class Record, class Byte> struct Bit {
    Byte Record::*flags;
    int mask;
    bool operator()(const Record &record) const { return (record.*flags & mask) != 0; }
};
template <class Record, class Byte>
constexpr auto flag(std::string_view name, Byte Record::*flags, int bit)
{
    return Field<Bit<Record, Byte>>{{name, {}, Meaning::flag}, {flags, 1 << bit}};
}
/// A number in `Count` bits of a byte, from bit `From` on.
template <class Record, int From, int Count> struct Bits {
    std::uint8_t Record::*byte;
    int operator()(const Record &record) const { return record.*byte >> From & ((1 << Count) - 1); }
};
template <int From, int Count, class Record>
constexpr auto bits(std::string_view name, std::uint8_t Record::*byte)
{
    return Field<Bits<Record, From, Count>>{{name, {}, Meaning::number}, {byte}};
}
/// A byte of flags that is kept with its sign: 0 to 255.
template <class Record> struct Byte {
    int Record::*flags;
    int operator()(const Record &record) const { return record.*flags & 0xFF; }
};
template <class Record> constexpr auto flags_byte(std::string_view name, int Record::*flags)
{
    return Field<Byte<Record>>{{name, {}, Meaning::number}, {flags}};
}
template <class Member> constexpr auto optional(std::string_view name, Member member)
{
    return Field<Member>{{name, {}, Meaning::optional}, member};
}
template <class Member> constexpr auto exponent(std::string_view name, Member member)
{
    return Field<Member>{{name, "bytes", Meaning::exponent}, member};
}
template <class Member> constexpr auto absent(std::string_view name, Member member)
{
    return Field<Member>{{name, {}, Meaning::absent}, member};
}

/// Bytes that a member takes in a binary layout; a list that is as long as there is room for it
/// takes none.
template <class T> inline constexpr std::size_t Width = sizeof(T);
template <class T, class Record> inline constexpr std::size_t Width<T Record::*> = Width<T>;
template <std::size_t N> inline constexpr std::size_t Width<char[N]> = N - 1;
template <class T> inline constexpr std::size_t Width<std::vector<T>> = 0;
template <class Record, class Byte> inline constexpr std::size_t Width<Bit<Record, Byte>> = 1;
template <class Record, int From, int Count>
inline constexpr std::size_t Width<Bits<Record, From, Count>> = 1;

/// A field of a binary layout, which stands from byte `From` on.
template <std::size_t From, class Description> struct Placed : Description {
    static constexpr std::size_t Begin = From;
    static constexpr std::size_t End = From + Width<decltype(Description::member)>;
};
template <std::size_t From, class Description> constexpr auto from(Description description)
{
    return Placed<From, Description>{description};
}

template <class Array, class Part = std::nullptr_t>
constexpr auto column(About about, Array array, Part part = nullptr)
{
    return Column<Array, Part>{about, array, part};
}

/// A list of which the record keeps a limited number of entries.
template <class Count, class Promised, class... Columns>
constexpr auto limited_list(std::string_view name, std::string_view count_name, Count count,
                            Promised promised, Columns... columns)
{
    return List<Count, Promised, Columns...>{
        {name, {}, Meaning::number}, count_name, count, promised, all_fields(columns...)};
}

} // namespace fields

/// The descriptions of record type T's fields.
template <class T> inline constexpr auto Fields = T::fields();

/// Calls f(field) for each field of T, in the order of the standard.
template <class T, class F> constexpr void for_each_field(F &&f) { fields::for_each(Fields<T>, f); }

} // namespace quarl
