// The volume as a sequence of logical records.
#include "check/rule.h"

#include "blockette/record_header.h"
#include "platform/text.h"

#include <algorithm>

namespace quarl
{

namespace
{

void no_records(const Context & /*context*/, const NoRecords &input, const Report &report)
{
    std::string text = "the input is empty";
    const std::string_view begin(input.begin.data(), input.begin.size());
    const auto is_text = [](char c) { return is_space(c) || (c >= ' ' && c <= '~'); };
    if (!input.is_empty && is_fill(begin))
        text = "no logical record of SEED: the input holds blanks, NULs or line feeds";
    else if (!input.is_empty)
        text = std::string("no logical record of SEED: the input is ") +
               (std::all_of(begin.begin(), begin.end(), is_text) ? "text" : "of another kind") +
               " and begins with " + quoted(begin);
    report(0, about::Volume{}, text);
}

void record_sequence(const Context &context, const Context &, const Report &report)
{
    if (!context.has_headers)
        return;
    for (const Disorder &each : context.order.disorders()) {
        const std::string group = std::to_string(static_cast<int>(each.kind));
        const bool of_record = each.kind == Disorder::Kind::blank;
        report(each.record, group, [&] {
            Told told{about::Volume{}, each.text + left_out(context, each.record)};
            if (of_record)
                told.subject = about::Record{};
            return told;
        });
    }
    if (context.order.more() > 0)
        report(0, about::Volume{},
               "the sequence numbers of " + std::to_string(context.order.more()) +
                   " further records do not go on from those before them");
}

void odd_number(const Context & /*context*/, const LogicalRecord &record, const Report &report)
{
    const std::string_view header(record.header.data(), record.header.size());
    if (look_of(header) == HeaderLook::odd_number)
        report(record.place.record, "number", [&] {
            return Told{about::Record{}, "its sequence number is " + quoted(header.substr(0, 6)) +
                                             ", expected are digits"};
        });
}

/// The letter of records that hold blockettes of a type; a blank for types of no header.
char letter_of(int type)
{
    if (type >= 5 && type <= 12)
        return 'V';
    if (type >= 30 && type <= 48)
        return 'A';
    if (type >= 50 && type <= 62)
        return 'S';
    return type >= 70 && type <= 74 ? 'T' : ' ';
}

void record_type(const Context & /*context*/, const Item &item, const Report &report)
{
    const char letter = item.place().type_code;
    const char expected = item.type() >= 0 ? letter_of(item.type()) : letter;
    if (item.get<FileEnd>() || expected == letter || expected == ' ' || !is_header_type(letter))
        return;
    report(item.place().record, std::string{letter, expected}, [&] {
        return Told{about::Blockette{item.type()}, "stands in a record of type " +
                                                       quoted({&letter, 1}) + ", expected is " +
                                                       quoted({&expected, 1})};
    });
}

void odd_type(const Context & /*context*/, const LogicalRecord &record, const Report &report)
{
    const std::string_view header(record.header.data(), record.header.size());
    if (look_of(header) != HeaderLook::odd_type)
        return;
    report(record.place.record, "odd type", [&] {
        return Told{about::Record{}, "its type is " + quoted(header.substr(6, 1)) +
                                         ", expected is one of V, A, S, T, D, R, Q and M"};
    });
}

void record_type_goes_on(const Context &context, const LogicalRecord &record, const Report &report)
{
    odd_type(context, record, report);
    const char letter = record.place.type_code;
    const char before = context.before.place.type_code;
    if (!record.continues || !context.has_before || letter == before || !is_header_type(letter) ||
        !is_header_type(before))
        return;
    report(record.place.record, std::string{letter, before, '+'}, [&] {
        return Told{about::Record{}, "is of type " + quoted({&letter, 1}) +
                                         ", but a blockette goes on in it that began in one of "
                                         "type " +
                                         quoted({&before, 1})};
    });
}

void record_continuation(const Context & /*context*/, const Marked &marked, const Report &report)
{
    const bool star = marked.record.place.continuation_code == '*';
    report(marked.record.place.record, star ? "*" : "", [&] {
        return Told{about::Record{}, star
                                         ? "is marked '*', but nothing goes on in it"
                                         : "a blockette goes on in it, but it is marked " +
                                               quoted({&marked.record.place.continuation_code, 1}) +
                                               " instead of '*'"};
    });
}

/// What is no record, nor a blockette, and is no consequence of something that was told before.
void unreadable(const Context &context, const PassedOver &passed, const Report &report)
{
    if (passed.why != PassedOver::Why::header)
        return;
    const std::string_view bytes(passed.bytes.data(), passed.bytes.size());
    report(passed.place.record, "unreadable", [&] {
        return Told{about::Record{}, "begins with " + quoted(bytes) +
                                         ", no header of a logical record; " +
                                         std::to_string(passed.count) + " bytes are passed over" +
                                         left_out(context, passed.place.record)};
    });
}

constexpr std::array Rules = {
    Rule{"no-records", Severity::error, "the input holds at least one logical record of SEED",
         "inputs", Look<NoRecords>(no_records)},
    Rule{"record-sequence", Severity::warning,
         "logical record numbers rise by one in a volume with headers", "records",
         Look<Context>(record_sequence), Look<LogicalRecord>(odd_number)},
    Rule{"record-type", Severity::error,
         "records have a header of the standard, and those of type V, A, S and T hold volume, "
         "dictionary, station and time span headers",
         "records", Look<Item>(record_type), Look<LogicalRecord>(record_type_goes_on),
         Look<PassedOver>(unreadable)},
    Rule{"record-continuation", Severity::warning,
         "a record is marked \"*\" where a blockette of the record before goes on, and only there",
         "records", Look<Marked>(record_continuation)},
};

} // namespace

/// "; 2 channel epochs are not judged": those that lack what was lost at a record.
std::string left_out(const Context &context, std::int64_t record)
{
    const auto found = context.left_out.find(record);
    if (found == context.left_out.end())
        return {};
    const std::int64_t count = found->second;
    return "; " + std::to_string(count) + " channel epoch" + (count == 1 ? " is" : "s are") +
           " not judged, whose headers this cuts";
}

std::span<const Rule> record_rules() { return Rules; }

} // namespace quarl
