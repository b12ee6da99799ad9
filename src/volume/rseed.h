// The input stream and its logical records.
#pragma once

#include "platform/gz_cat.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quarl
{

/// What makes the input enter a logical record.
enum class Entry {
    begin,        ///< the first one, or the rest of the one before is padding
    full,         ///< the one before has no room for a prefix
    continue_item ///< an item goes on
};

/// How the input ends.
enum class Ending {
    open,         ///< not yet
    file,         ///< as a file does, or where its records lead out of what can be read
    failure,      ///< a read failed, which is told when the bytes before it are used up
    told_failure, ///< a read failed, which was told
    stop          ///< a read that waited was given up
};

/// One input stream: a read-ahead buffer and the current logical record in it. While inside a
/// record, start <= cur; `recsiz` is a power of two or a data record's length.
struct SeedInput {
    static constexpr int sZphysical = 131074; ///< capacity of the buffer in bytes

    std::unique_ptr<Stream> stream;
    int fileno = -1;              ///< input files begun, less one; informational
    std::vector<char> store;      ///< room in which the buffer slides
    char *buffer = nullptr;       ///< read-ahead buffer of sZphysical bytes inside `store`
    int pbytes = 0;               ///< bytes held in the buffer
    int ahead = 0;                ///< bytes behind them that were read, too, and come next
    Ending ending = Ending::open; ///< what follows the bytes held
    Ending beyond = Ending::open; ///< what follows those behind them, once it is known
    std::int64_t totbytes = 0;    ///< bytes read in this file
    std::int64_t recno = 0;       ///< logical records entered in this file
    int start = 0;                ///< buffer offset of the current logical record
    int cur = 0;                  ///< buffer offset of the next unread byte
    int recsiz = 0;               ///< current logical record length in bytes; 0 when not known yet
    int seq_num = 0;              ///< sequence number of the current logical record
    char type_code = '#';         ///< its type code; '#' before the first record
    char cont_code = '#';         ///< its continuation code
    std::array<char, 8> header{}; ///< its header as it stands
    bool told_cut = false;        ///< the user knows that the input ends inside a record
    bool length_open = false;     ///< the record's length is about to turn out, a cut is told then
    int read_error = 0;           ///< errno of the read that failed, or 0 ...
    std::string read_reason;      ///< ... and its words
    std::function<void(int)> on_record; ///< gets the sequence number of each record entered
    Entry entry = Entry::begin;         ///< of the current record
    std::function<void()> on_entered;   ///< called when its header was read
};

/// Nothing is read any more.
inline bool has_ended(const SeedInput *in)
{
    return in->ending != Ending::open && in->ending != Ending::failure;
}

/// Opens `path` ("" or "-": standard input). A path that cannot be opened, or whose opening is
/// given up, ends the run.
std::unique_ptr<SeedInput> newSeedInput(const std::string &path);

/// Begins a new input file on the same descriptor: buffered bytes and the record length are
/// forgotten.
void clrSeedInput(SeedInput *in);

/// Refills the buffer until it holds more than 64 KiB or the input ends. 0; -1 when nothing is
/// left.
int moredata(SeedInput *in);

/// Moves to the next logical record and reads its header. 0; -1 when there is none. The user is
/// told when the input cuts the record that is left, unless there is nothing of it but blanks, NULs
/// and line feeds.
int advanceLogicalRecord(SeedInput *in, Entry entry = Entry::begin);

/// Bytes left in the current logical record.
inline int bytes_left(const SeedInput *in)
{
    return std::max(in->recsiz - (in->cur - in->start), 0);
}

/// The byte of the input file up to which it was read.
inline std::int64_t position(const SeedInput *in)
{
    return in->totbytes - in->pbytes + std::clamp(in->cur, 0, in->pbytes);
}

/// Tells the user, once per file, when bytes were read beyond an input that ends inside the current
/// record. A cut that nothing was read beyond is told when the record is left.
void tell_if_cut(SeedInput *in);

/// read_remainder for bytes that do not all stand in the buffer and in one logical record.
int read_remainder_slowly(SeedInput *in, char *dest, int n);

/// Copies `n` bytes that may run over logical records, whose headers are skipped. 1; 0 when the
/// input ended. A record that the input cuts short is read with zeros, and the user told once.
inline int read_remainder(SeedInput *in, char *dest, int n)
{
    if (n < 0 || n > bytes_left(in) || n > in->pbytes - in->cur)
        return read_remainder_slowly(in, dest, n);
    std::memcpy(dest, in->buffer + in->cur, n);
    in->cur += n;
    return 1;
}

/// read_fixed_header for bytes that do not all stand in the buffer.
int read_fixed_header_slowly(SeedInput *in, char *dest, int n);

/// Copies `n` bytes that lie in one logical record, the next one when the current has too few left
/// (they are padding). 1; 0 when the input ended.
inline int read_fixed_header(SeedInput *in, char *dest, int n)
{
    if (bytes_left(in) < n && advanceLogicalRecord(in, Entry::full) != 0)
        return 0;
    if (n > in->pbytes - in->cur)
        return read_fixed_header_slowly(in, dest, n);
    std::memcpy(dest, in->buffer + in->cur, n);
    in->cur += n;
    return 1;
}

/// Sets the logical record length to 2 to the power `exponent` (at least 2; exponents above 30
/// count as 30).
void setReadRecLen(SeedInput *in, int exponent);

} // namespace quarl
