// Field scanners: how a parser walks the text of a blockette.
#pragma once

#include "blockette/parsing.h"
#include "platform/text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace quarl
{

/// Position in the text of one blockette. Beyond the end of the text a scanner reads nothing, as it
/// does behind a NUL; the position still advances. Unless it reads for a listing it is strict: it
/// keeps account of the fields that hold no value.
class Cursor
{
public:
    explicit Cursor(std::string_view text) : text_(text), strict_(!parsing().for_listing) {}
    Cursor(const Cursor &) = delete;
    Cursor &operator=(const Cursor &) = delete;
    ~Cursor()
    {
        parsing().fields_size = at_;
        if (strict_ && at_ > text_.size() && !older_)
            parsing().flaws.cut = true;
    }

    /// Everything from the position on.
    [[nodiscard]] std::string_view rest() const
    {
        return text_.substr(std::min(at_, text_.size()));
    }
    /// At most `width` characters, up to a NUL; the position advances by `width` whatever was
    /// there.
    std::string_view field(std::size_t width)
    {
        const std::string_view all = rest().substr(0, width);
        at_ += width;
        if (all.size() >= Word && !has_nul(all))
            return all;
        std::size_t size = 0; // fields are too short for a call of memchr to pay
        while (size < all.size() && all[size] != '\0')
            ++size;
        return all.substr(0, size);
    }
    void advance(std::size_t count) { at_ += count; }
    [[nodiscard]] std::size_t position() const { return at_; }
    [[nodiscard]] std::size_t size() const { return text_.size(); }

    [[nodiscard]] bool is_strict() const { return strict_; }
    /// The field read last ends behind the text.
    [[nodiscard]] bool ran_out() const { return at_ > text_.size(); }
    /// A blockette may end here.
    void may_end() { older_ |= strict_ && at_ == text_.size() && !parsing().input_cut; }
    /// One of a format older than `version` may.
    void may_end_before(double version)
    {
        if (parsing().version < version)
            may_end();
    }
    /// What is wrong with the field being read.
    void flaw(Absence absence) { flaw_ = absence; }
    /// The field was read to `value`.
    void note(const void *value)
    {
        if (flaw_ != Absence::none) [[unlikely]]
            keep_flaw(value);
    }
    /// The same for a text of `size`, which is empty when there is not all of it.
    void note_text(char *text)
    {
        if (strict_ && ran_out()) [[unlikely]] {
            *text = '\0';
            flaw_ = Absence::cut;
        }
        note(text);
    }

private:
    void keep_flaw(const void *value);

    static constexpr std::size_t Word = sizeof(std::uint64_t);

    /// Whether the eight bytes at `from` hold a NUL.
    static bool word_has_nul(const char *from)
    {
        constexpr std::uint64_t Ones = 0x0101010101010101;
        std::uint64_t word = 0;
        std::memcpy(&word, from, Word);
        return ((word - Ones) & ~word & 0x80 * Ones) != 0;
    }
    /// The same for a text of eight bytes or more; the last word overlaps the one before.
    static bool has_nul(std::string_view text)
    {
        const char *last = text.data() + (text.size() - Word);
        for (const char *at = text.data(); at < last; at += Word)
            if (word_has_nul(at))
                return true;
        return word_has_nul(last);
    }

    std::string_view text_;
    std::size_t at_ = 0;           ///< in the end, what the fields took
    Absence flaw_ = Absence::none; ///< of the field being read
    bool strict_;
    bool older_ = false; ///< what is missing may be
};

/// An integer field of `len` characters. Text behind the number is ignored and blanks are 0;
/// anything else that is no number is logged, sets Bad_blkflag and gives 0. A strict cursor keeps
/// account of all of these.
int scan_int(Cursor *str, int len);
inline void scan_int(Cursor *str, int len, int *to)
{
    *to = scan_int(str, len);
    str->note(to);
}

/// The number of entries of a list: an integer field; a negative one is reported, sets
/// Bad_blkflag and gives 0.
int scan_count(Cursor *str, int len);
inline void scan_count(Cursor *str, int len, int *to)
{
    *to = scan_count(str, len);
    str->note(to);
}

/// The same in a blockette that is listed. Where the listing reads, a negative number stays: it
/// ends the reading where the list gets its room.
int scan_listed_count(Cursor *str, int len);
inline void scan_listed_count(Cursor *str, int len, int *to)
{
    *to = scan_listed_count(str, len);
    str->note(to);
}

/// A real field of `len` characters, as scan_int. A blank behind the exponent letter counts as "+";
/// where the cursor is strict, the letter may be Fortran's "D", and what is not finite is no value.
double scan_double(Cursor *str, int len);
inline void scan_double(Cursor *str, int len, double *to)
{
    *to = scan_double(str, len);
    str->note(to);
}

/// The one character at the cursor as it stands; NUL beyond the end.
void scan_char(Cursor *str, char *to);

/// `len` raw characters, blanks kept; a NUL ends them early.
std::string_view scan_raw(Cursor *str, int len);

/// A text field of `len` characters without surrounding white space.
inline std::string_view scan_text(Cursor *str, int len) { return trimmed(str->field(len)); }

/// A text field into `to`, which holds more than `Len` characters.
template <int Len, std::size_t N> void scan_str(Cursor *str, char (&to)[N])
{
    static_assert(Len < N);
    to[scan_text(str, Len).copy(to, Len)] = '\0';
    str->note_text(to);
}

/// A text closed by "~" into `dest`, of which `maxchars` bytes are used, terminator included:
/// leading and trailing white space removed. A text that does not fit is cut, reported and sets
/// Bad_blkflag. To a strict cursor a text that nothing closes is none.
void scan_var_str(Cursor *source, char *dest, std::size_t maxchars);

template <std::size_t N> void scan_var_str(Cursor *source, char (&dest)[N])
{
    scan_var_str(source, dest, N);
}

/// Type and length of blockette, with which every layout begins.
void scan_head(Cursor *str, blk_t *blk);

/// Logs that the list `what` ends early at entry `i`.
void log_abort(std::string_view what, int i);

/// Entries of a list: as many as the volume promises, and those that are there.
struct Entries {
    int promised;
    int there;
    std::size_t size; ///< characters of one
};

/// The listing gives up at entry `i`; a strict cursor goes on without further messages.
inline void give_up_list(std::string_view what, int i)
{
    if (parsing().Bad_blkflag && !parsing().abandoned) {
        log_abort(what, i);
        parsing().abandoned = true;
    }
}

/// Reads the entries of a list. For the listing these are all that are promised; a field that went
/// bad earlier in the blockette stops the list before its next entry and says where: false, and the
/// parser returns. A strict cursor reads those that are there.
template <class ReadEntry>
[[nodiscard]] bool scan_list(Cursor *in, const Entries &entries, std::string_view what,
                             ReadEntry read_entry)
{
    const int count = in->is_strict() ? entries.there : entries.promised;
    for (int i = 0; i < count; ++i) {
        give_up_list(what, i);
        if (parsing().abandoned && !in->is_strict())
            return false;
        read_entry(i);
    }
    if (count < entries.promised) {
        give_up_list(what, count);
        in->advance(entries.size * static_cast<std::size_t>(entries.promised - count));
    }
    return true;
}

/// Of `promised` entries of `size` characters or more from the cursor on, those for which a
/// blockette of `length` bytes has room. Counts are not to be trusted. A strict cursor has no more
/// text than the blockette has.
int entries_held(const Cursor &in, int length, int promised, std::size_t size);

/// The same for those that begin in what there is of the blockette: as far as the listing comes.
int entries_begun(const Cursor &in, int promised, std::size_t size);

/// What comes at the cursor begins in a blockette of `length` bytes.
bool begins_within(const Cursor &in, int length);

/// Where entry `i` of a list of fixed capacity goes: keep(array) is its slot, or a throw-away one
/// when the array is full.
class Keep
{
public:
    Keep(int i, int capacity) : i_(i), room_(i < capacity) {}

    template <class T, std::size_t N> T &operator()(T (&array)[N])
    {
        static thread_local T surplus;
        return room_ ? array[i_] : surplus;
    }

private:
    int i_;
    bool room_;
};

/// Reads all `promised` entries of a list of fixed capacity, so that the fields behind them stay in
/// step. The surplus is dropped and sets Bad_blkflag. Returns how many were kept.
template <class ReadEntry>
[[nodiscard]] int scan_fixed_list(int promised, int capacity, ReadEntry read_entry)
{
    for (int i = 0; i < promised; ++i)
        read_entry(Keep(i, capacity));
    if (promised <= capacity)
        return promised;
    parsing().Bad_blkflag = 1;
    return capacity;
}

} // namespace quarl
