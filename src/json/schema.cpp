#include "json/schema.h"

#include "blockette/blockette.h"
#include "blockette/sdblknam.h"
#include "platform/json_text.h"
#include "platform/text.h"
#include "json/keys.h"

#include <quarl/item.h>
#include <variant>

namespace quarl::json
{

namespace
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

std::string one_of_type(std::string_view type, std::string_view about = {})
{
    std::string text = "{\"type\":" + std::string(type);
    if (!about.empty())
        text += ",\"description\":" + quoted(about);
    return text + "}";
}

constexpr std::string_view Integer = "\"integer\"";
constexpr std::string_view Integer_Or_Null = R"(["integer","null"])";
constexpr std::string_view String = "\"string\"";
constexpr std::string_view String_Or_Null = R"(["string","null"])";
constexpr std::string_view Boolean = "\"boolean\"";
constexpr std::string_view Exponent = "exponent of 2: 12 is 4096 bytes";
constexpr std::string_view Time = "{\"$ref\":\"#/$defs/time\"}";

constexpr std::string_view type_of(int /*value*/) { return Integer; }
constexpr std::string_view type_of(std::int64_t /*value*/) { return Integer; }
constexpr std::string_view type_of(bool /*value*/) { return Boolean; }
constexpr std::string_view type_of(double /*value*/) { return R"(["number","null"])"; }
constexpr std::string_view type_of(char /*value*/) { return String; }
constexpr std::string_view type_of(std::string_view /*value*/) { return String; }

constexpr std::string_view or_null(int /*value*/) { return Integer_Or_Null; }
constexpr std::string_view or_null(std::string_view /*value*/) { return String_Or_Null; }

std::string_view defined_by(Dictionary dictionary)
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
        return "encoding format of Blockette 1000; null without one";
    case Dictionary::none:
        break;
    }
    return {};
}

template <class Field> void add_code(Object *object)
{
    const bool may_miss = Field::dictionary == Dictionary::encodings;
    object->add(std::string(Field::name) + "_code",
                one_of_type(may_miss ? Integer_Or_Null : Integer, defined_by(Field::dictionary)));
    object->add(Field::name, one_of_type(String_Or_Null, "what the code stands for; null when it "
                                                         "is not defined up to here"));
}

std::string array_of(const Object &entries)
{
    return "{\"type\":\"array\",\"items\":" + entries.text() + "}";
}

template <class Field> void add_codes(Object *object)
{
    Object each;
    add_code<EachOf<Field>>(&each);
    object->add("number_of_" + std::string(Field::name), one_of_type(Integer));
    object->add(Field::name, array_of(each));
}

template <class Field, class Value> void add_member(Object *object)
{
    constexpr Meaning M = Field::meaning;
    if constexpr (std::is_same_v<Value, std::vector<int>>)
        add_codes<Field>(object);
    else if constexpr (M == Meaning::code)
        add_code<Field>(object);
    else if constexpr (M == Meaning::time || M == Meaning::end_time)
        object->add(Field::name, Time);
    else if constexpr (M == Meaning::optional)
        object->add(Field::name, one_of_type(or_null(Value())));
    else if constexpr (M == Meaning::exponent)
        object->add(Field::name, one_of_type(Integer, Exponent));
    else if constexpr (M != Meaning::absent)
        object->add(Field::name, one_of_type(type_of(Value()), Field::field.unit));
}

template <class Set, std::size_t I, std::size_t... J>
void add_list(Object *object, std::index_sequence<J...> /*columns*/)
{
    Object entry;
    (add_member<ColumnAt<Set, I, J>, EntryOf<ColumnAt<Set, I, J>>>(&entry), ...);
    object->add(CountAt<Set, I>::name, one_of_type(Integer, "as the volume promises"));
    object->add(At<Set, I>::name, array_of(entry));
}

