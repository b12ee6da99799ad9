#include "json/data_blockettes.h"

#include "platform/base64.h"

#include <algorithm>

namespace quarl::json
{

namespace
{

constexpr std::size_t Few = 1024; ///< room for what has no texts

template <class T> char *put_optional(char *to, const std::optional<T> &value)
{
    if (!value)
        return put_text(to, "null");
    return put_value(to, fields::plain(*value));
}

/// Bytes of opaque data may be more than any room: they go out in parts.
char *put_bytes(const Pen &pen, char *to, std::string_view bytes)
{
    constexpr std::size_t At_Once = 3072; // a multiple of 3, so that parts join
    to = pen.room(to, 1);
    *to++ = '"';
    for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), At_Once)))
        to = put_base64(pen.room(to, At_Once / 3 * 4), bytes.substr(0, At_Once));
    to = pen.room(to, Few);
    *to++ = '"';
    return to;
}

char *put_numbers(const Pen &pen, char *to, const std::vector<std::uint16_t> &numbers)
{
    *to++ = '[';
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        to = pen.room(to, Few);
        if (i > 0)
            *to++ = ',';
        to = put_number(to, numbers[i]);
    }
    to = pen.room(to, Few);
    *to++ = ']';
    return to;
}

/// The texts of a list, each in an object of its own.
template <class Set, std::size_t I>
char *put_texts(const Pen &pen, char *to, const DataBlockette &blockette,
                const typename Set::Record &record)
{
    using Text = ColumnAt<Set, I, 0>;
    to = Key<CountAt<Set, I>, ",\"", "\":">::put(to);
    to = blockette.size < Set::Record::Size ? put_text(to, "null")
                                            : put_number(to, At<Set, I>::field.promised(record));
    to = Key<At<Set, I>, ",\"", "\":[">::put(to);
    for (std::size_t entry = 0; entry < At<Set, I>::field.size(record); ++entry) {
        if (entry > 0)
            *to++ = ',';
        to = Key<Text, "{\"", "\":">::put(to);
        to = put_long_text(pen, to, trimmed(Text::field.value(record, entry)));
        *to++ = '}';
    }
    *to++ = ']';
    return to;
}

/// One field. What the blockette is too short for is null.
template <class Set, std::size_t I>
char *put_field(Pen &pen, char *to, const DataBlockette &blockette,
                const typename Set::Record &record)
{
    using Field = At<Set, I>;
    if constexpr (Field::Is_List) {
        return put_texts<Set, I>(pen, to, blockette, record);
    } else if constexpr (Field::meaning == Meaning::bytes) {
        to = Key<Field, ",\"", "\":">::put(to);
        return blockette.size < Set::Record::Size ? put_text(to, "null")
                                                  : put_bytes(pen, to, Field::field.value(record));
    } else {
        if (!blockette.holds(Field::field))
            return put_absent<Field, ",\"">(pen, to, Absence::cut);
        if constexpr (std::is_same_v<ValueOf<Field>, std::vector<std::uint16_t>>)
            return put_numbers(pen, Key<Field, ",\"", "\":">::put(to), Field::field.value(record));
        else
            return put_member<Field>(pen, to, Field::field.value(record));
    }
}

template <class Set, std::size_t... I>
char *put_fields(Pen &pen, char *to, const DataBlockette &blockette,
                 const typename Set::Record &record, std::index_sequence<I...> /*fields*/)
{
    to = pen.room(to, (field_room<Set, I>() + ... + Few));
    ((to = put_field<Set, I>(pen, to, blockette, record)), ...);
    return to;
}

char *put_record(Pen & /*pen*/, char *to, const DataBlockette & /*blockette*/,
                 const std::monostate & /*unknown*/)
{
    return to;
}
template <class T>
char *put_record(Pen &pen, char *to, const DataBlockette &blockette, const T &record)
{
    return put_fields<Own<T>>(pen, to, blockette, record, Indices<Own<T>>());
}

char *put_blockette(Pen &pen, char *to, const DataBlockette &blockette)
{
    to = pen.room(to, Few);
    to = put_text(to, "{\"type\":");
    to = put_number(to, blockette.type);
    to = put_text(to, ",\"offset\":");
    to = put_number(to, blockette.offset);
    to = std::visit([&](const auto &record) { return put_record(pen, to, blockette, record); },
                    blockette.record);
    return put_end(pen, pen.room(to, Few));
}

} // namespace

char *put_data_blockettes(Pen &pen, char *to, const DataBlockettes &chain)
{
    to = pen.room(to, Few);
    to = put_optional(put_text(to, ",\"actual_sample_rate\":"), chain.actual_sample_rate);
    to = put_optional(put_text(to, ",\"microseconds\":"), chain.microseconds);
    to = put_optional(put_text(to, ",\"timing_quality\":"), chain.timing_quality);
    to = put_optional(put_text(to, ",\"frame_count\":"), chain.frame_count);
    to = put_text(to, ",\"blockettes\":[");
    for (const DataBlockette &blockette : chain.list) {
        if (&blockette != &chain.list.front())
            *to++ = ',';
        to = put_blockette(pen, to, blockette);
    }
    *to++ = ']';
    if (!chain.remark.empty()) {
        pen.bad = true;
        to = put_text(to, ",\"remark\":");
        to = put_string(to, chain.remark);
    }
    return to;
}

} // namespace quarl::json
