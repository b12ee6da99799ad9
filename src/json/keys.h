// The texts of keys, made by the compiler out of the descriptions of fields.
#pragma once

#include "platform/format.h"

#include <array>
#include <cstring>
#include <quarl/fields.h>
#include <string_view>
#include <type_traits>
#include <utility>

namespace quarl::json
{

// What an object shows of a record: the rows of descriptions that the record has.

/// The record's own fields.
template <class T> struct Own {
    using Record = T;
    static constexpr auto fields = T::fields();
};
/// The station to which it belongs.
template <class T> struct OfStation {
    using Record = T;
    static constexpr auto fields = T::station_context();
};
/// The channel to which it belongs.
template <class T> struct OfChannel {
    using Record = T;
    static constexpr auto fields = T::channel_context();
};
template <class T> inline constexpr bool Has_Station = requires { T::station_context(); };
template <class T> inline constexpr bool Has_Channel = requires { T::channel_context(); };

template <class Set> inline constexpr std::size_t Count = decltype(Set::fields)::Size;
template <class Set> using Indices = std::make_index_sequence<Count<Set>>;

/// Field `I` of a set.
template <class Set, std::size_t I> struct At {
    using Record = typename Set::Record;
    static constexpr const auto &field = fields::at<I>(Set::fields);
    static constexpr std::string_view name = field.name;
    static constexpr std::string_view each = field.each;
    static constexpr Meaning meaning = field.meaning;
    static constexpr Dictionary dictionary = field.dictionary;
    static constexpr bool may_be_blank = field.may_be_blank;
    static constexpr bool Is_List = std::remove_cvref_t<decltype(field)>::Is_List;
};
/// What a field that is no list holds.
template <class Field>
using ValueOf = std::remove_cvref_t<decltype(Field::field.value(
    std::declval<const typename Field::Record &>()))>;

/// Column `J` of the list that is field `I` of a set.
template <class Set, std::size_t I, std::size_t J> struct ColumnAt {
    using Record = typename Set::Record;
    static constexpr const auto &field = fields::at<J>(fields::at<I>(Set::fields).columns);
    static constexpr std::string_view name = field.name;
    static constexpr std::string_view each = field.each;
    static constexpr Meaning meaning = field.meaning;
    static constexpr Dictionary dictionary = field.dictionary;
    static constexpr bool may_be_blank = field.may_be_blank;
};
/// What a column of a list holds in one entry.
template <class Column>
using EntryOf = std::remove_cvref_t<decltype(Column::field.value(
    std::declval<const typename Column::Record &>(), std::size_t()))>;

template <class Set, std::size_t I>
inline constexpr std::size_t Columns =
    std::remove_cvref_t<decltype(fields::at<I>(Set::fields).columns)>::Size;

/// The name of a list's count.
template <class Set, std::size_t I> struct CountAt {
    static constexpr std::string_view name = fields::at<I>(Set::fields).count_name;
};
/// The name of one of the numbers that a field holds.
template <class Field> struct EachOf {
    static constexpr std::string_view name = Field::each;
    static constexpr Meaning meaning = Field::meaning;
    static constexpr Dictionary dictionary = Field::dictionary;
    static constexpr bool may_be_blank = Field::may_be_blank;
};

template <Literal Text> char *put_literal(char *to)
{
    std::memcpy(to, Text.text.data(), Text.size);
    return to + Text.size;
}

/// BEFORE, the name of Named, AFTER.
template <class Named, Literal Before, Literal After> struct Key {
    static constexpr std::size_t size = Before.size + Named::name.size() + After.size;
    static constexpr auto text = [] {
        std::array<char, size> all{};
        auto to = std::copy_n(Before.text.begin(), Before.size, all.begin());
        to = std::copy(Named::name.begin(), Named::name.end(), to);
        std::copy_n(After.text.begin(), After.size, to);
        return all;
    }();
    static char *put(char *to)
    {
        std::memcpy(to, text.data(), size);
        return to + size;
    }
};

} // namespace quarl::json
