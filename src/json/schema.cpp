#include "json/schema.h"

#include "blockette/blockette.h"
#include "blockette/sdblknam.h"
#include "platform/text.h"
#include "json/schema_fields.h"

#include <quarl/item.h>
#include <variant>

namespace quarl::json
{

namespace
{

std::string constant(std::string_view value, std::string_view about)
{
    return "{\"const\":" + std::string(value) + ",\"description\":" + quoted(about) + "}";
}

void add_place(Object *object)
{
    object->add_optional("volume", one_of_type(String, "with --name: the volume, as it was given"));
    object->add("file", one_of_type(Integer, "number of the input file, from 0"));
    object->add("offset", one_of_type(Integer, "byte of the input file, decompressed, at which "
                                               "the item begins"));
    object->add("record", one_of_type(Integer, "sequence number of the logical record"));
    object->add("length", one_of_type(Integer_Or_Null, "bytes: of a blockette as declared, of a "
                                                       "data record as found out"));
}

std::string_view catalogue_name(int type)
{
    const Sdinfo *row = find_sdinfo(type);
    return row ? trimmed(row->name) : std::string_view();
}

void add_bad(Object *object)
{
    add_leap_second(object);
    object->add_optional("cut",
                         R"({"const":true,"description":"the bytes of the item end early"})");
    object->add_optional("bad", R"({"const":true,"description":"a field has no value of its kind, )"
                                R"(or the item is cut"})");
}

std::string item(std::string_view kind)
{
    return "{\"const\":" + quoted(kind) + R"(,"description":"what the object tells of"})";
}

template <class T> std::string blockette()
{
    Object object;
    object.add("item", item("blockette"));
    object.add("type", constant(std::to_string(T::Number), "type of the blockette"));
    object.add("name", constant(quoted(catalogue_name(T::Number)), "the type's name"));
    add_place(&object);
    if constexpr (Has_Station<T>)
        add_set<OfStation<T>>(&object, {});
    if constexpr (Has_Channel<T>)
        add_set<OfChannel<T>>(&object, {});
    add_set<Own<T>>(&object, FieldNumber::third());
    add_bad(&object);
    return object.text();
}

std::string unparsed()
{
    Object object;
    object.add("item", item("blockette"));
    object.add("type", one_of_type(Integer_Or_Null, "type of the blockette; null when it is cut"));
    object.add("name", one_of_type(String, "empty for a type outside of the catalogue"));
    add_place(&object);
    object.add("parsed", constant("false", "this type is not read"));
    object.add("text", one_of_type(String, "what follows type and length"));
    add_bad(&object);
    return object.text();
}

std::string numbers_or_null(std::string_view about)
{
    return R"({"type":["array","null"],"items":{"type":"integer"},"description":)" + quoted(about) +
           "}";
}

template <class Field, class Value> void add_binary_value(Object *object, std::string_view about)
{
    if constexpr (Field::meaning == Meaning::time)
        add_time(object, Field::name, about);
    else if constexpr (Field::meaning == Meaning::bytes)
        object->add(Field::name, one_of_type(String_Or_Null, std::string(about) + ", in base64"));
    else if constexpr (requires { type_of(Value()); })
        object->add(Field::name, one_of_type(type_of(Value()), about));
    else
        object->add(Field::name, numbers_or_null(about));
}

/// Where the members of a data blockette stand in its layout, whose reserved bytes are fields, too.
struct Layout {
    FieldNumber number = FieldNumber::third();
    std::size_t begin = 0;
    std::size_t end = 4; ///< bytes
};

template <class Set, std::size_t I> void add_binary(Object *object, Layout *layout)
{
    using Field = At<Set, I>;
    if constexpr (Field::Is_List) {
        Object entry;
        add_count(object, CountAt<Set, I>::name, &layout->number);
        entry.add(ColumnAt<Set, I, 0>::name,
                  one_of_type(String_Or_Null, layout->number.about(ColumnAt<Set, I, 0>::name, {})));
        object->add(Field::name, array_of(entry, description_of(Field::name)));
    } else if constexpr (requires { Field::field.Begin; }) {
        constexpr auto &Description = Field::field;
        const std::string_view unit =
            Field::meaning == Meaning::exponent ? Exponent : std::string_view(Description.unit);
        const bool again = Description.Begin == layout->begin;
        if (Description.Begin > layout->end)
            layout->number.skip(1);
        add_binary_value<Field, ValueOf<Field>>(
            object, again ? layout->number.about_again(Field::name, unit)
                          : layout->number.about(Field::name, unit));
        layout->begin = Description.Begin;
        layout->end = std::max(layout->end, Description.End);
    } else {
        add_binary_value<Field, ValueOf<Field>>(object, layout->number.about(Field::name, {}));
    }
}

