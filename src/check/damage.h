// The order of logical records, and what could not be read.
#pragma once

#include <cstdint>
#include <optional>
#include <quarl/options.h>
#include <set>
#include <string>
#include <vector>

namespace quarl
{

/// Two records that follow each other, but not by their sequence numbers.
struct Jump {
    std::int64_t record = 0; ///< the second one
    int before = 0;          ///< sequence number of the first
    int number = 0;          ///< of the second
    std::int64_t blank = 0;  ///< records of blanks or NULs between them
};

/// What is wrong with the order of records.
struct Disorder {
    enum class Kind { missing, blank, twice, exchanged, other };
    Kind kind = Kind::other;
    std::int64_t record = 0;
    std::string text;
};

/// Notes how the sequence numbers of logical records go on.
class RecordOrder
{
public:
    /// A record that was entered; `shares` when it may have the number of the one before. Returns
    /// the jump to it, if there is one.
    std::optional<Jump> enter(const LogicalRecord &record, bool has_number, bool shares);
    void enter_blank() { ++blank_; }
    /// What stands where a record should be is none.
    void enter_unreadable() { ++unreadable_; }
    [[nodiscard]] bool has_before() const { return has_before_; }
    [[nodiscard]] char type_before() const { return type_; }

    /// In order of records.
    [[nodiscard]] std::vector<Disorder> disorders() const;
    /// Jumps that were not kept, as there are too many.
    [[nodiscard]] std::int64_t more() const { return more_; }

private:
    std::vector<Jump> jumps_;
    std::int64_t more_ = 0;
    std::int64_t blank_ = 0;
    std::int64_t unreadable_ = 0;
    bool has_before_ = false;
    int number_ = 0;
    char type_ = '#';
};

/// What of the headers can still be told where it belongs when something before it is missing.
class Attachment
{
public:
    /// The station index has a header in the record with this number.
    void add_station(int number) { stations_.insert(number); }
    /// Something is missing in front of the record with this number; `station` is the number of the
    /// header that was read last, or 0.
    void lose(int number, int station);
    /// Whether a blockette may be taken for a part of what was read last.
    bool takes(int type);

private:
    enum class State { whole, from_channel, from_station };
    State state_ = State::whole;
    std::set<int> stations_;
};

} // namespace quarl
