#include "check/damage.h"

#include "platform/format.h"

#include <algorithm>
#include <iterator>

namespace quarl
{

namespace
{

constexpr int Last_Number = 999999;
constexpr std::size_t Kept = 1000; ///< jumps

int next_number(int number) { return number >= Last_Number ? 1 : number + 1; }

/// Neighbours that are exchanged, each of several records that share their number.
bool are_exchanged(const std::vector<Jump> &jumps, std::size_t at)
{
    if (at + 2 >= jumps.size())
        return false;
    const int expected = next_number(jumps[at].before);
    return jumps[at].number == expected + 1 && jumps[at + 1].before == expected + 1 &&
           jumps[at + 1].number == expected && jumps[at + 2].before == expected &&
           jumps[at + 2].number == expected + 2;
}

/// The jump to the record that should stand where `jump` leads to, when both were exchanged.
const Jump *exchanged_with(const std::vector<Jump> &jumps, std::size_t at)
{
    constexpr std::size_t Look_Ahead = 8;
    const Jump &jump = jumps[at];
    const int expected = next_number(jump.before);
    const std::size_t end = std::min(jumps.size(), at + Look_Ahead);
    for (std::size_t i = at + 1; i < end; ++i)
        if (jumps[i].number == expected &&
            (jump.number == expected + (jumps[i].record - jump.record) ||
             (i == at + 1 && are_exchanged(jumps, at))))
            return &jumps[i];
    return nullptr;
}

std::string numbers_between(int first, int last)
{
    return first == last ? formatted<"sequence number %06d is missing">(first)
                         : formatted<"sequence numbers %06d to %06d are missing">(first, last);
}

Disorder disorder_of(const Jump &jump)
{
    const int expected = next_number(jump.before);
    if (jump.number == jump.before)
        return {Disorder::Kind::twice, jump.record,
                formatted<"sequence number %06d comes twice, records %ld and %ld">(
                    jump.number, jump.record - 1, jump.record)};
    if (jump.blank > 0 && jump.number == jump.before + 1 + jump.blank)
        return {Disorder::Kind::blank, jump.record - jump.blank,
                formatted<"holds blanks or NULs alone, where sequence number %06d is expected">(
                    expected)};
    const std::string follows =
        formatted<"sequence number %06d follows %06d">(jump.number, jump.before);
    if (jump.number > expected)
        return {Disorder::Kind::missing, jump.record,
                follows + ": " + numbers_between(expected, jump.number - 1)};
    return {Disorder::Kind::other, jump.record,
            follows + formatted<", expected is %06d">(expected)};
}

} // namespace

std::optional<Jump> RecordOrder::enter(const LogicalRecord &record, bool has_number, bool shares)
{
    const int before = number_;
    const bool had_before = has_before_;
    const Jump jump{record.place.record, before, record.place.sequence_number, blank_};
    const bool unreadable = unreadable_ > 0 && jump.number > before;
    number_ = has_number ? jump.number : next_number(before);
    type_ = record.place.type_code;
    has_before_ = true;
    blank_ = unreadable_ = 0;
    const bool rises = jump.number == before + 1 || jump.number == next_number(before) ||
                       (before == Last_Number && jump.number == 0);
    if (!had_before || !has_number || rises || unreadable || (jump.number == before && shares))
        return std::nullopt;
    if (jumps_.size() < Kept)
        jumps_.push_back(jump);
    else
        ++more_;
    return jump;
}

std::vector<Disorder> RecordOrder::disorders() const
{
    std::vector<Disorder> all;
    std::int64_t explained = 0; ///< up to this record
    for (std::size_t i = 0; i < jumps_.size(); ++i) {
        const Jump &jump = jumps_[i];
        if (jump.record <= explained)
            continue;
        if (const Jump *other = exchanged_with(jumps_, i)) {
            all.push_back(
                {Disorder::Kind::exchanged, jump.record,
                 formatted<"records %ld and %ld are exchanged: their sequence numbers are "
                           "%06d and %06d">(jump.record, other->record, jump.number,
                                            other->number)});
            // The step back to what follows both is the last jump.
            const auto behind =
                std::find_if(jumps_.begin() + i, jumps_.end(),
                             [&](const Jump &next) { return next.record > other->record; });
            explained = other->record;
            if (behind != jumps_.end() && behind->before == other->number)
                explained = behind->record;
        } else {
            all.push_back(disorder_of(jump));
        }
    }
    return all;
}

void Attachment::lose(int number, int station)
{
    const auto behind = stations_.upper_bound(number);
    const bool same = station != 0 && behind != stations_.begin() && *std::prev(behind) == station;
    if (!same)
        state_ = State::from_station;
    else if (state_ == State::whole)
        state_ = State::from_channel;
}

bool Attachment::takes(int type)
{
    constexpr int Station = 50;
    constexpr int Channel = 52;
    constexpr int Last = 62;
    if (type == Station || (type == Channel && state_ == State::from_channel))
        state_ = State::whole;
    return state_ == State::whole || type <= Station || type > Last;
}

} // namespace quarl
