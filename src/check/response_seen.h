// The response of a channel epoch, as rules look at it.
#pragma once

#include "check/rule.h"

#include <optional>
#include <quarl/inventory.h>
#include <quarl/response.h>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quarl
{

/// All that a response says of one stage, wherever it stands.
struct StageSeen {
    int number = 0;
    std::span<const FilterPtr> filters;
    std::optional<Decimation> decimation; ///< the last one
    std::optional<Gain> gain;             ///< the last one
    std::size_t decimations = 0;
    std::size_t gains = 0;
    bool comes_again = false; ///< behind a higher stage, or behind stage 0

    [[nodiscard]] bool is_digital() const;
    template <class Shape> [[nodiscard]] const Shape *shape() const
    {
        for (const FilterPtr &filter : filters)
            if (const auto *found = std::get_if<Shape>(&filter->shape()))
                return found;
        return nullptr;
    }
};

/// What is wrong with the stages of an epoch: the first three of a kind are told by number.
class StageFaults
{
public:
    /// `fault` stands behind the number: "stage 2: no gain (058)". Nothing when it is empty.
    void add(const StageSeen &stage, std::string fault);
    [[nodiscard]] bool empty() const { return kinds_.empty(); }
    [[nodiscard]] int first_stage() const { return kinds_.front().stages.front(); }
    [[nodiscard]] std::string text() const;

private:
    struct Kind {
        std::string fault;
        std::vector<int> stages;
        std::size_t count = 0;
    };
    std::vector<Kind> kinds_; ///< the first ones
    std::size_t more_ = 0;    ///< faults of further kinds
};

/// Where the parts of a response are put in order; room for one after the other.
struct ResponseRoom {
    std::vector<const Stage *> order;
    std::vector<FilterPtr> filters;
    std::vector<StageSeen> stages;
};

/// The response of a channel epoch that is to have one: no log or state of health. Lives as long as
/// its room is not used for another one.
struct ResponseSeen {
    ResponseSeen(const Inventory &described_in, const ChannelEpoch &described, ResponseRoom *room);

    const Inventory &inventory;
    const ChannelEpoch &epoch;
    std::string_view code;             ///< of the channel, three letters
    StageSeen whole;                   ///< stage 0
    std::span<const StageSeen> stages; ///< from 1 on, in order of numbers

    [[nodiscard]] const StageSeen *first_filter() const;
    [[nodiscard]] const StageSeen *last_filter() const;
    [[nodiscard]] bool has_polynomial() const; ///< in a stage from 1 on
    /// Some stage is there more than once, so that nothing else can be said of the response.
    [[nodiscard]] bool has_repeated() const;

    /// A finding about a stage of the epoch, or with 0 about the epoch.
    template <class Text> void tell_at(const Report &report, int stage, Text &&text) const
    {
        report(epoch.record, inventory.channel_of(epoch).code.text(), [&] {
            about::Epoch subject = subject_of(inventory, epoch);
            subject.stage = stage;
            return Told{subject, std::forward<Text>(text)()};
        });
    }
    /// A finding about the epoch, one of those of its channel; `text` makes what is told.
    template <class Text> void tell(const Report &report, Text &&text) const
    {
        tell_at(report, 0, std::forward<Text>(text));
    }
    /// One about those stages of which `fault` has something to say.
    template <class Fault> void tell_stages(const Report &report, Fault &&fault) const
    {
        StageFaults faults;
        for (const StageSeen &stage : stages)
            faults.add(stage, fault(stage));
        if (!faults.empty())
            tell_at(report, faults.first_stage(), [&] { return faults.text(); });
    }
};

/// The response as the volume has it, whatever it is: what is asked of it first.
struct StagesSeen {
    const ResponseSeen &seen;
};

/// The one filter of a stage, blockettes that continue each other joined; null: there is none, or
/// there are several.
FilterPtr one_filter(const StageSeen &stage);
/// How many filters a stage has; those that continue each other count as one.
std::size_t count_filters(const StageSeen &stage);

/// The channel's instrument moves with the ground: what it should take and give is known.
bool is_of_motion(std::string_view code);

/// Kind of quantity that a seismometer takes; upper and lower case alike, any power of ten.
bool is_velocity(std::string_view unit);
bool is_acceleration(std::string_view unit);
bool is_counts(std::string_view unit);
/// Both name the same, whatever their letters and spellings.
bool is_same_unit(std::string_view unit, std::string_view other);
/// Of the standard or the SI, prefixes included, or composed of such units.
bool is_known_unit(std::string_view unit);

} // namespace quarl
