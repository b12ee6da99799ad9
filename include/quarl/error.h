// What reading a volume has to say: messages, which it survives, and the error that ends it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace quarl
{

class Item;

/// What a message is about.
enum class MessageKind {
    // The input and its logical records.
    input_not_opened,
    input_read_error,    ///< the input failed; what was read before is whole
    input_cut,           ///< the input ends inside a logical record
    item_cut,            ///< the input ends inside a blockette or data record
    bad_sequence_number, ///< of a logical record
    // Blockettes.
    item_too_large,
    blockette_too_small,
    blockette_unknown, ///< a type without a parser, or outside the catalogue
    blockette_bad,     ///< sums up a blockette that has bad fields
    bad_integer,
    bad_real,
    text_too_long,
    negative_count,
    list_abandoned, ///< a bad field ended the reading of a list
    too_many_segments,
    // Channels and dictionaries.
    record_length_illegal,
    record_length_unusual,
    orientation_unknown, ///< a subchannel's azimuth and dip fit no letter
    format_code_repeated,
    format_code_redefined,
    format_code_undefined,
    // Data records.
    formats_differ, ///< dictionary and Blockette 1000 disagree
    record_lengths_differ,
    format_not_in_database,
    // What a run needs besides.
    database_not_opened,
    database_not_read,
    parameter_file,
    output_failed,
    out_of_memory,
    interrupted, ///< the reading was asked to stop
    progress,    ///< an answer to the question how far it is
    usage,
};

/// How much a message matters to who relies on what was read.
enum class MessageSeverity {
    remark,  ///< nothing is lost: unusual, not described, not known to the library, or asked for
    damage,  ///< the volume contradicts the standard or itself; what the message is about may be
             ///< missing or wrong, what follows is read
    failure, ///< the reading, or what it needs besides the volume, did not begin or has ended
};

/// Each kind has one severity.
MessageSeverity severity_of(MessageKind kind);
/// "remark", "damage" or "failure"; lives for ever.
std::string_view name_of(MessageSeverity severity);

/// The kind as a word of small letters and "-", such as "input-cut"; lives for ever.
std::string_view name_of(MessageKind kind);

/// Where in a volume something stands.
struct Place {
    int file = 0;            ///< number of the input file, from 0
    std::int64_t offset = 0; ///< byte of the input file, decompressed
    std::int64_t record = 0; ///< logical records entered in the file: the first one is 1
    int sequence_number = 0; ///< of the logical record
    char type_code = '#';    ///< type of the logical record; '#' before the first
    char continuation_code = '#';
};

/// One message. Texts and item live until the function that gets it returns.
struct Message {
    MessageKind kind;
    std::string_view text;   ///< may hold newlines, at the end there is none
    std::string_view reason; ///< the system's or a library's words; empty: none
    int error = 0;           ///< errno behind the reason; 0: none
    Place place;             ///< where the reading stands
    const Item *item;        ///< what it is about, as far as it is read; null: no item

    [[nodiscard]] MessageSeverity severity() const { return severity_of(kind); }
};

/// "TEXT" or "TEXT: REASON".
std::string full_text(const Message &message);

/// Ends the reading of a volume: the input, the parameter file or the database cannot be opened, an
/// item is larger than 10000 bytes, a count is above its limit, or there is no memory. `what()` is
/// the whole text, its reason included.
class Error : public std::runtime_error
{
public:
    Error(MessageKind kind, const std::string &text, int error = 0) : Error(kind, text, {}, error)
    {
    }
    /// With `reason` behind the text, as in a message.
    Error(MessageKind kind, const std::string &text, std::string_view reason, int error)
        : std::runtime_error(reason.empty() ? text : text + ": " + std::string(reason)),
          kind_(kind), text_size_(text.size()), error_(error)
    {
    }

    [[nodiscard]] MessageKind kind() const noexcept { return kind_; }
    /// The two parts of `what()`; the reason is empty when there is none. They live as long as
    /// this.
    [[nodiscard]] std::string_view text() const noexcept { return {what(), text_size_}; }
    [[nodiscard]] std::string_view reason() const noexcept
    {
        const std::string_view all = what();
        return all.substr(std::min(text_size_ + 2, all.size()));
    }
    /// errno behind it; 0: none.
    [[nodiscard]] int error() const noexcept { return error_; }

private:
    MessageKind kind_;
    std::size_t text_size_;
    int error_;
};

} // namespace quarl
