#include "volume/rseed.h"

#include "blockette/msd.h"
#include "platform/allocate.h"
#include "platform/elog.h"
#include "platform/text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <utility>

namespace quarl
{

namespace
{

constexpr int Sequence_Size = 6;

/// What every logical record begins with.
struct RecordHeader {
    char sequence_number[Sequence_Size]; ///< ASCII decimal
    char type_code;
    char cont_code;
};
static_assert(sizeof(RecordHeader) == 8);

constexpr int Default_Record_Length = 512;
constexpr int Largest_Whole_Record = 65536; ///< a record up to this size is always in the buffer
constexpr int Max_Exponent = 30;

/// The buffer slides through this many times its own size before its unread tail is moved back to
/// the beginning, so that hardly a byte is moved.
constexpr int Slides = 3;

bool can_read(const SeedInput *in) { return !in->eof && in->read_error == 0; }

/// One read into the free part of the buffer. What is held is written out first: the read may wait.
void read_once(SeedInput *in)
{
    before_wait();
    errno = 0;
    const ssize_t count =
        in->stream->read(in->buffer + in->pbytes, SeedInput::sZphysical - in->pbytes);
    if (count > 0) {
        in->pbytes += static_cast<int>(count);
        in->totbytes += count;
        ++in->nreads;
    } else if (count == 0) {
        in->eof = 1;
    } else if (errno == EINTR) {
        in->eof = 1;
        in->stopped = true;
    } else {
        in->read_error = errno != 0 ? errno : -1;
        in->read_reason = elog_take_reason();
    }
}

/// Drops the bytes before the current record.
void drop_used(SeedInput *in)
{
    const int kept = std::max(in->pbytes - in->start, 0);
    const std::ptrdiff_t window = in->buffer - in->store.data() + in->start;
    if (kept > 0 && window + SeedInput::sZphysical <= std::ssize(in->store)) {
        in->buffer += in->start;
    } else {
        std::memmove(in->store.data(), in->buffer + (in->pbytes - kept), kept);
        in->buffer = in->store.data();
    }
    in->pbytes = kept;
    in->start = 0;
    in->cur = 0;
}

/// Reports the read error that was held back until now.
void report_read_error(SeedInput *in)
{
    in->eof = 1;
    in->failed = true;
    errno = std::max(std::exchange(in->read_error, 0), 0);
    elog_set_reason(in->read_reason);
    elog_complain<MessageKind::input_read_error, "input read error\n">(1);
}

/// Bytes at buffer offset `from`; zeros stand for those beyond the end of the input. False (the
/// input has run out) for bytes beyond the capacity of the buffer, or beyond what was read of an
/// input that was given up.
bool take_slowly(SeedInput *in, int from, char *dest, int n)
{
    if (n > SeedInput::sZphysical - from)
        return false;
    while (in->pbytes < from + n && can_read(in))
        read_once(in);
    if (in->stopped && in->pbytes < from + n)
        return false;
    const int present = std::clamp(in->pbytes - from, 0, n);
    std::memcpy(dest, in->buffer + std::min(from, in->pbytes), present);
    std::memset(dest + present, 0, n - present);
    return true;
}

/// The one place that turns offset and count into bytes of the buffer; nearly always they are
/// there.
inline bool take(SeedInput *in, int from, char *dest, int n)
{
    if (n > in->pbytes - from)
        return take_slowly(in, from, dest, n);
    std::memcpy(dest, in->buffer + from, n);
    return true;
}

/// Bytes that belong to no record: what a text tool or a blocked device puts behind a volume.
bool is_fill(std::string_view bytes)
{
    return bytes.find_first_not_of(std::string_view(" \n\0", 3)) == std::string_view::npos;
}

/// Tells the user, once per file, when the input ends inside the record at `start`.
void tell_cut(SeedInput *in, int start)
{
    const int present = in->pbytes - start;
    if (present <= 0 || present >= in->recsiz || in->told_cut || in->stopped ||
        is_fill({in->buffer + start, static_cast<std::size_t>(present)}))
        return;
    in->told_cut = true;
    elog_complain<MessageKind::input_cut, "Input ends inside logical record #%d: %d of %d bytes\n">(
        0, in->recno, present, in->recsiz);
}

/// Copies `n` unread bytes.
inline bool copy_bytes(SeedInput *in, char *dest, int n)
{
    if (!take(in, in->cur, dest, n)) {
        in->eof = 1;
        if (!in->stopped) // then it is still asked how far the items reach
            in->pbytes = 0;
        errno = 0;
        return false;
    }
    in->cur += n;
    return true;
}

void announce(const SeedInput *in, int sequence_number)
{
    if (in->on_record)
        in->on_record(sequence_number);
}

/// Reads a sequence number field that is not plain digits; text behind the number is complained
/// about.
int read_odd_sequence_number(const SeedInput *in, std::string_view field)
{
    std::size_t used = 0;
    const int number = leading_int(field, &used);
    announce(in, number);
    if (!blank(field.substr(used)))
        elog_complain<MessageKind::bad_sequence_number,
                      "Bad logical block header sequence number = '%s'">(0, field);
    return number;
}

/// Reads the sequence number field: nearly always six digits.
int read_sequence_number(const SeedInput *in, const char (&digits)[Sequence_Size])
{
    int number = 0;
    bool plain = true;
    for (const char c : digits) {
        plain &= is_digit(c);
        number = number * 10 + (c - '0');
    }
    if (!plain)
        return read_odd_sequence_number(in, up_to_nul({digits, Sequence_Size}));
    announce(in, number);
    return number;
}

/// Reads the header of the logical record at `start`.
bool enter_record(SeedInput *in)
{
    RecordHeader header;
    if (!take(in, in->start, reinterpret_cast<char *>(&header), sizeof header))
        return false;
    in->seq_num = read_sequence_number(in, header.sequence_number);
    std::memcpy(in->header.data(), &header, sizeof header);
    in->type_code = header.type_code;
    in->cont_code = header.cont_code;
    ++in->recno;
    in->cur += sizeof header;
    if (in->recsiz == 0)
        in->recsiz = Default_Record_Length;
    if (in->on_entered)
        in->on_entered();
    return true;
}

int saturated_sum(int a, int b)
{
    constexpr int Max = std::numeric_limits<int>::max() / 2;
    return a > Max - b ? Max : a + b;
}

[[noreturn]] void opening_failed(const std::string &path)
{
    if (errno == EINTR)
        elog_die<MessageKind::interrupted, "Interrupted while opening input file %s\n">(0, path);
    elog_die<MessageKind::input_not_opened, "Can't open input file %s\n">(1, path);
}

} // namespace

std::unique_ptr<SeedInput> newSeedInput(const std::string &path)
{
    auto in = allocate_one<SeedInput>("handle", sizeof(SeedInput), Where());
    allocate(in->store, Slides * SeedInput::sZphysical, "handle->buffer");
    in->stream = path.empty() || path == "-" ? gz_cat_stdin() : gz_cat(path.c_str());
    if (!in->stream)
        opening_failed(path);
    clrSeedInput(in.get());
    return in;
}

void clrSeedInput(SeedInput *in)
{
    ++in->fileno;
    in->buffer = in->store.data();
    in->pbytes = in->eof = in->nreads = 0;
    in->totbytes = in->recno = 0;
    in->start = in->cur = in->recsiz = in->seq_num = 0;
    in->type_code = in->cont_code = '#';
    in->told_cut = in->length_open = in->failed = in->stopped = false;
    in->read_error = 0;
}

int moredata(SeedInput *in)
{
    if (in->start > 0)
        drop_used(in);
    while (can_read(in) && in->pbytes <= Largest_Whole_Record)
        read_once(in);
    if (in->pbytes > 0)
        return 0;
    errno = 0;
    if (in->read_error != 0)
        report_read_error(in);
    return -1;
}

void tell_if_cut(SeedInput *in)
{
    if (in->cur > in->pbytes && !in->length_open)
        tell_cut(in, in->start);
}

int advanceLogicalRecord(SeedInput *in, Entry entry)
{
    in->entry = in->recno == 0 ? Entry::begin : entry;
    const int left = in->start;
    in->start = saturated_sum(in->start, in->recsiz);
    in->cur = in->start;
    if (in->eof && in->pbytes <= in->start) {
        tell_cut(in, left); // what is missing may be fill that nobody asked for
        errno = 0;
        return -1;
    }
    if (!in->eof && in->pbytes <= in->start + Largest_Whole_Record && moredata(in) != 0)
        return -1;
    return enter_record(in) ? 0 : -1;
}

int read_fixed_header_slowly(SeedInput *in, char *dest, int n)
{
    if (!copy_bytes(in, dest, n))
        return 0;
    if (!is_ok_msd_quality(in->type_code)) // a data record's length is not known yet
        tell_if_cut(in);
    return 1;
}

int read_remainder_slowly(SeedInput *in, char *dest, int n)
{
    while (n > 0) {
        const int part = std::min(n, bytes_left(in));
        if (part > 0 && !copy_bytes(in, dest, part))
            return 0;
        tell_if_cut(in);
        dest += part;
        n -= part;
        if (n > 0 && advanceLogicalRecord(in, Entry::continue_item) != 0)
            return 0;
    }
    return 1;
}

void setReadRecLen(SeedInput *in, int exponent)
{
    in->recsiz = 1 << std::clamp(exponent, 1, Max_Exponent);
}

} // namespace quarl
