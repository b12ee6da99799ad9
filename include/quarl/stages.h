// What the blockettes of a channel epoch state about its response: stages, in order, of filters,
// decimations and gains. Nothing is interpreted here; quarl/response.h evaluates it.
//
// An archive repeats the same few filters in a hundred thousand epochs. Filters and stages are
// therefore immutable, shared by pointers, and compared and hashed by content: an Interner, or a
// ResponseBuilder with a ResponsePool, keeps one copy of equal ones.
#pragma once

#include <algorithm>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace quarl
{

/// A unit as a blockette refers to it. The name is empty when the volume does not define the code.
struct Unit {
    int code = 0;
    std::string name;

    bool operator==(const Unit &) const = default;
};

/// Poles and zeros: blockettes 053 and 043.
struct PolesZeros {
    char type = 'A';        ///< A: Laplace, rad/s; B: analog, Hz; C: composite; D: z-transform
    double factor = 1.0;    ///< A0, the normalisation factor
    double frequency = 0.0; ///< at which A0 normalises, Hz
    std::vector<std::complex<double>> zeros;
    std::vector<std::complex<double>> poles;
    std::vector<std::complex<double>> zero_errors = {}; ///< of both parts; empty: all are 0
    std::vector<std::complex<double>> pole_errors = {};

    bool operator==(const PolesZeros &) const = default;
};

/// Coefficients: blockettes 054 and 044.
struct Coefficients {
    char type = 'D'; ///< A: Laplace, rad/s; B: analog, Hz; C: composite; D: digital
    std::vector<double> numerators;
    std::vector<double> denominators;
    std::vector<double> numerator_errors = {}; ///< empty: all are 0
    std::vector<double> denominator_errors = {};

    bool operator==(const Coefficients &) const = default;
};

/// Response list: blockettes 055 and 045.
struct ResponseList {
    struct Entry {
        double frequency = 0.0; ///< Hz
        double amplitude = 0.0;
        double phase = 0.0; ///< degrees
        double amplitude_error = 0.0;
        double phase_error = 0.0; ///< degrees

        bool operator==(const Entry &) const = default;
    };
    std::vector<Entry> entries; ///< in volume order, which need not be that of the frequencies

    bool operator==(const ResponseList &) const = default;
};

/// Generic response: blockettes 056 and 046.
struct GenericResponse {
    struct Corner {
        double frequency = 0.0; ///< Hz
        double slope = 0.0;     ///< dB per decade

        bool operator==(const Corner &) const = default;
    };
    std::vector<Corner> corners;

    bool operator==(const GenericResponse &) const = default;
};

/// FIR filter: blockettes 061 and 041. Of a symmetric one the first half is given.
struct Fir {
    char symmetry = 'A'; ///< A: none; B: odd number of coefficients; C: even number
    std::vector<double> coefficients;

    bool operator==(const Fir &) const = default;
};

/// Polynomial: blockettes 062 and 042. Physical value = sum of coefficient k times x to the power
/// k, x what the stage puts out.
struct Polynomial {
    char approximation = 'M';     ///< M: Maclaurin series
    char frequency_unit = 'A';    ///< of the two frequencies. A: rad/s; B: Hz
    double lower_frequency = 0.0; ///< the polynomial is valid from here
    double upper_frequency = 0.0; ///< to here
    double lower_bound = 0.0;     ///< least x for which it is made
    double upper_bound = 0.0;     ///< largest x
    double maximum_error = 0.0;
    std::vector<double> coefficients;
    std::vector<double> coefficient_errors = {}; ///< empty: all are 0

    bool operator==(const Polynomial &) const = default;
};

/// What a filter does; compares by content.
using FilterShape =
    std::variant<PolesZeros, Coefficients, ResponseList, GenericResponse, Fir, Polynomial>;

/// One filter blockette. Immutable.
class Filter
{
public:
    explicit Filter(FilterShape shape, Unit input = {}, Unit output = {}, std::string name = {});

    [[nodiscard]] const FilterShape &shape() const { return shape_; }
    [[nodiscard]] const Unit &input() const { return input_; }
    [[nodiscard]] const Unit &output() const { return output_; }
    /// The response name; empty when the blockette type has none.
    [[nodiscard]] const std::string &name() const { return name_; }

    /// Computed once, another one in each run. The shape's alone is the same for filters that
    /// differ in units or name only.
    [[nodiscard]] std::size_t hash() const { return hash_; }
    [[nodiscard]] std::size_t shape_hash() const { return shape_hash_; }
    bool operator==(const Filter &other) const;

private:
    FilterShape shape_;
    Unit input_;
    Unit output_;
    std::string name_;
    std::size_t shape_hash_;
    std::size_t hash_;
};

using FilterPtr = std::shared_ptr<const Filter>;

/// Decimation: blockettes 057 and 047.
struct Decimation {
    double input_rate = 0.0; ///< samples per second
    int factor = 1;
    int offset = 0;
    double delay = 0.0;      ///< estimated, seconds
    double correction = 0.0; ///< applied to the time stamps, seconds

    bool operator==(const Decimation &) const = default;
};

/// Gain of a stage, or in stage 0 the channel's sensitivity: blockettes 058 and 048.
struct Gain {
    double value = 0.0;     ///< output units per input unit
    double frequency = 0.0; ///< Hz

    bool operator==(const Gain &) const = default;
};

/// What one blockette says about a stage.
using Part = std::variant<FilterPtr, Decimation, Gain>;

/// A run of blockettes with one stage number, in volume order. A number that comes back after
/// another one begins a new stage.
struct Stage {
    int number = 0; ///< 0: the channel as a whole
    std::vector<Part> parts;

    [[nodiscard]] std::size_t hash() const;
    bool operator==(const Stage &other) const; ///< filters by content
};

using StagePtr = std::shared_ptr<const Stage>;

/// The response of a channel epoch: its stages in volume order. Pointers are never null.
struct Response {
    std::vector<StagePtr> stages;
    double sample_rate = 0.0; ///< of the channel, samples per second

    [[nodiscard]] std::size_t hash() const;
    bool operator==(const Response &other) const; ///< stages by content
};

/// Keeps one copy of equal values of T, which has a `hash` and ==. Those that nobody else holds any
/// more are let go when there are many.
template <class T> class Interner
{
public:
    /// The copy that is equal to `value`.
    std::shared_ptr<const T> operator()(T &&value) { return copy_of(std::move(value)); }
    std::shared_ptr<const T> operator()(const T &value) { return copy_of(value); }
    /// The same for a value that is shared already, never null.
    std::shared_ptr<const T> operator()(std::shared_ptr<const T> value)
    {
        const auto tag = static_cast<std::uint32_t>(value->hash());
        Slot &slot = find(*value, tag);
        return slot.number != 0 ? held_[slot.number - 1].value : hold(slot, tag, std::move(value));
    }
    /// Values held.
    [[nodiscard]] std::size_t size() const { return held_.size(); }

private:
    struct Held {
        std::uint32_t tag; ///< the low bits of its hash
        std::shared_ptr<const T> value;
    };
    /// Of an open table: a value stands in the first free slot from that of its tag on.
    struct Slot {
        std::uint32_t tag = 0;
        std::uint32_t number = 0; ///< index in held_, plus 1; 0: the slot is free
    };

    template <class Value> std::shared_ptr<const T> copy_of(Value &&value)
    {
        const auto tag = static_cast<std::uint32_t>(value.hash());
        Slot &slot = find(value, tag);
        return slot.number != 0
                   ? held_[slot.number - 1].value
                   : hold(slot, tag, std::make_shared<const T>(std::forward<Value>(value)));
    }
    /// The slot of the copy that is equal to `value`, or the free one that is for it.
    Slot &find(const T &value, std::uint32_t tag)
    {
        if (held_.size() + held_.size() / 2 >= slots_.size())
            make_room();
        std::size_t at = tag & (slots_.size() - 1);
        while (slots_[at].number != 0 &&
               (slots_[at].tag != tag || !(*held_[slots_[at].number - 1].value == value)))
            at = (at + 1) & (slots_.size() - 1);
        return slots_[at];
    }
    std::shared_ptr<const T> hold(Slot &slot, std::uint32_t tag, std::shared_ptr<const T> value)
    {
        held_.push_back({tag, std::move(value)});
        slot = {tag, static_cast<std::uint32_t>(held_.size())};
        return held_.back().value;
    }
    /// Lets go what is not needed. A table that stays more than a third full becomes larger.
    void make_room()
    {
        constexpr std::size_t Many = 1024;
        std::size_t size = std::max<std::size_t>(slots_.size(), 64);
        if (size >= Many)
            std::erase_if(held_, [](const Held &held) { return held.value.use_count() == 1; });
        if (held_.size() > size / 3)
            size *= 2;
        slots_.assign(size, {});
        for (std::size_t i = 0; i < held_.size(); ++i) {
            std::size_t at = held_[i].tag & (size - 1);
            while (slots_[at].number != 0)
                at = (at + 1) & (size - 1);
            slots_[at] = {held_[i].tag, static_cast<std::uint32_t>(i + 1)};
        }
    }

    std::vector<Slot> slots_; ///< a power of 2
    std::deque<Held> held_;
};

struct ResponsePool {
    Interner<Filter> filters;
    Interner<Stage> stages;
};

/// Collects the parts of a channel epoch in volume order.
class ResponseBuilder
{
public:
    /// Filters and stages come from `pool` where it holds equal ones; it outlives the builder.
    explicit ResponseBuilder(ResponsePool &pool) : pool_(pool) {}

    void add(int stage, Filter filter);
    void add(int stage, Part part);
    /// What was collected; the builder is empty again.
    [[nodiscard]] Response take(double sample_rate);

private:
    void close_stage();

    ResponsePool &pool_;
    Stage open_; ///< its room and that of the next are reused, as copies are handed out
    Response response_;
};

} // namespace quarl
