#include "volume/rseed.h"

#include "blockette/msd.h"
#include "blockette/record_header.h"
#include "platform/allocate.h"
#include "platform/elog.h"
#include "platform/number.h"
#include "platform/text.h"
#include "volume/recover.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
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

/// Nothing is read any more.
bool has_ended(Ending ending) { return ending != Ending::open && ending != Ending::failure; }

/// A kernel copies into memory up to five times slower where its target stands otherwise in a page
/// than its source, which begins with one. So a byte of the input always stands where it would
/// stand in the pages of its file, and a read ends where a page does.
constexpr int Page = 4096;

/// The buffer slides through this many times its own size before its unread tail is moved back to
/// the beginning, so that hardly a byte is moved.
constexpr int Slides = 3;

std::uintptr_t place_in_page(const char *at) { return reinterpret_cast<std::uintptr_t>(at) % Page; }

/// The first place from `begin` on that stands in its page where `at` does.
char *same_place(char *begin, const char *at)
{
    return begin + (place_in_page(at) + Page - place_in_page(begin)) % Page;
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

[[noreturn]] void opening_failed(const std::string &path)
{
    if (errno == EINTR)
        elog_die<MessageKind::interrupted, "Interrupted while opening input file %s\n">(0, path);
    elog_die<MessageKind::input_not_opened, "Can't open input file %s\n">(1, path);
}

} // namespace

/// What reads and moves on in it.
struct SeedInput::Work {
    /// Moves what was read to the front of the store when there is no room left behind it.
    static void make_room(SeedInput *in)
    {
        char *begin = in->store_.data();
        if (in->store_.size() - (in->buffer_ - begin) >=
            static_cast<std::size_t>(in->capacity_) + Page)
            return;
        char *to = same_place(begin, in->buffer_);
        std::memmove(to, in->buffer_, in->pbytes_ + in->ahead_);
        in->buffer_ = to;
    }

    /// Lets the buffer hold `size` bytes and as many more as it held before.
    static void grow(SeedInput *in, int size)
    {
        std::vector<char> store;
        const int capacity = SeedInput::sZphysical + size;
        allocate(store, Slides * (capacity + Page), "handle->buffer");
        char *to = same_place(store.data(), in->buffer_);
        std::memcpy(to, in->buffer_, in->pbytes_ + in->ahead_);
        in->store_ = std::move(store);
        in->buffer_ = to;
        in->capacity_ = capacity;
    }

    /// One read, of at least as many bytes as the buffer lacks. What is held is written out first:
    /// the read may wait.
    static void read_ahead(SeedInput *in)
    {
        make_room(in);
        before_wait();
        errno = 0;
        const std::size_t over = place_in_page(in->buffer_ + in->capacity_);
        const int have = in->pbytes_ + in->ahead_;
        const ssize_t count =
            in->stream->read(in->buffer_ + have, in->capacity_ - have + (Page - over) % Page);
        if (count > 0) {
            in->ahead_ += static_cast<int>(count);
        } else if (count == 0) {
            in->beyond_ = Ending::file;
        } else if (errno == EINTR) {
            in->beyond_ = Ending::stop;
            in->ahead_ = 0;
        } else {
            in->beyond_ = Ending::failure;
            in->read_error_ = errno;
            in->read_reason_ = elog_take_reason();
        }
    }

    /// The buffer gets what one read of all that it lacks would bring, or how the input ends.
    static void read_once(SeedInput *in)
    {
        const int room = in->capacity_ - in->pbytes_;
        if (in->ahead_ < room && in->beyond_ == Ending::open)
            read_ahead(in);
        const int count = std::min(in->ahead_, room);
        if (count == 0)
            in->ending_ = std::exchange(in->beyond_, Ending::open);
        in->ahead_ -= count;
        in->pbytes_ += count;
        in->totbytes_ += count;
    }

    /// Drops the first `n` bytes of the buffer.
    static void drop(SeedInput *in, int n)
    {
        in->buffer_ += n;
        in->pbytes_ -= n;
    }

    /// Drops the bytes before the current record.
    static void drop_used(SeedInput *in)
    {
        drop(in, std::min(in->start_, in->pbytes_));
        in->start_ = 0;
        in->cur_ = 0;
    }

    /// Reads until the buffer reaches beyond `offset`, if it can.
    static void read_beyond(SeedInput *in, int offset)
    {
        while (in->pbytes_ <= offset && offset < in->capacity_ && in->ending_ == Ending::open)
            read_once(in);
    }

