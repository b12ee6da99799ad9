#include "html/envelope.h"

#include "platform/base64.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <quarl/records.h>
#include <quarl/time.h>
#include <type_traits>
#include <variant>

namespace quarl::html
{

namespace
{

constexpr std::size_t Most_Bytes = 44'000; ///< of a channel, before base64 makes them a third more
constexpr std::size_t Most_Steps = 2'000'000; ///< of all channels
constexpr std::size_t Fewest_Steps = 64;      ///< that a channel may have
constexpr int Coarsest = 60;                  // beyond any place
constexpr double Farthest = 4e15;             ///< samples from the first record

/// Least and largest of the finite values; nothing when there is none.
template <class T> std::optional<std::pair<double, double>> range_of(std::span<const T> values)
{
    if constexpr (std::is_integral_v<T>) {
        const auto [least, most] = std::minmax_element(values.begin(), values.end());
        return std::pair<double, double>(*least, *most);
    } else {
        std::optional<std::pair<double, double>> range;
        for (const double value : values) {
            if (!std::isfinite(value))
                continue;
            if (!range)
                range.emplace(value, value);
            range->first = std::min(range->first, value);
            range->second = std::max(range->second, value);
        }
        return range;
    }
}

void put_number(std::string *to, std::uint64_t number)
{
    constexpr std::uint64_t More = 0x80;
    for (; number >= More; number >>= 7)
        *to += static_cast<char>(number | More);
    *to += static_cast<char>(number);
}

/// A difference with its sign in bit 0.
std::uint64_t signed_number(std::int64_t difference)
{
    return difference < 0 ? static_cast<std::uint64_t>(-(difference + 1)) << 1 | 1
                          : static_cast<std::uint64_t>(difference) << 1;
}

/// What one number of a packed envelope stands for.
double scale_of(const Envelope &envelope)
{
    constexpr double Largest = 65535;
    if (envelope.has_whole_numbers() && envelope.most() - envelope.least() <= Largest)
        return 1.0;
    const double scale = envelope.most() / Largest - envelope.least() / Largest;
    return scale > 0.0 ? scale : 1.0;
}

std::string packed_steps(const Envelope &envelope, bool paired, double scale)
{
    const auto number = [&](double value) {
        return static_cast<std::int64_t>(std::llround(value / scale - envelope.least() / scale));
    };
    const auto &steps = envelope.steps();
    std::string all;
    std::int64_t next = steps.empty() ? 0 : steps.front().at;
    std::int64_t before = 0;
    for (std::size_t i = 0; i < steps.size();) {
        std::size_t end = i + 1;
        while (end < steps.size() && steps[end].at == steps[end - 1].at + 1)
            ++end;
        put_number(&all, static_cast<std::uint64_t>(steps[i].at - next));
        put_number(&all, end - i);
        next = steps[end - 1].at + 1;
        for (; i < end; ++i) {
            const std::int64_t least = number(steps[i].least);
            put_number(&all, signed_number(least - before));
            before = least;
            if (paired)
                put_number(&all, static_cast<std::uint64_t>(number(steps[i].most) - least));
        }
    }
    return all;
}

} // namespace

void Envelope::put(const Step &step)
{
    if (!steps_.empty() && steps_.back().at == step.at) {
        steps_.back().least = std::min(steps_.back().least, step.least);
        steps_.back().most = std::max(steps_.back().most, step.most);
        return;
    }
    in_order_ &= steps_.empty() || steps_.back().at < step.at;
    steps_.push_back(step);
}

/// Makes one of steps at the same place.
void Envelope::shorten()
{
    std::size_t last = 0;
    for (std::size_t i = 1; i < steps_.size(); ++i) {
        if (steps_[i].at != steps_[last].at) {
            steps_[++last] = steps_[i];
            continue;
        }
        steps_[last].least = std::min(steps_[last].least, steps_[i].least);
        steps_[last].most = std::max(steps_[last].most, steps_[i].most);
    }
    steps_.resize(std::min(steps_.size(), last + 1));
}

void Envelope::put_in_order()
{
    if (!in_order_)
        std::sort(steps_.begin(), steps_.end(),
                  [](const Step &a, const Step &b) { return a.at < b.at; });
    in_order_ = true;
    shorten();
}

void Envelope::reduce(std::size_t most)
{
    put_in_order();
    while (steps_.size() > most && level_ < Coarsest) {
        ++level_;
        for (Step &step : steps_)
            step.at >>= 1;
        shorten();
    }
}

template <class T> void Envelope::add_steps(std::span<const T> values, std::int64_t at)
{
    for (std::size_t i = 0; i < values.size();) {
        const std::int64_t place = at + static_cast<std::int64_t>(i);
        const std::int64_t step = place >> level_;
        const auto left = static_cast<std::uint64_t>(((step + 1) << level_) - place);
        const std::size_t count = std::min<std::uint64_t>(values.size() - i, left);
        if (const auto range = range_of(values.subspan(i, count)))
            put({step, range->first, range->second});
        i += count;
    }
}

template <class T>
void Envelope::count_clipped(std::span<const T> values, double extreme, std::int64_t *clipped) const
{
    constexpr std::int64_t Few = 10;
    std::int64_t run = 0;
    for (const double value : values) {
        run = value == extreme ? run + 1 : 0;
        if (run > Few)
            *clipped += run == Few + 1 ? run : 1;
    }
}

template <class T> void Envelope::add_figures(std::span<const T> values)
{
    const auto range = range_of(values);
    if (!range)
        return;
    if (count_ == 0) {
        first_ = range->first;
        least_ = range->first;
        most_ = range->second;
    }
    for (const double value : values) {
        if (!std::isfinite(value))
            continue;
        ++count_;
        sum_ += value - first_;
        squares_ += (value - first_) * (value - first_);
    }
    if (range->first < least_)
        at_least_ = 0;
    if (range->second > most_)
        at_most_ = 0;
    least_ = std::min(least_, range->first);
    most_ = std::max(most_, range->second);
    if (range->first == least_)
        count_clipped(values, least_, &at_least_);
    if (range->second == most_)
        count_clipped(values, most_, &at_most_);
}

template <class T> void Envelope::add_values(std::span<const T> values, double start, double rate)
{
    const double place = (start - origin_) * rate_;
    if (values.empty() || !(std::abs(place) < Farthest))
        return;
    whole_ &= std::is_integral_v<T>;
    add_figures(values);
    const double ratio = rate_ / rate;
    if (std::abs(ratio - 1.0) * static_cast<double>(values.size()) < 0.5)
        return add_steps(values, std::llround(place));
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double at = place + static_cast<double>(i) * ratio;
        if (std::abs(at) < Farthest)
            add_steps(values.subspan(i, 1), std::llround(at));
    }
}

