// The volume as a sequence of logical records and blockettes.
#include "check/rule.h"

#include "platform/text.h"

#include <algorithm>

namespace quarl
{

namespace
{

about::Blockette blockette_at(const Context &context, const Item &item)
{
    return {item.type(), context.number_in_record, context.describes()};
}

std::string blockette(int type) { return formatted<"blockette %03d">(type); }

/// The group of a finding that a volume's writer made of all blockettes of a type.
std::string group_of(const Item &item) { return std::to_string(item.type()); }

bool is_read(const Item &item) { return item.record() != nullptr; }

bool is_control(const Item &item) { return item.type() >= 0; }

/// Blockettes whose fields end with a list, which may be promised longer than it is.
bool ends_with_list(int type)
{
    static constexpr std::array Types = {11, 12, 30, 41, 43, 44, 45, 46, 48, 53,
                                         54, 55, 56, 60, 61, 62, 71, 73, 74};
    return std::find(Types.begin(), Types.end(), type) != Types.end();
}

/// The network code at the end of 050, 072 and 074 came with version 2.3.
bool lacks_network(const Context &context, const Item &item, std::size_t taken)
{
    constexpr std::size_t Network = 2;
    const double version = context.inventory.volume().version;
    return version < 2.3 && (item.type() == 50 || item.type() == 72 || item.type() == 74) &&
           taken == static_cast<std::size_t>(item.length()) + Network;
}

std::string_view prefix_of(const Item &item) { return item.bytes().substr(0, 7); }

/// Type and length of a blockette are numbers.
bool has_prefix(const Item &item)
{
    const std::string_view prefix = prefix_of(item);
    return std::all_of(prefix.begin(), prefix.end(),
                       [](char c) { return is_digit(c) || c == ' '; });
}

void bad_blockette(const Context &context, const Item &item, const Report &report)
{
    if (!is_control(item) || !is_read(item))
        return;
    const std::size_t taken = item.fields_size();
    const auto length = static_cast<std::size_t>(std::max(item.length(), 0));
    const bool beyond = taken > length && ends_with_list(item.type());
    if (!item.bad() && !beyond)
        return;
    report(item.place().record, group_of(item), [&] {
        std::string text = item.bad() ? "a field holds no value of its kind" : "";
        if (item.bad() && !context.complaints.empty())
            text = context.complaints.front();
        else if (!item.bad())
            text = "its counts need " + std::to_string(taken) + " bytes, it has " +
                   std::to_string(item.length());
        if (item.type() >= 52 && item.type() <= 62)
            text += "; the response of its channel is not judged";
        return Told{blockette_at(context, item), text};
    });
}

void blockette_lost(const Context &context, const PassedOver &passed, const Report &report)
{
    const std::string_view bytes(passed.bytes.data(), passed.bytes.size());
    if (passed.why == PassedOver::Why::continuation)
        report(passed.place.record, "broken off", [&] {
            return Told{about::Blockette{passed.type},
                        "ends with the record before: this one does not go on with it" +
                            left_out(context, passed.place.record)};
        });
    else if (passed.why == PassedOver::Why::blockette && bytes.front() == '\n')
        report(passed.place.record, "line feeds", [&] {
            return Told{about::Record{}, "a line feed stands between blockettes"};
        });
    else if (passed.why == PassedOver::Why::blockette)
        report(passed.place.record, "no blockette", [&] {
            return Told{about::Record{},
                        "a blockette should begin with " + quoted(bytes.substr(0, 7)) +
                            ", expected are digits of a type and a length; " +
                            std::to_string(passed.count) + " bytes are passed over" +
                            left_out(context, passed.place.record)};
        });
}

/// FIR filters of the response dictionary whose blockettes do not hold what they promise together.
void short_filters(const Context &context, const Context &, const Report &report)
{
    constexpr int Keys = 10000;
    for (int key = 0; key < Keys; ++key) {
        const DictionaryEntry *entry = context.inventory.entry(Dictionary::responses, key);
        if (entry && entry->promised > entry->held)
            report(entry->record, about::Blockette{41},
                   "response key " + std::to_string(key) + " has " + std::to_string(entry->held) +
                       " coefficients, expected are " + std::to_string(entry->promised));
    }
}

void blockette_length(const Context &context, const Item &item, const Report &report)
{
    if (!is_control(item) || !is_read(item))
        return;
    const std::size_t taken = item.fields_size();
    const auto length = static_cast<std::size_t>(std::max(item.length(), 0));
    const std::string_view rest = item.bytes().substr(std::min(taken, item.bytes().size()));
    const bool fill = rest.find_first_not_of(std::string_view(" \0", 2)) == std::string_view::npos;
    const bool too_long = taken < length && !fill;
    const bool too_short =
        taken > length && !ends_with_list(item.type()) && !lacks_network(context, item, taken);
    if (item.bad() || (!too_long && !too_short))
        return;
    report(item.place().record, group_of(item), [&] {
        return Told{blockette_at(context, item), "declares " + std::to_string(item.length()) +
                                                     " bytes, its fields take " +
                                                     std::to_string(taken)};
    });
}

void blockette_unknown(const Context &context, const Item &item, const Report &report)
{
    if (!is_control(item) || is_read(item) || !has_prefix(item))
        return;
    report(item.place().record, group_of(item), [&] {
        const std::string_view name = item.name();
        return Told{blockette_at(context, item), name.empty()
                                                     ? "this type is not defined"
                                                     : "'" + std::string(name) + "' is not read"};
    });
}

bool is_identifier(int type) { return type == 5 || type == 8 || type == 10; }

void volume_start(const Context &context, const Item &item, const Report &report)
{
    if (!is_control(item))
        return;
    if (context.control_items == 0 && !is_identifier(item.type()) && item.record())
        report(item.place().record, about::Volume{},
               "begins with " + blockette(item.type()) + ", expected is 010");
    if (is_identifier(item.type()) && context.identifiers > 0)
        report(item.place().record, "again", [&] {
            return Told{about::Blockette{item.type()}, "identifies the volume another time"};
        });
}

void headers_in_order(const Context &context, const Item &item, const Report &report)
{
    const int type = item.type();
    const bool of_station = type == 51 || type == 52;
    const bool of_channel = type >= 53 && type <= 62;
    if ((!of_station || context.last_station_item != 0) &&
        (!of_channel || context.last_station_item == 52))
        return;
    report(item.place().record, group_of(item), [&] {
        return Told{about::Blockette{type},
                    of_station ? "no station identifier (050) stands before it"
                               : "no channel identifier (052) of its station stands "
                                 "before it"};
    });
}

void definitions_in_order(const Context &context, const Context &, const Report &report)
{
    for (const PendingUse &use : context.uses)
        if (const DictionaryEntry *entry = context.inventory.entry(use.dictionary, use.code))
            report(use.record, use.subject,
                   blockette(use.type) + " uses " + std::string(name_of(use.dictionary)) + " " +
                       std::to_string(use.code) + ", which is defined later, in record " +
                       std::to_string(entry->record));
}

void cut_volume(const Context &context, const Item &item, const Report &report)
{
    const auto *end = item.get<FileEnd>();
    if (!end || !end->cut)
        return;
    report(item.place().record, about::Volume{},
           (context.complaints.empty() ? "ends inside a record or blockette"
                                       : context.complaints.front()) +
               left_out(context, item.place().record));
}

constexpr std::array Rules = {
    Rule{"bad-blockette", Severity::error,
         "no field of a blockette is bad, no text too long, no count above what the text holds",
         "blockettes", Look<Item>(bad_blockette), Look<Context>(short_filters),
         Look<PassedOver>(blockette_lost)},
    Rule{"blockette-length", Severity::error,
         "the declared length of a blockette is what its fields take, blanks and NULs apart",
         "blockettes", Look<Item>(blockette_length)},
    Rule{"blockette-unknown", Severity::note, "every blockette type is one that is read",
         "blockettes", Look<Item>(blockette_unknown)},
    Rule{"volume-start", Severity::error,
         "the first header is a volume identifier (010, 005 or 008), and the only one",
         "blockettes", Look<Item>(volume_start)},
    Rule{"header-order", Severity::error,
         "stations stand before their channels, these before their responses, and codes are "
         "defined before they are used",
         "blockettes", Look<Item>(headers_in_order), Look<Context>(definitions_in_order)},
    Rule{"cut-volume", Severity::error, "the input does not end inside a record or blockette",
         "ends", Look<Item>(cut_volume)},
};

} // namespace

std::span<const Rule> volume_rules() { return Rules; }

} // namespace quarl
