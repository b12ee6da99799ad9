// The schema of objects, member by member, by the descriptions of fields.
#pragma once

#include "platform/json_text.h"
#include "json/descriptions.h"
#include "json/keys.h"

#include <quarl/records.h>
#include <string>

namespace quarl::json
{

/// The schema of an object that has all of its members, and no others.
class Object
{
public:
    void add(std::string_view name, std::string_view schema)
    {
        add_optional(name, schema);
        required_ += (required_.empty() ? "" : ",") + quoted(name);
    }
    void add_optional(std::string_view name, std::string_view schema)
    {
        properties_ += properties_.empty() ? "" : ",";
        properties_ += "\n" + quoted(name) + ":" + std::string(schema);
    }
    [[nodiscard]] std::string text(std::string_view title = {}) const
    {
        return "{" + (title.empty() ? "" : "\"title\":" + quoted(title) + ",") +
               R"("type":"object","additionalProperties":false,"required":[)" + required_ +
               "],\"properties\":{" + properties_ + "}}";
    }

private:
    std::string required_;
    std::string properties_;
};

inline std::string one_of_type(std::string_view type, std::string_view about = {})
{
    std::string text = "{\"type\":" + std::string(type);
    if (!about.empty())
        text += ",\"description\":" + quoted(about);
    return text + "}";
}

inline constexpr std::string_view Integer = "\"integer\"";
inline constexpr std::string_view Integer_Or_Null = R"(["integer","null"])";
inline constexpr std::string_view String = "\"string\"";
inline constexpr std::string_view String_Or_Null = R"(["string","null"])";
inline constexpr std::string_view Boolean = "\"boolean\"";
inline constexpr std::string_view Boolean_Or_Null = R"(["boolean","null"])";
inline constexpr std::string_view Number_Or_Null = R"(["number","null"])";
inline constexpr std::string_view Exponent = "exponent of 2: 12 is 4096 bytes";

// Every value may be null: when the volume does not have it.
constexpr std::string_view type_of(int /*value*/) { return Integer_Or_Null; }
constexpr std::string_view type_of(std::int64_t /*value*/) { return Integer_Or_Null; }
constexpr std::string_view type_of(bool /*value*/) { return Boolean_Or_Null; }
constexpr std::string_view type_of(double /*value*/) { return Number_Or_Null; }
constexpr std::string_view type_of(char /*value*/) { return String_Or_Null; }
constexpr std::string_view type_of(std::string_view /*value*/) { return String_Or_Null; }

inline std::string_view defined_by(Dictionary dictionary)
{
    switch (dictionary) {
    case Dictionary::data_formats:
        return "refers to blockette 030";
    case Dictionary::comments:
        return "refers to blockette 031";
    case Dictionary::sources:
        return "refers to blockette 032";
    case Dictionary::abbreviations:
        return "refers to blockette 033";
    case Dictionary::units:
        return "refers to blockette 034";
    case Dictionary::responses:
        return "refers to blockettes 041 to 048";
    case Dictionary::encodings:
        return "encoding format of blockette 1000, or that of the data format";
    case Dictionary::none:
        break;
    }
    return {};
}

/// The number of a field in the standard's layout of a blockette, or what takes its place.
class FieldNumber
{
public:
    FieldNumber() = default;
    /// Of a blockette whose first field behind type and length, or type and next, comes next.
    static FieldNumber third() { return FieldNumber(3); }

    /// "field 5: what the key means, m"; the field is that of the next description.
    std::string about(std::string_view key, std::string_view unit)
    {
        return text(take(key), key, unit);
    }
    /// The same for a further key that comes from the field.
    [[nodiscard]] std::string about_again(std::string_view key, std::string_view unit) const
    {
        return text(number_ - 1, key, unit);
    }
    /// Fields that no key comes from.
    void skip(int fields) { number_ += number_ > 0 ? fields : 0; }

    /// The fields of the fixed header of a data record stand in another order than its keys.
    static FieldNumber of_header()
    {
        FieldNumber number;
        number.is_header_ = true;
        return number;
    }

private:
    explicit FieldNumber(int first) : number_(first) {}

    int take(std::string_view key)
    {
        if (is_header_)
            return header_field_of(key);
        return number_ > 0 ? number_++ : 0;
    }
    static std::string text(int number, std::string_view key, std::string_view unit)
    {
        std::string all = number > 0 ? "field " + std::to_string(number) + ": " : "";
        all += description_of(key);
        if (!unit.empty())
            all += ", " + std::string(unit);
        return all;
    }