Object data_blockette_head(std::string_view type)
{
    Object object;
    object.add("type", type);
    object.add("offset", one_of_type(Integer, "byte of the record at which it begins"));
    return object;
}

template <class T> std::string data_blockette()
{
    Object object =
        data_blockette_head(constant(std::to_string(T::Number), "type of the data blockette"));
    Layout layout;
    [&]<std::size_t... I>(std::index_sequence<I...>)
    {
        (add_binary<Own<T>, I>(&object, &layout), ...);
    }
    (Indices<Own<T>>());
    add_leap_second(&object);
    return object.text(T::Name);
}

/// Calls f(T()) for each type of data blockettes that has a record.
template <class F, class... T> void for_each_type(const std::variant<T...> & /*records*/, F &&f)
{
    const auto call = [&]<class One>(const One &record) {
        if constexpr (!std::is_same_v<One, std::monostate>)
            f(record);
    };
    (call(T()), ...);
}

/// Goes by the type to what an entry of `blockettes` has to be.
std::string any_data_blockette()
{
    std::string known;
    std::string choices;
    for_each_type(decltype(DataBlockette::record)(), [&]<class T>(const T & /*record*/) {
        const std::string number = std::to_string(T::Number);
        known += (known.empty() ? "" : ",") + number;
        choices += R"({"if":{"properties":{"type":{"const":)" + number +
                   R"(}}},"then":{"$ref":"#/$defs/data_blockette_)" + number + "\"}},\n";
    });
    return R"({"type":"object","required":["type"],"allOf":[)" + choices +
           R"({"if":{"properties":{"type":{"not":{"enum":[)" + known +
           R"(]}}}},"then":{"$ref":"#/$defs/data_blockette_unknown"}}]})";
}

std::string data()
{
    Object object;
    object.add("item", item("data"));
    object.add("name", constant("\"Data\"", "name of the item"));
    add_place(&object);
    add_time(&object, "start", "first sample, with all corrections");
    add_time(&object, "end", "last sample, with all corrections");
    add_set<Own<blk_dh_t>>(&object, FieldNumber::of_header());
    object.add("actual_sample_rate", one_of_type(Number_Or_Null, "of blockette 100, Hz"));
    object.add("microseconds", one_of_type(Integer_Or_Null, "of blockette 1001"));
    object.add("timing_quality", one_of_type(Integer_Or_Null, "of blockette 1001, %"));
    object.add("frame_count", one_of_type(Integer_Or_Null, "of blockette 1001"));
    object.add("blockettes", R"({"type":"array","description":"the data blockettes of the record",)"
                             R"("items":{"$ref":"#/$defs/data_blockette"}})");
    object.add_optional("remark",
                        one_of_type(String, "what is wrong with the chain of blockettes"));
    object.add_optional("values", R"({"type":["array","null"],"items":{"type":["number","null"]},)"
                                  R"("description":"with --samples: the samples; null when they )"
                                  R"(cannot be decoded"})");
    object.add_optional("text", one_of_type(String, "with --samples: those of a record of text"));
    object.add_optional("values_error",
                        one_of_type(String, "with --samples: what is wrong with the samples"));
    add_bad(&object);
    return object.text();
}

