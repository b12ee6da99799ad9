// What the samples of channels look like: least and largest of each step in time, and a few
// numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <quarl/contents.h>
#include <quarl/item.h>
#include <quarl/samples.h>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace quarl::html
{

/// The samples of one channel. Steps are a power of two of samples long: one sample at first, and
/// twice as many whenever there are too many steps.
class Envelope
{
public:
    /// Of the samples from number at * 2^level on, counted from the channel's first record.
    struct Step {
        std::int64_t at;
        double least;
        double most;
    };

    void add(const Samples &samples, double start, double rate);
    /// Makes steps longer until there are at most so many.
    void reduce(std::size_t most);
    /// Brings the steps into order of time, each once.
    void put_in_order();

    [[nodiscard]] const std::vector<Step> &steps() const { return steps_; }
    [[nodiscard]] int level() const { return level_; }
    [[nodiscard]] double origin() const { return origin_; } ///< s since 1970
    [[nodiscard]] double rate() const { return rate_; }     ///< samples per second

    [[nodiscard]] std::int64_t count() const { return count_; }
    [[nodiscard]] double least() const { return least_; }
    [[nodiscard]] double most() const { return most_; }
    [[nodiscard]] double mean() const;
    /// The root of the mean square.
    [[nodiscard]] double rms() const;
    /// Share of the samples that stand at the least or largest value more than ten times in a row;
    /// of a channel with one value alone 0.
    [[nodiscard]] double clipped() const;
    [[nodiscard]] bool has_whole_numbers() const { return whole_; }

private:
    template <class T> void add_values(std::span<const T> values, double start, double rate);
    template <class T> void add_steps(std::span<const T> values, std::int64_t at);
    template <class T> void add_figures(std::span<const T> values);
    template <class T>
    void count_clipped(std::span<const T> values, double extreme, std::int64_t *clipped) const;
    void put(const Step &step);
    void shorten();

    std::vector<Step> steps_;
    int level_ = 0;
    bool in_order_ = true;
    double origin_ = 0.0;
    double rate_ = 0.0;
    bool whole_ = true;
    std::int64_t count_ = 0;
    double least_ = 0.0;
    double most_ = 0.0;
    double first_ = 0.0; ///< the sums are of what is above it
    double sum_ = 0.0;
    double squares_ = 0.0;
    std::int64_t at_least_ = 0; ///< clipped samples
    std::int64_t at_most_ = 0;
};

/// The envelopes of a volume. Together they have a few million steps at most.
class Envelopes
{
public:
    void add(const Item &item);
    /// Null when no sample of the channel was decoded.
    [[nodiscard]] const Envelope *find(const ChannelCode &code) const;

private:
    std::map<ChannelCode, Envelope> channels_;
    std::pair<const ChannelCode, Envelope> *last_ = nullptr;
    std::size_t steps_ = 0;
    std::size_t most_ = 16384; ///< steps of a channel
    SampleBuffer buffer_;
};

/// Steps as text for a page, with what it takes to read them.
struct PackedEnvelope {
    double start = 0.0;       ///< s since 1970, of the first step
    double step = 0.0;        ///< s
    std::int64_t samples = 1; ///< in a step
    bool paired = false;      ///< least and largest; else one value
    double scale = 1.0;       ///< of the numbers; 0 is the least sample
    /// In base64: runs of steps that follow each other, each with the number of steps that lack in
    /// front of it, its length, and its values: the difference from the value before, and, where
    /// they are paired, how much larger the largest is. Numbers have 7 bits in a byte, the lowest
    /// first, and bit 7 where more follow; differences have their sign in bit 0.
    std::string values;
};
PackedEnvelope packed(const Envelope &envelope);

} // namespace quarl::html