    /// Reports the read error that was held back until now.
    static void report_read_error(SeedInput *in)
    {
        in->ending_ = Ending::told_failure;
        errno = in->read_error_;
        elog_set_reason(in->read_reason_);
        elog_complain<MessageKind::input_read_error, "input read error\n">(1);
    }

    /// Bytes at buffer offset `from`; zeros stand for those beyond the end of the input. False (the
    /// input has run out) for bytes beyond the capacity of the buffer, or beyond what was read of
    /// an input that was given up.
    static bool take_slowly(SeedInput *in, int from, char *dest, int n)
    {
        if (n > in->capacity_ - from)
            return false;
        while (in->pbytes_ < from + n && in->ending_ == Ending::open)
            read_once(in);
        if (in->ending_ == Ending::stop && in->pbytes_ < from + n)
            return false;
        const int present = std::clamp(in->pbytes_ - from, 0, n);
        std::memcpy(dest, in->buffer_ + std::min(from, in->pbytes_), present);
        std::memset(dest + present, 0, n - present);
        in->filled_ += n - present;
        return true;
    }

    /// The one place that turns offset and count into bytes of the buffer; nearly always they are
    /// there.
    static bool take(SeedInput *in, int from, char *dest, int n)
    {
        if (n > in->pbytes_ - from)
            return take_slowly(in, from, dest, n);
        std::memcpy(dest, in->buffer_ + from, n);
        return true;
    }

    /// Tells the user, once per file, when the input ends inside the record at `start`.
    static void tell_cut(SeedInput *in, int start)
    {
        const int present = in->pbytes_ - start;
        if (present <= 0 || present >= in->recsiz_ || in->told_cut_ ||
            in->ending_ == Ending::stop ||
            is_fill({in->buffer_ + start, static_cast<std::size_t>(present)}))
            return;
        in->told_cut_ = true;
        elog_complain<MessageKind::input_cut,
                      "Input ends inside logical record #%d: %d of %d bytes\n">(
            0, in->recno_, present, in->recsiz_);
    }

    /// Copies `n` unread bytes.
    static bool copy_bytes(SeedInput *in, char *dest, int n)
    {
        if (!take(in, in->cur_, dest, n)) {
            if (!has_ended(in->ending_))
                in->ending_ = Ending::file;
            if (in->ending_ != Ending::stop) // then it is still asked how far the items reach
                drop(in, in->pbytes_);
            errno = 0;
            return false;
        }
        in->cur_ += n;
        return true;
    }

    /// The length that the record entered has, as far as its kind tells, and whether the item that
    /// began before goes on in it.
    static void find_step(SeedInput *in, int before)
    {
        if (is_header_type(in->type_code_)) {
            const bool names_length = may_begin_volume(in->held());
            if (in->control_length_ == 0 && !names_length)
                in->control_length_ = guessed_length(in->held());
            if (in->control_length_ != 0)
                in->recsiz_ = in->control_length_;
        } else if (is_ok_msd_quality(in->type_code_)) {
            in->recsiz_ = std::max(in->recsiz_, Default_Record_Length);
        }
        if (in->entry_ != Entry::continue_item)
            return;
        const std::string_view body = in->record_from(sizeof(RecordHeader));
        const HeaderLook look = look_of({in->header_.data(), in->header_.size()});
        if (look == HeaderLook::none || look == HeaderLook::fill ||
            is_ok_msd_quality(in->type_code_) ||
            !goes_on(body, static_cast<std::size_t>(in->wanted_), in->seq_num_ == before + 1,
                     in->cont_code_ == '*'))
            in->entry_ = Entry::broken_off;
    }

    /// Reads the header of the logical record at `start`.
    static bool enter_record(SeedInput *in)
    {
        RecordHeader header;
        const int filled = in->filled_; // of the item, whose header this is not
        if (!take(in, in->start_, reinterpret_cast<char *>(&header), sizeof header))
            return false;
        in->filled_ = filled;
        const int before = in->seq_num_;
        in->seq_num_ = read_sequence_number(in, header.sequence_number);
        std::memcpy(in->header_.data(), &header, sizeof header);
        in->type_code_ = header.type_code;
        in->cont_code_ = header.cont_code;
        ++in->recno_;
        in->cur_ += sizeof header;
        if (in->recsiz_ == 0)
            in->recsiz_ = Default_Record_Length;
        if (in->recovers)
            find_step(in, before);
        if (in->on_entered)
            in->on_entered();
        return true;
    }
};

