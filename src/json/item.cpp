#include "json/item.h"

#include "blockette/blockette.h"
#include "blockette/data_format.h"
#include "blockette/sdblknam.h"
#include "json/data_blockettes.h"
#include "json/object.h"
#include "json/time.h"

namespace quarl::json
{

std::string_view meaning_of(const Pen &pen, Dictionary dictionary, int code, bool *defined)
{
    if (dictionary == Dictionary::encodings) {
        const std::string_view name = encoding_name(code);
        *defined = !name.empty();
        return name;
    }
    const std::string *text = pen.volume.text(dictionary, code);
    *defined = text != nullptr;
    return text ? std::string_view(*text) : std::string_view();
}

namespace
{

/// Room for what every object begins with, for times and for what ends it.
constexpr std::size_t Frame_Room = 1024;

char *put_place(char *to, const Item &item)
{
    const Place &place = item.place();
    to = put_text(to, ",\"file\":");
    to = put_number(to, place.file);
    to = put_text(to, ",\"offset\":");
    to = put_number(to, place.offset);
    to = put_text(to, ",\"record\":");
    to = put_number(to, place.sequence_number);
    to = put_text(to, ",\"length\":");
    return put_number(to, item.length());
}

char *put_blockette_head(char *to, const Item &item)
{
    to = put_text(to, "{\"item\":\"blockette\",\"type\":");
    to = put_number(to, item.type());
    to = put_text(to, ",\"name\":");
    to = put_value(to, item.name());
    return put_place(to, item);
}

void finish(const Pen &pen, char *to, bool bad)
{
    to = pen.room(to, Frame_Room);
    if (bad)
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
            to = put_nulls<OfChannel<T>>(pen.room(to, Frame_Room), Indices<OfChannel<T>>());
    }
    return to;
}

template <class T> void print_blockette(Pen &pen, const Item &item, const T &blk)
{
    char *to = put_blockette_head(pen.out.reserve(Frame_Room), item);
    to = put_context(pen, to, blk);
    to = put_set<Own<T>>(pen, to, blk);
    finish(pen, to, item.bad() || pen.bad);
}

/// The fraction of a second that the record holds is one, before any correction.
bool has_fraction(const blk_dh_t &header)
{
    constexpr int Correction_Applied = 0x02;
    constexpr int Last = 9999;
    const std::int64_t stored = std::int64_t{header.sec_frac} -
                                (header.activity & Correction_Applied ? 0 : header.time_cor);
    return stored >= 0 && stored <= Last;
}

/// The header's fields. The rate is that of a Blockette 100, where there is one. A fraction above
/// 9999 leaves no time: its text, which ends with the fourth digit, would look like one.
char *put_header(Pen &pen, char *to, const blk_dh_t &header, const DataRefinement &more)
{
    const bool has_time = has_fraction(header);
    if (has_time && !(more.sample_rate > 0.0))
        return put_set<Own<blk_dh_t>>(pen, to, header);
    blk_dh_t shown = header;
    if (more.sample_rate > 0.0)
        shown.samp_rate = more.sample_rate;
    if (!has_time)
        shown.start_time[0] = '\0';
    return put_set<Own<blk_dh_t>>(pen, to, shown);
}

void print_data(Pen &pen, const Item &item, const blk_dh_t &header)
{
    const DataBlockettes &chain = item.data_blockettes();
    const DataRefinement more = chain.refinement();
    char *to = put_text(pen.out.reserve(Frame_Room), "{\"item\":\"data\",\"name\":\"Data\"");
    to = put_place(to, item);
    to = put_data_times(to, header, more, &pen.bad);
    to = put_header(pen, to, header, more);
    to = put_data_blockettes(pen, to, chain);
    finish(pen, to, item.bad() || pen.bad);
}

void print_unparsed(Pen &pen, const Item &item)
{
    constexpr std::size_t Head = 7; // characters of type and length
    char *to = put_blockette_head(pen.out.reserve(Frame_Room), item);
    to = put_text(to, ",\"parsed\":false,\"text\":");
    const std::string_view text = item.bytes().substr(std::min(item.bytes().size(), Head));
    to = pen.room(to, string_room(text.size()));
    to = put_string(to, text);
    finish(pen, to, item.bad());
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

void print_file(Out &out, const Volume &volume, int file, const FileEnd &end)
{
    const Pen pen{out, volume};
    char *to = put_text(out.reserve(Frame_Room), "{\"item\":\"file\",\"file\":");
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
    finish(pen, to, false);
}

void print_item(Out &out, const Volume &volume, const Item &item)
{
    Pen pen{out, volume};
    if (const auto *header = item.get<blk_dh_t>())
        print_data(pen, item, *header);
    else if (const auto *end = item.get<FileEnd>())
        print_file(out, volume, item.place().file, *end);
    else if (!item.record() || !visit_any(item.record(), item.type(), [&](const auto &blk) {
                 print_blockette(pen, item, blk);
             }))
        print_unparsed(pen, item);
}

} // namespace quarl::json