    int number_ = 0; ///< 0: not told
    bool is_header_ = false;
};

/// A time and what may stand beside it.
inline void add_time(Object *object, std::string_view name, std::string_view about)
{
    const std::string key(name);
    object->add(name, R"({"$ref":"#/$defs/time","description":)" + quoted(about) + "}");
    object->add_optional(
        key + "_seconds",
        one_of_type(Number_Or_Null, "with --epoch: the same in seconds since 1970"));
    object->add_optional(key + "_raw",
                         one_of_type(String, "the text of the volume, where it says more"));
}

inline void add_leap_second(Object *object)
{
    object->add_optional("leap_second", R"({"const":true,"description":"a time is in a second 60, )"
                                        R"(told as the next minute's 0"})");
}

template <class Field> void add_code(Object *object, FieldNumber *number)
{
    const std::string about = number->about(Field::name, defined_by(Field::dictionary));
    object->add(std::string(Field::name) + "_code", one_of_type(Integer_Or_Null, "code: " + about));
    object->add(Field::name, one_of_type(String_Or_Null, "what the code stands for; null when it "
                                                         "is not defined up to here"));
}

inline std::string array_of(const Object &entries, std::string_view about)
{
    return "{\"type\":\"array\",\"description\":" + quoted(about) + ",\"items\":" + entries.text() +
           "}";
}

inline void add_count(Object *object, std::string_view name, FieldNumber *number)
{
    object->add(name, one_of_type(Integer_Or_Null, number->about(name, "as the volume promises")));
}

template <class Field> void add_codes(Object *object, FieldNumber *number)
{
    Object each;
    add_count(object, "number_of_" + std::string(Field::name), number);
    add_code<EachOf<Field>>(&each, number);
    object->add(Field::name, array_of(each, description_of(Field::name)));
}

template <class Field, class Value> void add_member(Object *object, FieldNumber *number)
{
    constexpr Meaning M = Field::meaning;
    if constexpr (std::is_same_v<Value, std::vector<int>>)
        add_codes<Field>(object, number);
    else if constexpr (M == Meaning::code)
        add_code<Field>(object, number);
    else if constexpr (M == Meaning::time || M == Meaning::end_time)
        add_time(object, Field::name, number->about(Field::name, {}));
    else if constexpr (M == Meaning::exponent)
        object->add(Field::name,
                    one_of_type(Integer_Or_Null, number->about(Field::name, Exponent)));
    else if constexpr (M != Meaning::absent)
        object->add(Field::name,
                    one_of_type(type_of(Value()), number->about(Field::name, Field::field.unit)));
}

template <class Set, std::size_t I, std::size_t... J>
void add_list(Object *object, FieldNumber *number, std::index_sequence<J...> /*columns*/)
{
    Object entry;
    add_count(object, CountAt<Set, I>::name, number);
    (add_member<ColumnAt<Set, I, J>, EntryOf<ColumnAt<Set, I, J>>>(&entry, number), ...);
    add_leap_second(&entry);
    object->add(At<Set, I>::name, array_of(entry, description_of(At<Set, I>::name)));
}

/// Places in the standard that no parser reads, or keys that share a field.
template <class Record, class Field>
inline constexpr bool Is_Unread =
    Field::meaning == Meaning::absent &&std::is_same_v<Record, blk_050_t>;
template <class Field>
inline constexpr bool Is_Read_Again = Field::name == std::string_view("data_record_length_as_read");

template <class Set, std::size_t I> void add_field(Object *object, FieldNumber *number)
{
    using Field = At<Set, I>;
    if constexpr (Field::Is_List)
        add_list<Set, I>(object, number, std::make_index_sequence<Columns<Set, I>>());
    else if constexpr (Is_Unread<typename Set::Record, Field>)
        number->skip(1);
    else if constexpr (Is_Read_Again<Field>)
        object->add(Field::name,
                    one_of_type(Integer_Or_Null, number->about_again(Field::name, Exponent)));
    else
        add_member<Field, ValueOf<Field>>(object, number);
}

template <class Set> void add_set(Object *object, FieldNumber number)
{
    [&]<std::size_t... I>(std::index_sequence<I...>) { (add_field<Set, I>(object, &number), ...); }
    (Indices<Set>());
}

} // namespace quarl::json