std::unique_ptr<SeedInput> newSeedInput(const std::string &path)
{
    auto in = allocate_one<SeedInput>("handle", sizeof(SeedInput), Where());
    allocate(in->store_, Slides * (SeedInput::sZphysical + Page), "handle->buffer");
    in->buffer_ = in->store_.data() + (Page - place_in_page(in->store_.data())) % Page;
    in->stream = path.empty() || path == "-" ? gz_cat_stdin() : gz_cat(path.c_str());
    if (!in->stream)
        opening_failed(path);
    clrSeedInput(in.get());
    return in;
}

void clrSeedInput(SeedInput *in)
{
    ++in->fileno_;
    SeedInput::Work::drop(in, in->pbytes_);
    in->totbytes_ = in->recno_ = 0;
    in->start_ = in->cur_ = in->recsiz_ = in->seq_num_ = 0;
    in->control_length_ = in->wanted_ = 0;
    in->type_code_ = in->cont_code_ = '#';
    in->told_cut_ = in->length_open_ = false;
    in->ending_ = Ending::open;
}

int moredata(SeedInput *in)
{
    if (in->start_ > 0)
        SeedInput::Work::drop_used(in);
    while (in->ending_ == Ending::open && in->pbytes_ <= Largest_Whole_Record &&
           !(in->is_prompt && in->pbytes_ > 0 && in->ahead_ == 0 && in->stream->would_wait()))
        SeedInput::Work::read_once(in);
    if (in->pbytes_ > 0)
        return 0;
    errno = 0;
    if (in->ending_ == Ending::failure)
        SeedInput::Work::report_read_error(in);
    return -1;
}

void tell_if_cut(SeedInput *in)
{
    if (in->cur_ > in->pbytes_ && !in->length_open_)
        SeedInput::Work::tell_cut(in, in->start_);
}

int advanceLogicalRecord(SeedInput *in, Entry entry) { return advance_by(in, entry, in->recsiz_); }

int advance_by(SeedInput *in, Entry entry, int step)
{
    in->entry_ = in->recno_ == 0 ? Entry::begin : entry;
    const int left = in->start_;
    in->start_ = saturated_sum(in->start_, step);
    in->cur_ = in->start_;
    if (in->is_prompt)
        SeedInput::Work::read_beyond(in, in->start_);
    if (has_ended(in->ending_) && in->pbytes_ <= in->start_) {
        SeedInput::Work::tell_cut(in, left); // what is missing may be fill that nobody asked for
        errno = 0;
        return -1;
    }
    if (!has_ended(in->ending_) && in->pbytes_ - Largest_Whole_Record <= in->start_ &&
        moredata(in) != 0)
        return -1;
    return SeedInput::Work::enter_record(in) ? 0 : -1;
}

int read_fixed_header_slowly(SeedInput *in, char *dest, int n)
{
    if (!SeedInput::Work::copy_bytes(in, dest, n))
        return 0;
    if (!is_ok_msd_quality(in->type_code_)) // a data record's length is not known yet
        tell_if_cut(in);
    return 1;
}

int read_remainder_slowly(SeedInput *in, char *dest, int n)
{
    while (n > 0) {
        const int part = std::min(n, bytes_left(in));
        if (part > 0 && !SeedInput::Work::copy_bytes(in, dest, part))
            return 0;
        tell_if_cut(in);
        dest += part;
        n -= part;
        in->wanted_ = n;
        if (n > 0 && (advanceLogicalRecord(in, Entry::continue_item) != 0 ||
                      in->entry_ == Entry::broken_off))
            return 0;
    }
    return 1;
}

HeldRecord hold_record_slowly(SeedInput *in, int n)
{
    using Work = SeedInput::Work;
    if (n > in->capacity_ - in->start_) {
        const int used = std::exchange(in->start_, 0);
        in->cur_ -= used;
        Work::drop(in, used);
    }
    if (n > in->capacity_)
        Work::grow(in, n);
    while (in->pbytes_ < in->start_ + n && in->ending_ == Ending::open)
        Work::read_once(in);
    const int present = std::clamp(in->pbytes_ - in->start_, 0, n);
    if (in->ending_ == Ending::stop && present < n)
        return {nullptr, present};
    if (present < n) { // nothing was read ahead
        Work::make_room(in);
        std::memset(in->buffer_ + in->start_ + present, 0, n - present);
    }
    return {in->buffer_ + in->start_, present};
}

int read_open_remainder(SeedInput *in, char *dest, int n)
{
    in->length_open_ = true;
    const int whole = read_remainder(in, dest, n);
    in->length_open_ = false;
    return whole;
}

void setReadRecLen(SeedInput *in, int exponent)
{
    in->recsiz_ = record_length(exponent);
    in->control_length_ = in->recsiz_;
}

} // namespace quarl