template <class Set, std::size_t I> void add_field(Object *object)
{
    using Field = At<Set, I>;
    if constexpr (Field::Is_List)
        add_list<Set, I>(object, std::make_index_sequence<Columns<Set, I>>());
    else
        add_member<Field, ValueOf<Field>>(object);
}

template <class Set> void add_set(Object *object)
{
    [&]<std::size_t... I>(std::index_sequence<I...>) { (add_field<Set, I>(object), ...); }
    (Indices<Set>());
}

std::string constant(std::string_view value) { return "{\"const\":" + std::string(value) + "}"; }

void add_place(Object *object)
{
    object->add("file", one_of_type(Integer, "number of the input file, from 0"));
    object->add("offset", one_of_type(Integer, "byte of the input file, decompressed, at which "
                                               "the item begins"));
    object->add("record", one_of_type(Integer, "sequence number of the logical record"));
    object->add("length", one_of_type(Integer, "bytes"));
}

std::string_view catalogue_name(int type)
{
    const Sdinfo *row = find_sdinfo(type);
    return row ? trimmed(row->name) : std::string_view();
}

void add_bad(Object *object)
{
    object->add_optional("bad", R"({"const":true,"description":"a field was bad"})");
}

template <class T> std::string blockette()
{
    Object object;
    object.add("item", constant("\"blockette\""));
    object.add("type", constant(std::to_string(T::Number)));
    object.add("name", constant(quoted(catalogue_name(T::Number))));
    add_place(&object);
    if constexpr (Has_Station<T>)
        add_set<OfStation<T>>(&object);
    if constexpr (Has_Channel<T>) {
        object.add("location", one_of_type(String_Or_Null, "null: of no channel"));
        object.add("channel", one_of_type(String_Or_Null, "null: of no channel"));
        object.add("epoch_start", Time);
    }
    add_set<Own<T>>(&object);
    add_bad(&object);
    return object.text();
}

std::string unparsed()
{
    Object object;
    object.add("item", constant("\"blockette\""));
    object.add("type", one_of_type(Integer));
    object.add("name", one_of_type(String, "empty for a type outside of the catalogue"));
    add_place(&object);
    object.add("parsed", constant("false"));
    object.add("text", one_of_type(String, "what follows type and length"));
    add_bad(&object);
    return object.text();
}

// Members of a data blockette, which are null where it is too short for them.

std::string nullable(std::string_view type) { return "[" + std::string(type) + ",\"null\"]"; }
std::string numbers_or_null(std::string_view unit)
{
    return R"({"type":["array","null"],"items":{"type":"integer"})" +
           (unit.empty() ? "" : ",\"description\":" + quoted(unit)) + "}";
}

template <class Field, class Value> std::string binary_schema()
{
    constexpr std::string_view Unit = Field::field.unit;
    if constexpr (Field::meaning == Meaning::time)
        return std::string(Time);
    else if constexpr (Field::meaning == Meaning::bytes)
        return one_of_type(String_Or_Null, "in base64");
    else if constexpr (Field::meaning == Meaning::exponent)
        return one_of_type(Integer_Or_Null, Exponent);
    else if constexpr (std::is_same_v<Value, double>)
        return one_of_type(type_of(Value()), Unit);
    else if constexpr (requires { type_of(Value()); })
        return one_of_type(nullable(type_of(Value())), Unit);
    else
        return numbers_or_null(Unit);
}

