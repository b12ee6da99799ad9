// Containers: lists with empty slots, arrays by text key, sets of things that hold for a time span.
#pragma once

#include <array>
#include <cmath>
#include <deque>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quarl
{

/// A list indexed from 0 that grows as needed; a slot may be empty.
template <class T> using Tbl = std::vector<std::optional<T>>;

/// An empty list with room for `n` slots.
template <class T> Tbl<T> newtbl(std::size_t n)
{
    Tbl<T> tbl;
    tbl.reserve(n);
    return tbl;
}

/// Stores `value` at `index`, replacing what was there. A negative index is ignored.
template <class T> void settbl(Tbl<T> &tbl, int index, T value)
{
    if (index < 0)
        return;
    const auto slot = static_cast<std::size_t>(index);
    if (slot >= tbl.size())
        tbl.resize(slot + 1);
    tbl[slot] = std::move(value);
}

/// The value at `index`, or null for an empty slot or one outside the list.
template <class T> const T *gettbl(const Tbl<T> &tbl, int index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= tbl.size() || !tbl[index])
        return nullptr;
    return &*tbl[index];
}

/// Values by text key.
template <class T> using Arr = std::map<std::string, T, std::less<>>;

/// Stores `value` under `key`, replacing what was there.
template <class T> void setarr(Arr<T> &arr, std::string_view key, T value)
{
    arr.insert_or_assign(std::string(key), std::move(value));
}

/// The value under `key`, or null.
template <class T> const T *getarr(const Arr<T> &arr, std::string_view key)
{
    const auto found = arr.find(key);
    return found == arr.end() ? nullptr : &found->second;
}

/// Set of elements that each hold for a half-open time span [`start`, `end`) under a code (a span
/// that is empty or has no order holds at its start alone). An element whose start lies in the span
/// of one already there is refused, so of several elements that hold at a time the one with the
/// latest start was the earliest added there, and a step function from time to element answers
/// every look-up: the cost of adding and finding is the logarithm of the number of spans of that
/// one code, whatever order they come in. A start without order (NaN) counts as "always".
///
/// Element has `start`, `end` (epoch seconds) and a `Code code() const`; Code is hashable.
template <class Element, class Code, class Hash = std::hash<Code>> class Stbl
{
public:
    /// Adds `element`; false when it is refused.
    bool add(const Element &element)
    {
        Steps &steps = by_code_[element.code()];
        const bool always = std::isnan(element.start);
        const double start = always ? -Infinity : element.start;
        const double end = always ? Infinity : end_of(element);
        if (always ? steps.owner.size() > 1 : find_in(steps, start) != nullptr)
            return false;
        elements_.push_back(element);
        answers_[place_of(element.code())] = Answer();
        cover(steps, start, end, &elements_.back());
        return true;
    }

    [[nodiscard]] bool is_empty() const { return elements_.empty(); }

    /// The element under `code` that holds at `time`, or null. Lives as long as the set. A set that
    /// is not const remembers the step for the next time.
    [[nodiscard]] const Element *find(const Code &code, double time)
    {
        Answer &answer = answers_[place_of(code)];
        if (answer.code == code && time >= answer.from && time < answer.until)
            return answer.element;
        const auto steps = by_code_.find(code);
        if (steps == by_code_.end())
            return nullptr;
        const auto next = steps->second.owner.upper_bound(time);
        answer = {code, std::prev(next)->first,
                  next == steps->second.owner.end() ? Infinity : next->first,
                  std::prev(next)->second};
        return answer.element;
    }
    [[nodiscard]] const Element *find(const Code &code, double time) const
    {
        const auto steps = by_code_.find(code);
        return steps == by_code_.end() ? nullptr : find_in(steps->second, time);
    }

private:
    static constexpr double Infinity = std::numeric_limits<double>::infinity();

    /// From each time on: the element that holds, or null. `gaps` are the times where null begins.
    struct Steps {
        std::map<double, const Element *> owner{{-Infinity, nullptr}};
        std::set<double> gaps{-Infinity};
    };

    static double end_of(const Element &element)
    {
        return element.end > element.start ? element.end : std::nextafter(element.start, Infinity);
    }

    static const Element *find_in(const Steps &steps, double time)
    {
        return std::prev(steps.owner.upper_bound(time))->second;
    }

    /// Gives every gap between `start` and `end` to `element`. Each gap is filled once, so adding n
    /// elements costs n logarithms in all.
    static void cover(Steps &steps, double start, double end, const Element *element)
    {
        const bool gap_goes_on = find_in(steps, end) == nullptr;
        steps.owner[start] = element;
        auto gap = steps.gaps.lower_bound(start);
        while (gap != steps.gaps.end() && *gap < end) {
            steps.owner[*gap] = element;
            gap = steps.gaps.erase(gap);
        }
        if (gap_goes_on) {
            steps.owner[end] = nullptr;
            steps.gaps.insert(end);
        }
    }

    /// A step found before. Data records come in runs, or in turns, of a few channels: look-ups
    /// answered from here take a tenth of the time.
    struct Answer {
        Code code{};
        double from = 0.0;
        double until = 0.0;
        const Element *element = nullptr;
    };

    /// Codes that share a place take it from each other, which costs a look-up and no more: a hash
    /// may offer a quicker way to it that can be foreseen.
    static std::size_t place_of(const Code &code)
    {
        if constexpr (requires { Hash::place(code); })
            return Hash::place(code) % std::tuple_size_v<decltype(answers_)>;
        else
            return Hash()(code) % std::tuple_size_v<decltype(answers_)>;
    }

    std::deque<Element> elements_; ///< addresses stay
    std::array<Answer, 1024> answers_{};
    std::unordered_map<Code, Steps, Hash> by_code_;
};

} // namespace quarl