void Envelope::add(const Samples &samples, double start, double rate)
{
    if (rate_ == 0.0) {
        origin_ = start;
        rate_ = rate;
    }
    std::visit(
        [&](const auto &values) {
            if constexpr (requires { values.first(0); }) // numbers
                add_values(values, start, rate);
        },
        samples.values);
}

double Envelope::mean() const
{
    return count_ > 0 ? first_ + sum_ / static_cast<double>(count_) : 0.0;
}

double Envelope::rms() const
{
    if (count_ == 0)
        return 0.0;
    const auto count = static_cast<double>(count_);
    const double square = squares_ / count + 2 * first_ * (sum_ / count) + first_ * first_;
    return std::sqrt(std::max(square, 0.0));
}

double Envelope::clipped() const
{
    if (count_ == 0 || least_ == most_)
        return 0.0;
    return static_cast<double>(at_least_ + at_most_) / static_cast<double>(count_);
}

void Envelopes::add(const Item &item)
{
    const auto *header = item.get<blk_dh_t>();
    if (!header || header->nsamps == 0)
        return;
    const DataRefinement more = item.data_blockettes().refinement();
    const double rate = more.sample_rate > 0.0 ? more.sample_rate : header->samp_rate;
    const auto times = data_times(*header, more);
    if (!times || !(rate > 0.0) || !std::isfinite(rate))
        return;
    const Samples samples = decode(item, buffer_);
    if (samples.size() == 0 || samples.get<Text>())
        return;
    const ChannelCode code = code_of(*header);
    if (!last_ || last_->first != code)
        last_ = &*channels_.try_emplace(code).first;
    Envelope &envelope = last_->second;
    if (envelope.count() == 0 && channels_.size() > Most_Steps / Fewest_Steps)
        return;
    const std::size_t before = envelope.steps().size();
    envelope.add(samples, seconds(times->start), rate);
    if (envelope.steps().size() > 2 * most_)
        envelope.reduce(most_);
    steps_ += envelope.steps().size() - before;
    while (steps_ > Most_Steps && most_ > Fewest_Steps) {
        most_ /= 2;
        steps_ = 0;
        for (auto &[each, some] : channels_) {
            some.reduce(most_);
            steps_ += some.steps().size();
        }
    }
}

const Envelope *Envelopes::find(const ChannelCode &code) const
{
    const auto found = channels_.find(code);
    return found == channels_.end() || found->second.count() == 0 ? nullptr : &found->second;
}

PackedEnvelope packed(const Envelope &envelope)
{
    Envelope shown = envelope;
    shown.put_in_order();
    PackedEnvelope all;
    all.scale = scale_of(shown);
    std::string bytes;
    for (std::size_t most = shown.steps().size();; most /= 2) {
        shown.reduce(std::max<std::size_t>(most, 1));
        const auto is_one = [](const Envelope::Step &step) { return step.least == step.most; };
        all.paired = !std::all_of(shown.steps().begin(), shown.steps().end(), is_one);
        bytes = packed_steps(shown, all.paired, all.scale);
        if (bytes.size() <= Most_Bytes || most <= 2)
            break;
    }
    const double step = std::ldexp(1.0 / shown.rate(), shown.level());
    const std::int64_t first = shown.steps().empty() ? 0 : shown.steps().front().at;
    all.start = shown.origin() + static_cast<double>(first) * step;
    all.step = step;
    all.samples = std::int64_t{1} << std::min(shown.level(), 62);
    all.values.resize((bytes.size() + 2) / 3 * 4);
    (void)put_base64(all.values.data(), bytes);
    return all;
}

} // namespace quarl::html