template <class Set, std::size_t I> void add_binary(Object *object)
{
    using Field = At<Set, I>;
    if constexpr (Field::Is_List) {
        Object entry;
        entry.add(ColumnAt<Set, I, 0>::name, one_of_type(String));
        object->add(CountAt<Set, I>::name, one_of_type(Integer_Or_Null, "as the volume promises"));
        object->add(Field::name, array_of(entry));
    } else {
        object->add(Field::name, binary_schema<Field, ValueOf<Field>>());
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
    Object object = data_blockette_head(constant(std::to_string(T::Number)));
    [&]<std::size_t... I>(std::index_sequence<I...>) { (add_binary<Own<T>, I>(&object), ...); }
    (Indices<Own<T>>());
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
    object.add("item", constant("\"data\""));
    object.add("name", constant("\"Data\""));
    add_place(&object);
    object.add("start", Time);
    object.add("end", Time);
    add_set<Own<blk_dh_t>>(&object);
    object.add("actual_sample_rate", one_of_type(R"(["number","null"])", "Hz; of blockette 100"));
    object.add("microseconds", one_of_type(Integer_Or_Null, "of blockette 1001"));
    object.add("timing_quality", one_of_type(Integer_Or_Null, "%; of blockette 1001"));
    object.add("frame_count", one_of_type(Integer_Or_Null, "of blockette 1001"));
    object.add("blockettes", R"({"type":"array","items":{"$ref":"#/$defs/data_blockette"}})");
    object.add_optional("remark",
                        one_of_type(String, "what is wrong with the chain of blockettes"));
    add_bad(&object);
    return object.text();
}

std::string file()
{
    Object object;
    object.add("item", constant("\"file\""));
    object.add("file", one_of_type(Integer, "number of the input file, from 0"));
    object.add("complete", one_of_type(Boolean, "neither cut nor failed nor stopped"));
    object.add("cut", one_of_type(Boolean, "ends inside a logical record or an item"));
    object.add("failed",
               one_of_type(Boolean, "ends with a read error, or an item that ended the run"));
    object.add("stopped", one_of_type(Boolean, "the reading was asked to stop"));
    for (const std::string_view total :
         {"bytes", "logical_records", "parameter_bytes", "data_bytes", "waste_bytes"})
        object.add(total, one_of_type(Integer));
    Object type;
    type.add("item", R"({"enum":["blockette","data"]})");
    type.add_optional("type", one_of_type(Integer, "not for data"));
    type.add("name", one_of_type(String));
    type.add("count", one_of_type(Integer));
    type.add("bytes",
             one_of_type(Integer, "as declared; 0 for types that a listing has no line for"));
    object.add("types", array_of(type));
    return object.text();
}

void define(std::string_view name, std::string_view schema, std::string *definitions)
{
    *definitions += ",\n" + quoted(name) + ":" + std::string(schema);
}

/// A definition and the reference to it.
void define(std::string_view name, std::string_view schema, std::string *definitions,
            std::string *references)
{
    define(name, schema, definitions);
    *references += references->empty() ? "" : ",";
    *references += "\n{\"$ref\":" + quoted("#/$defs/" + std::string(name)) + "}";
}

} // namespace

std::string schema()
{
    std::string definitions =
        R"("time":{"type":["string","null"],"format":"date-time","description":"ISO 8601 in UTC; )"
        R"(null: open or not given. A text that is no time stands as it is, and the object is bad."})";
    std::string references;
#define DEFINE_BLOCKETTE(name)                                                                     \
    define("blockette_" #name, blockette<blk_##name##_t>(), &definitions, &references);
    SEED_BLOCKETTES(DEFINE_BLOCKETTE)
    SEED_UNLISTED(DEFINE_BLOCKETTE)
#undef DEFINE_BLOCKETTE
    define("unparsed", unparsed(), &definitions, &references);
    define("data", data(), &definitions, &references);
    define("file", file(), &definitions, &references);
    define("data_blockette", any_data_blockette(), &definitions);
    for_each_type(decltype(DataBlockette::record)(), [&]<class T>(const T & /*record*/) {
        define("data_blockette_" + std::to_string(T::Number), data_blockette<T>(), &definitions);
    });
    define("data_blockette_unknown", data_blockette_head(one_of_type(Integer)).text(),
           &definitions);
    return R"({"$schema":"https://json-schema.org/draft/2020-12/schema",
"$id":"urn:quarl:json:1",
"title":"A line of quarl-json",
"description":"Keys and their meaning are stable. What is added or changed is in the change log.",
"oneOf":[)" +
           references + "],\n\"$defs\":{" + definitions + "}}\n";
}

} // namespace quarl::json
