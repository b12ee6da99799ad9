#include "volume/rseed.h"

#include "blockette/msd.h"
#include "platform/allocate.h"
#include "platform/elog.h"
#include "platform/text.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
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

/// A kernel copies into memory up to five times slower where its target stands otherwise in a page
/// than its source, which begins with one. So a byte of the input always stands where it would
/// stand in the pages of its file, and a read ends where a page does.
constexpr int Page = 4096;

/// The buffer slides through this many times its own size before its unread tail is moved back to
/// the beginning, so that hardly a byte is moved.
constexpr int Slides = 3;

std::uintptr_t place_in_page(const char *at) { return reinterpret_cast<std::uintptr_t>(at) % Page; }

/// Moves what was read to the front of the store when there is no room left behind it.
void make_room(SeedInput *in)
{
    char *begin = in->store.data();
    if (in->store.size() - (in->buffer - begin) >= SeedInput::sZphysical + Page)
        return;
    char *to = begin + (place_in_page(in->buffer) + Page - place_in_page(begin)) % Page;
    std::memmove(to, in->buffer, in->pbytes + in->ahead);
    in->buffer = to;
}

/// One read, of at least as many bytes as the buffer lacks. What is held is written out first: the
/// read may wait.
void read_ahead(SeedInput *in)
{
    make_room(in);
    before_wait();
    errno = 0;
    const std::size_t over = place_in_page(in->buffer + SeedInput::sZphysical);
    const int have = in->pbytes + in->ahead;
    const ssize_t count =
        in->stream->read(in->buffer + have, SeedInput::sZphysical - have + (Page - over) % Page);
    if (count > 0) {
        in->ahead += static_cast<int>(count);
    } else if (count == 0) {
        in->beyond = Ending::file;
    } else if (errno == EINTR) {
        in->beyond = Ending::stop;
        in->ahead = 0;
    } else {
        in->beyond = Ending::failure;
        in->read_error = errno;
        in->read_reason = elog_take_reason();
    }
}

/// The buffer gets what one read of all that it lacks would bring, or how the input ends.
void read_once(SeedInput *in)
{
    const int room = SeedInput::sZphysical - in->pbytes;
    if (in->ahead < room && in->beyond == Ending::open)
        read_ahead(in);
    const int count = std::min(in->ahead, room);
    if (count == 0)
        in->ending = std::exchange(in->beyond, Ending::open);
    in->ahead -= count;
    in->pbytes += count;
    in->totbytes += count;
}

/// Drops the first `n` bytes of the buffer.
void drop(SeedInput *in, int n)
{
    in->buffer += n;
    in->pbytes -= n;
}

/// Drops the bytes before the current record.
void drop_used(SeedInput *in)
{
    drop(in, std::min(in->start, in->pbytes));
    in->start = 0;
    in->cur = 0;
}

/// Reports the read error that was held back until now.
void report_read_error(SeedInput *in)
{
    in->ending = Ending::told_failure;
    errno = in->read_error;
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
    while (in->pbytes < from + n && in->ending == Ending::open)
        read_once(in);
    if (in->ending == Ending::stop && in->pbytes < from + n)
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
    if (present <= 0 || present >= in->recsiz || in->told_cut || in->ending == Ending::stop ||
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
        if (!has_ended(in))
            in->ending = Ending::file;
        if (in->ending != Ending::stop) // then it is still asked how far the items reach
            drop(in, in->pbytes);
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
    allocate(in->store, Slides * (SeedInput::sZphysical + Page), "handle->buffer");
    in->buffer = in->store.data() + (Page - place_in_page(in->store.data())) % Page;
    in->stream = path.empty() || path == "-" ? gz_cat_stdin() : gz_cat(path.c_str());
    if (!in->stream)
        opening_failed(path);
    clrSeedInput(in.get());
    return in;
}

void clrSeedInput(SeedInput *in)
{
    ++in->fileno;
    drop(in, in->pbytes);
    in->totbytes = in->recno = 0;
    in->start = in->cur = in->recsiz = in->seq_num = 0;
    in->type_code = in->cont_code = '#';
    in->told_cut = in->length_open = false;
    in->ending = Ending::open;
}

int moredata(SeedInput *in)
{
    if (in->start > 0)
        drop_used(in);
    while (in->ending == Ending::open && in->pbytes <= Largest_Whole_Record)
        read_once(in);
    if (in->pbytes > 0)
        return 0;
    errno = 0;
    if (in->ending == Ending::failure)
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
    if (has_ended(in) && in->pbytes <= in->start) {
        tell_cut(in, left); // what is missing may be fill that nobody asked for
        errno = 0;
        return -1;
    }
    if (!has_ended(in) && in->pbytes <= in->start + Largest_Whole_Record && moredata(in) != 0)
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
