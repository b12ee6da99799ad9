// How a volume is to be read, and what its reader wants to hear.
#pragma once

#include <array>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <quarl/error.h>
#include <quarl/format_sources.h>
#include <quarl/item.h>
#include <string>

namespace quarl
{

/// A logical record of which the header was read.
struct LogicalRecord {
    Place place;                  ///< of its first byte; number, type and continuation code
    std::array<char, 8> header{}; ///< as it stands
    int length = 0;               ///< bytes
    bool continues = false;       ///< what began in the record before goes on in it
    bool follows_full = false;    ///< the record before had no room for another blockette's prefix
};

/// What the reading passed over, where it goes on behind damage.
struct PassedOver {
    enum class Why {
        header,       ///< no header of a logical record stands where one should
        continuation, ///< the record does not go on with the blockette that began before it
        blockette     ///< no blockette begins where one should
    };
    Why why = Why::header;
    Place place;                 ///< where it begins, and in which logical record
    int type = -1;               ///< of the blockette that was given up
    std::array<char, 8> bytes{}; ///< the first ones, as far as there are as many
    std::int64_t count = 0;      ///< bytes
};

/// All may be left out. The functions are called while an item is asked for, in the same thread,
/// and may not ask the same volume for another. One that throws ends the volume.
struct VolumeOptions {
    /// Read the parameter file of the programs, as FormatSources::read_default_parameters does.
    bool default_parameters = false;
    /// Parameter file (TOML) with the table `data_type_aliases`, whose entries come before those of
    /// the default one; "": none.
    std::string parameter_file = {};
    /// Further names of data formats, in terms of those that are known; they come before the
    /// parameter file's.
    std::map<std::string, std::string, std::less<>> format_aliases = {};
    /// Database with data formats of channels that the volume does not describe: the path of an
    /// SQLite file, or a URL ("postgresql://..."); "": none.
    std::string database = {};
    /// What was read and opened before, in place of the parameter files and the database above.
    std::shared_ptr<FormatSources> format_sources = {};
    /// Stop behind the first input file, as on a tape that holds several.
    bool one_file = false;
    /// Number of the first input file: of a tape that was wound on to it.
    int first_file = 0;
    /// Read too what the listing does not know: responses by reference (041, 043 to 048, 060) and
    /// the generic response (056), whose items have records then, the history of calibrations (058)
    /// and the coefficients of a polynomial as they were written (062). What is wrong with them is
    /// no message but Item::bad. And take a negative count of a list for a bad field, where the
    /// listing ends with an Error; read on behind a bad entry of a list; keep account of the fields
    /// that have no value (Item::absence); take counts and offsets of data records, which have no
    /// sign, and their quality letters as they are.
    bool unlisted = true;
    /// Read data records of up to 2^20 bytes; without this one of more than 10000 ends the reading
    /// with an Error, as it ends the listing. Goes with `unlisted` only.
    bool large_records = false;

    /// Go on behind damage where the framing of a listing reads one thing for another: behind a
    /// record that is missing or no record, from where blockettes or records can be told again.
    bool recover = false;
    /// Gets what was passed over so.
    std::function<void(const PassedOver &)> passed_over = {};

    /// Gets each message; when it is empty, messages go to standard error.
    std::function<void(const Message &)> message = {};
    /// Gets each blockette that has bad fields, behind its messages and before it is yielded, with
    /// the record as the listing reads it.
    std::function<void(const Item &)> bad_item = {};
    /// Gets the sequence number of each logical record that is entered.
    std::function<void(int sequence_number)> record = {};
    /// Gets each logical record that is entered, before what begins in it.
    std::function<void(const LogicalRecord &)> logical_record = {};
    /// Called before each read of the input or of a database, which may wait.
    std::function<void()> before_wait = {};
    /// Asked before each read of the input, and when a signal has interrupted one that waits, or
    /// the opening: true ends the input here. What was read before is still yielded. Must not
    /// throw.
    std::function<bool()> interrupted = {};
    /// While it is true no further item is read: the volume ends, with a message. Must outlive the
    /// volume.
    const std::atomic<bool> *stop = nullptr;
};

} // namespace quarl
