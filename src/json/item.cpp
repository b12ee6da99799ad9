#include "json/item.h"

#include "blockette/blockette.h"
#include "blockette/data_format.h"
#include "blockette/sdblknam.h"
#include "json/data_blockettes.h"
#include "json/object.h"
#include "json/samples.h"
#include "json/time.h"

namespace quarl::json
{

std::string_view meaning_of(const Pen &pen, Dictionary dictionary, int code, bool *defined)
{
    if (dictionary == Dictionary::encodings) {
        const std::string_view known = encoding_name(code);
        const std::string_view name = known.empty() ? name_of(static_cast<Encoding>(code)) : known;
        *defined = !name.empty();
        return name;
    }
    const std::string *text = pen.volume->text(dictionary, code);
    *defined = text != nullptr;
    return text ? std::string_view(*text) : std::string_view();
}

namespace
{

/// Room for what every object begins with, for times and for what ends it.
constexpr std::size_t Frame_Room = 1024;

constexpr int Type_Size = 3; ///< characters of a blockette's type
constexpr int Head_Size = 7; ///< and of type and length

/// Bytes of the item that are there.
int present(const Item &item) { return static_cast<int>(item.bytes().size()) - item.missing(); }

char *put_if(bool is_there, char *to, int value)
{
    return is_there ? put_number(to, value) : put_text(to, "null");
}

/// An object begins; its first key's name and value come next.
char *begin(const Style &style, char *to)
{
    *to++ = '{';
    if (!style.has_name)
        return to;
    to = put_text(to, "\"volume\":");
    to = std::copy(style.volume.begin(), style.volume.end(), to);
    *to++ = ',';
    return to;
}

char *put_place(char *to, const Item &item, bool has_length)
{
    const Place &place = item.place();
    to = put_text(to, ",\"file\":");
    to = put_number(to, place.file);
    to = put_text(to, ",\"offset\":");
    to = put_number(to, place.offset);
    to = put_text(to, ",\"record\":");
    to = put_number(to, place.sequence_number);
    to = put_text(to, ",\"length\":");
    return put_if(has_length, to, item.length());
}

char *put_blockette_head(const Pen &pen, const Item &item)
{
    char *to = begin(pen.style, pen.out.reserve(Frame_Room + pen.style.volume.size()));
    const bool whole = item.missing() == 0;
    to = put_text(to, "\"item\":\"blockette\",\"type\":");
    to = put_if(whole || present(item) >= Type_Size, to, item.type());
    to = put_text(to, ",\"name\":");
    to = put_value(to, item.name());
    return put_place(to, item, whole || present(item) >= Head_Size);
}

void finish(Pen &pen, char *to, const Item *item)
{
    const bool cut = pen.cut || (item && item->cut());
    to = pen.room(to, Frame_Room);
    if (std::exchange(pen.leap_second, false))
        to = put_text(to, ",\"leap_second\":true");
    if (cut)
        to = put_text(to, ",\"cut\":true");
    if (cut || pen.bad || (item && item->bad()))
        to = put_text(to, ",\"bad\":true");
    pen.out.commit(put_text(to, "}\n"));
}

template <class T> char *put_context(Pen &pen, char *to, const T &blk)
{
    if constexpr (Has_Station<T>)
        to = put_set<OfStation<T>>(pen, to, blk);
    if constexpr (Has_Channel<T>) {
        if (blk.channel_is_of_station)
            to = put_set<OfChannel<T>>(pen, to, blk);
        else
            to = put_nulls<OfChannel<T>>(pen, pen.room(to, Frame_Room), Indices<OfChannel<T>>());
    }
    return to;
}

template <class T> void print_blockette(Pen &pen, const Item &item, const T &blk)
{
    char *to = put_blockette_head(pen, item);
    to = put_context(pen, to, blk);
    to = put_set<Own<T>>(pen, to, blk);
    finish(pen, to, &item);
}

/// The record ends inside its header, or inside the blockettes that have the microseconds, the true
/// rate and the encoding.
bool is_cut_before_data(const Pen &pen, const Item &item, const blk_dh_t &header,
                        const DataBlockettes &chain)
{
    if (item.missing() == 0)
        return false;
    const auto lacks = [&](const void *place) { return pen.absence(place) != Absence::none; };
    return lacks(&header.beg_blks) || chain.cut || !chain.remark.empty();
}

/// A time that is null when there is none, or when its year has no text.
template <Literal Key, Literal Seconds>
char *put_moment(Pen &pen, char *to, const Time *time, DayText *day)
{
    to = put_literal<Key>(to);
    char *behind = time ? put_time(to, *time, day) : nullptr;
    pen.bad |= time && !behind;
    to = behind ? behind : put_text(to, "null");
    if (!pen.style.has_seconds)
        return to;
    to = put_literal<Seconds>(to);
    return behind ? put_seconds(to, *time) : put_text(to, "null");
}

char *put_moments(Pen &pen, char *to, const Time *start, const Time *end)
{
    DayText day;
    to = put_moment<",\"start\":", ",\"start_seconds\":">(pen, to, start, &day);
    return put_moment<",\"end\":", ",\"end_seconds\":">(pen, to, end, &day);
}

/// The first and the last sample, a time correction applied that the record says is not. Without
/// samples or a rate both are the same.
char *put_data_times(Pen &pen, char *to, const blk_dh_t &header, const DataRefinement &more)
{
    const auto times = data_times(header, more);
    pen.bad |= !times;
    return times ? put_moments(pen, to, &times->start, &times->end)
                 : put_moments(pen, to, nullptr, nullptr);
}

/// The header's fields. The rate is that of a Blockette 100, where there is one, and the encoding
/// without a Blockette 1000 that of the dictionary's format.
char *put_header(Pen &pen, char *to, const blk_dh_t &header, const DataRefinement &more,
                 bool lacks_blockettes)
{
    const auto encoding =
        lacks_blockettes ? header.encoding : static_cast<int>(encoding_of(header));
    const bool has_rate = more.sample_rate > 0.0;
    if (!has_rate && (encoding == header.encoding || pen.flawed))
        return put_set<Own<blk_dh_t>>(pen, to, header);
    blk_dh_t shown = header;
    if (has_rate)
        shown.samp_rate = more.sample_rate;
    shown.encoding = encoding;
    pen.flawed = nullptr; // all of a header is there that has blockettes behind it
    return put_set<Own<blk_dh_t>>(pen, to, shown);
}

void print_data(Pen &pen, const Item &item, const blk_dh_t &header, SampleBuffer *buffer)
{
    const DataBlockettes &chain = item.data_blockettes();
    const DataRefinement more = chain.refinement();
    char *to = begin(pen.style, pen.out.reserve(Frame_Room + pen.style.volume.size()));
    to = put_text(to, "\"item\":\"data\",\"name\":\"Data\"");
    to = put_place(to, item, pen.absence(&header.length) == Absence::none);
    const bool lacks_blockettes = is_cut_before_data(pen, item, header, chain);
    to = lacks_blockettes ? put_moments(pen, to, nullptr, nullptr)
                          : put_data_times(pen, to, header, more);
    to = put_header(pen, to, header, more, lacks_blockettes);
    to = put_data_blockettes(pen, to, chain);
    if (buffer)
        to = put_samples(pen, to, item, buffer);
    pen.cut = chain.cut;
    finish(pen, to, &item);
}

void print_unparsed(Pen &pen, const Item &item)
{
    char *to = put_blockette_head(pen, item);
    to = put_text(to, ",\"parsed\":false,\"text\":");
    const std::string_view there =
        item.bytes().substr(0, static_cast<std::size_t>(std::max(present(item), 0)));
    const std::string_view text =
        there.substr(std::min(there.size(), static_cast<std::size_t>(Head_Size)));
    to = pen.room(to, string_room(text.size()));
    to = put_whole_text(pen.style, to, text);
    finish(pen, to, &item);
}

char *put_type(char *to, const Statistics::Type &type)
{
    if (type.type == Data_Record) {
        to = put_text(to, "{\"item\":\"data\",\"name\":\"Data\"");
    } else {
        to = put_text(to, "{\"item\":\"blockette\",\"type\":");
        to = put_number(to, type.type);
        to = put_text(to, ",\"name\":");
        const Sdinfo *row = find_sdinfo(type.type);
        to = put_value(to, row ? row->name : std::string_view());
    }
    to = put_text(to, ",\"count\":");
    to = put_number(to, type.count);
    to = put_text(to, ",\"bytes\":");
    to = put_number(to, type.bytes);
    *to++ = '}';
    return to;
}

char *put_totals(char *to, const FileEnd &end)
{
    to = put_text(to, ",\"complete\":");
    to = put_bool(to, end.complete());
    to = put_text(to, ",\"cut\":");
    to = put_bool(to, end.cut);
    to = put_text(to, ",\"failed\":");
    to = put_bool(to, end.failed);
    to = put_text(to, ",\"stopped\":");
    to = put_bool(to, end.stopped);
    to = put_text(to, ",\"bytes\":");
    to = put_number(to, end.statistics.bytes);
    to = put_text(to, ",\"records\":");
    to = put_number(to, end.statistics.records);
    to = put_text(to, ",\"logical_records\":");
    to = put_number(to, end.statistics.records);
    to = put_text(to, ",\"parameter_bytes\":");
    to = put_number(to, end.statistics.parameters);
    to = put_text(to, ",\"data_bytes\":");
    to = put_number(to, end.statistics.data);
    to = put_text(to, ",\"waste_bytes\":");
    return put_number(to, end.statistics.waste);
}

} // namespace

void print_file(Out &out, const Style &style, int file, const FileEnd &end)
{
    Pen pen{out, nullptr, style};
    char *to = begin(style, out.reserve(Frame_Room + 2 * style.volume.size()));
    to = put_text(to, "\"item\":\"file\"");
    if (!style.has_name) {
        to = put_text(to, ",\"volume\":");
        to = std::copy(style.volume.begin(), style.volume.end(), to);
    }
    to = put_text(to, ",\"file\":");
    to = put_number(to, file);
    to = put_totals(to, end);
    to = put_text(to, ",\"types\":[");
    for (const Statistics::Type &type : end.statistics.types) {
        to = pen.room(to, Frame_Room);
        if (&type != &end.statistics.types.front())
            *to++ = ',';
        to = put_type(to, type);
    }
    to = pen.room(to, Frame_Room);
    *to++ = ']';
    finish(pen, to, nullptr);
}

void print_item(Out &out, const Volume &volume, const Style &style, const Item &item,
                SampleBuffer *buffer)
{
    Pen pen{out, &volume, style, item.has_flaws() ? &item : nullptr};
    if (const auto *header = item.get<blk_dh_t>())
        print_data(pen, item, *header, buffer);
    else if (const auto *end = item.get<FileEnd>())
        print_file(out, style, item.place().file, *end);
    else if (!item.record() || !visit_any(item.record(), item.type(), [&](const auto &blk) {
                 print_blockette(pen, item, blk);
             }))
        print_unparsed(pen, item);
}

} // namespace quarl::json
