// The input stream and its logical records.
#pragma once

#include "blockette/msd.h"
#include "platform/gz_cat.h"
#include "platform/number.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quarl
{

/// What makes the input enter a logical record.
enum class Entry {
    begin,         ///< the first one, or the rest of the one before is padding
    full,          ///< the one before has no room for a prefix
    continue_item, ///< an item goes on
    broken_off     ///< an item would go on, but another one begins
};

/// How the input ends.
enum class Ending {
    open,         ///< not yet
    file,         ///< as a file does, or where its records lead out of what can be read
    failure,      ///< a read failed, which is told when the bytes before it are used up
    told_failure, ///< a read failed, which was told
    stop          ///< a read that waited was given up
};

/// A logical record in the buffer.
struct HeldRecord {
    char *bytes; ///< from its byte 0 on, until the next read; null when the reading was given up
    int present; ///< of those that were asked for: zeros stand for those that the input lacks
};

/// One input stream: a read-ahead buffer and the current logical record in it.
class SeedInput
{
public:
    static constexpr int sZphysical = 131074; ///< capacity of the buffer in bytes, until it grows

    std::unique_ptr<Stream> stream;
    std::function<void(int)> on_record; ///< gets the sequence number of each record entered
    std::function<void()> on_entered;   ///< called when its header was read
    bool is_prompt = false;             ///< does not wait for more than the item at hand needs
    bool recovers = false;              ///< goes on behind damage

    /// Input files begun, less one; informational.
    [[nodiscard]] int fileno() const { return fileno_; }
    /// Bytes read in this file.
    [[nodiscard]] std::int64_t totbytes() const { return totbytes_; }
    /// How the file ends; `open` while it goes on.
    [[nodiscard]] Ending ending() const { return ending_; }
    /// The user knows that it ends inside a record.
    [[nodiscard]] bool told_cut() const { return told_cut_; }

    /// Logical records entered in this file.
    [[nodiscard]] std::int64_t recno() const { return recno_; }
    /// Length of the current one in bytes; 0 when it is not known yet.
    [[nodiscard]] int recsiz() const { return recsiz_; }
    [[nodiscard]] int seq_num() const { return seq_num_; }
    /// Its type code; '#' before the first record.
    [[nodiscard]] char type_code() const { return type_code_; }
    [[nodiscard]] char cont_code() const { return cont_code_; }
    /// Its header as it stands.
    [[nodiscard]] const std::array<char, 8> &header() const { return header_; }
    [[nodiscard]] Entry entry() const { return entry_; }
    /// The byte of the input file with which it begins.
    [[nodiscard]] std::int64_t record_begin() const { return totbytes_ - pbytes_ + start_; }
    /// Bytes of it that were read.
    [[nodiscard]] int record_read() const { return cur_ - start_; }
    /// Zeros that stood for bytes beyond the end of the input since clear_filled.
    [[nodiscard]] int filled() const { return filled_; }
    void clear_filled() { filled_ = 0; }
    /// Its bytes from the one with this number on, as far as the buffer holds them.
    [[nodiscard]] std::string_view record_from(int at) const
    {
        const int end = std::min(pbytes_, saturated_sum(start_, recsiz_));
        const int begin = std::min(start_ + at, end);
        return {buffer_ + begin, static_cast<std::size_t>(end - begin)};
    }
    /// The bytes that the buffer holds from its first one on.
    [[nodiscard]] std::string_view held() const
    {
        const int begin = std::min(start_, pbytes_);
        return {buffer_ + begin, static_cast<std::size_t>(pbytes_ - begin)};
    }

private:
    struct Work;
    friend std::unique_ptr<SeedInput> newSeedInput(const std::string &path);
    friend void clrSeedInput(SeedInput *in);
    friend int moredata(SeedInput *in);
    friend int advanceLogicalRecord(SeedInput *in, Entry entry);
    friend int advance_by(SeedInput *in, Entry entry, int step);
    friend void pass(SeedInput *in, int n);
    friend int bytes_left(const SeedInput *in);
    friend std::int64_t position(const SeedInput *in);
    friend void tell_if_cut(SeedInput *in);
    friend int read_remainder(SeedInput *in, char *dest, int n);
    friend int read_remainder_slowly(SeedInput *in, char *dest, int n);
    friend int read_open_remainder(SeedInput *in, char *dest, int n);
    friend int read_fixed_header(SeedInput *in, char *dest, int n);
    friend int read_fixed_header_slowly(SeedInput *in, char *dest, int n);
    friend HeldRecord hold_record(SeedInput *in, int n);
    friend HeldRecord hold_record_slowly(SeedInput *in, int n);
    friend void pass_record(SeedInput *in, int length);
    friend char *record_in_place(SeedInput *in, int read, int n);
    friend bool pass_held(SeedInput *in, int n);
    friend void setReadRecLen(SeedInput *in, int exponent);
    friend void set_record_length(SeedInput *in, int length);

    int fileno_ = -1;
    std::vector<char> store_;      ///< room in which the buffer slides
    int capacity_ = sZphysical;    ///< bytes of the buffer
    char *buffer_ = nullptr;       ///< read-ahead buffer of these bytes inside `store_`
    int pbytes_ = 0;               ///< bytes held in the buffer
    int ahead_ = 0;                ///< bytes behind them that were read, too, and come next
    Ending ending_ = Ending::open; ///< what follows the bytes held
    Ending beyond_ = Ending::open; ///< what follows those behind them, once it is known
    int read_error_ = 0;           ///< errno of the read that failed, or 0 ...
    std::string read_reason_;      ///< ... and its words
    bool told_cut_ = false;
    int filled_ = 0;
    bool length_open_ = false; ///< the record's length is about to turn out, a cut is told then
    std::int64_t totbytes_ = 0;
    std::int64_t recno_ = 0;
    int start_ = 0;  ///< buffer offset of the current logical record
    int cur_ = 0;    ///< buffer offset of the next unread byte, from `start_` on
    int recsiz_ = 0; ///< a power of two or a data record's length
    int seq_num_ = 0;
    char type_code_ = '#';
    char cont_code_ = '#';
    std::array<char, 8> header_{};
    Entry entry_ = Entry::begin;
    int wanted_ = 0;         ///< bytes of the item that goes on
    int control_length_ = 0; ///< of records of control blockettes, as the volume states it
};

/// Opens `path` ("" or "-": standard input). A path that cannot be opened, or whose opening is
/// given up, ends the run.
std::unique_ptr<SeedInput> newSeedInput(const std::string &path);

/// Begins a new input file on the same descriptor: buffered bytes and the record length are
/// forgotten.
void clrSeedInput(SeedInput *in);

/// Refills the buffer until it holds more than 64 KiB or the input ends; that of a prompt input, as
/// far as there is something to read. 0; -1 when nothing is left.
int moredata(SeedInput *in);

/// Moves to the next logical record and reads its header. 0; -1 when there is none. The user is
/// told when the input cuts the record that is left, unless there is nothing of it but blanks, NULs
/// and line feeds.
int advanceLogicalRecord(SeedInput *in, Entry entry);
inline int advanceLogicalRecord(SeedInput *in) { return advanceLogicalRecord(in, Entry::begin); }

/// The same for one that begins `step` bytes behind the beginning of the current one.
int advance_by(SeedInput *in, Entry entry, int step);

/// Moves `n` bytes on, or back, in the current record.
inline void pass(SeedInput *in, int n) { in->cur_ += n; }

/// Bytes left in the current logical record.
inline int bytes_left(const SeedInput *in)
{
    return std::max(in->recsiz_ - (in->cur_ - in->start_), 0);
}

/// The byte of the input file up to which it was read.
inline std::int64_t position(const SeedInput *in)
{
    return in->totbytes_ - in->pbytes_ + std::clamp(in->cur_, 0, in->pbytes_);
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
    if (n < 0 || n > bytes_left(in) || n > in->pbytes_ - in->cur_)
        return read_remainder_slowly(in, dest, n);
    std::memcpy(dest, in->buffer_ + in->cur_, n);
    in->cur_ += n;
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
    if (n > in->pbytes_ - in->cur_)
        return read_fixed_header_slowly(in, dest, n);
    std::memcpy(dest, in->buffer_ + in->cur_, n);
    in->cur_ += n;
    return 1;
}

/// read_remainder for the header of a record whose length is about to turn out: a cut is told then.
int read_open_remainder(SeedInput *in, char *dest, int n);

/// The current record, of which `read` bytes were read, when the buffer holds its next `n` bytes,
/// too: moves past them. Else null.
inline char *record_in_place(SeedInput *in, int read, int n)
{
    if (in->cur_ != in->start_ + read || n > bytes_left(in) || n > in->pbytes_ - in->cur_)
        return nullptr;
    in->cur_ += n;
    return in->buffer_ + in->start_;
}

/// hold_record for bytes that do not all stand in the buffer.
HeldRecord hold_record_slowly(SeedInput *in, int n);

/// The first `n` bytes of the current record, read or not, in one piece: the buffer grows to hold
/// them. They are not limited by the length that the record seems to have.
inline HeldRecord hold_record(SeedInput *in, int n)
{
    if (n > in->pbytes_ - in->start_)
        return hold_record_slowly(in, n);
    return {in->buffer_ + in->start_, n};
}

/// The length of the current record has turned out, and it was read to its end.
inline void pass_record(SeedInput *in, int length)
{
    in->recsiz_ = length;
    in->cur_ = in->start_ + length;
}

/// Moves past the next `n` bytes when the buffer holds them.
inline bool pass_held(SeedInput *in, int n)
{
    if (n > in->pbytes_ - in->cur_)
        return false;
    in->cur_ += std::max(n, 0);
    return true;
}

/// The length of the current logical record has turned out.
inline void set_record_length(SeedInput *in, int length) { in->recsiz_ = length; }

/// Sets the logical record length to 2 to the power `exponent` (at least 2; exponents above 30
/// count as 30).
void setReadRecLen(SeedInput *in, int exponent);

} // namespace quarl