std::string file()
{
    Object object;
    object.add("item", item("file"));
    object.add("volume", one_of_type(String, "the volume, as it was given"));
    object.add("file", one_of_type(Integer, "number of the input file, from 0"));
    object.add("complete", one_of_type(Boolean, "neither cut nor failed nor stopped"));
    object.add("cut", one_of_type(Boolean, "ends inside a logical record or an item"));
    object.add("failed",
               one_of_type(Boolean, "could not be opened, ends with a read error, or with "
                                    "an item that ended the reading"));
    object.add("stopped", one_of_type(Boolean, "the reading was asked to stop"));
    object.add("bytes", one_of_type(Integer, "bytes of the input file, decompressed"));
    object.add("records", one_of_type(Integer, "logical records"));
    object.add("logical_records", one_of_type(Integer, "the same"));
    object.add("parameter_bytes", one_of_type(Integer, "bytes of control blockettes"));
    object.add("data_bytes", one_of_type(Integer, "bytes of data records"));
    object.add("waste_bytes", one_of_type(Integer, "bytes of neither"));
    Object type;
    type.add("item", R"({"enum":["blockette","data"],"description":"what is counted"})");
    type.add_optional("type", one_of_type(Integer, "type of the blockette; not for data"));
    type.add("name", one_of_type(String, "the type's name"));
    type.add("count", one_of_type(Integer, "how many there are"));
    type.add("bytes",
             one_of_type(Integer, "as declared; 0 for types that a listing has no line for"));
    object.add("types", array_of(type, "one for each type that occurs"));
    return object.text();
}

/// A definition, with an anchor of its name.
void define(std::string_view name, std::string_view schema, std::string *definitions)
{
    *definitions += *definitions == "" ? "" : ",\n";
    *definitions += quoted(name) + ":{\"$anchor\":" + quoted(name) + ",";
    *definitions += schema.substr(1);
}

/// Goes by members of an object to what it has to be.
std::string when(std::string_view members, std::string_view definition)
{
    return "{\"if\":{\"properties\":{" + std::string(members) +
           "}},\"then\":{\"$ref\":" + quoted("#/$defs/" + std::string(definition)) + "}}";
}

} // namespace

std::string schema()
{
    std::string definitions;
    define("time",
           R"({"type":["string","null"],"format":"date-time","description":"ISO 8601 in )"
           R"(UTC; null: open, not given, or none"})",
           &definitions);
    std::string choices;
    std::string known;
#define DEFINE_BLOCKETTE(name)                                                                     \
    define("blockette_" #name, blockette<blk_##name##_t>(), &definitions);                         \
    known += (known.empty() ? "" : ",") + std::to_string(blk_##name##_t::Number);                  \
    choices += when(R"("type":{"const":)" + std::to_string(blk_##name##_t::Number) +               \
                        R"(},"item":{"const":"blockette"})",                                       \
                    "blockette_" #name) +                                                          \
               ",\n";
    SEED_BLOCKETTES(DEFINE_BLOCKETTE)
    SEED_UNLISTED(DEFINE_BLOCKETTE)
#undef DEFINE_BLOCKETTE
    choices += when(R"("item":{"const":"blockette"},"type":{"not":{"enum":[)" + known + "]}}",
                    "unparsed") +
               ",\n";
    choices += when(R"("item":{"const":"data"})", "data") + ",\n";
    choices += when(R"("item":{"const":"file"})", "file");
    define("unparsed", unparsed(), &definitions);
    define("data", data(), &definitions);
    define("file", file(), &definitions);
    define("data_blockette", any_data_blockette(), &definitions);
    for_each_type(decltype(DataBlockette::record)(), [&]<class T>(const T & /*record*/) {
        define("data_blockette_" + std::to_string(T::Number), data_blockette<T>(), &definitions);
    });
    define("data_blockette_unknown",
           data_blockette_head(one_of_type(Integer, "type of the data blockette")).text(),
           &definitions);
    return R"({"$schema":"https://json-schema.org/draft/2020-12/schema",
"$id":"urn:quarl:json:1",
"title":"A line of quarl-json",
"description":"Keys and their meaning are stable. What is added or changed is in the change log. )"
           R"(Each kind of line has an anchor of its name: #blockette_052, #data, #file.",
"type":"object","required":["item"],
"properties":{"item":{"enum":["blockette","data","file"],"description":"what the object tells of"}},
"if":{"properties":{"item":{"const":"blockette"}}},"then":{"required":["type"]},
"allOf":[
)" + choices +
           "],\n\"$defs\":{\n" + definitions + "}}\n";
}

} // namespace quarl::json
