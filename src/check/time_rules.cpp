// Times that stand in control headers.
#include "check/rule.h"

#include "blockette/blockette.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <type_traits>

namespace quarl
{

namespace
{

bool has_times(int type)
{
    static constexpr std::array Types = {10, 12, 50, 51, 52, 59, 70, 71, 72, 73, 74};
    return std::find(Types.begin(), Types.end(), type) != Types.end();
}

/// Blank, or a time of the calendar.
bool is_time(std::string_view text)
{
    text = trimmed(text);
    if (text.empty())
        return true;
    const auto parts = read_time_parts(text);
    return parts && (parts->second < 60 || may_have_leap_second(parts->year, parts->day_of_year,
                                                                parts->hour, parts->minute));
}

/// Calls f(name, text) for each time of a record, in the order of the standard.
template <class T, class F> void for_each_time(const T &record, F &&f)
{
    const auto is_of_time = [](const About &about) {
        return about.meaning == Meaning::time || about.meaning == Meaning::end_time;
    };
    const auto hand_out = [&](std::string_view name, const auto &value) {
        if constexpr (std::is_convertible_v<decltype(value), std::string_view>)
            f(name, std::string_view(value));
    };
    for_each_field<T>([&](const auto &field) {
        if constexpr (!std::decay_t<decltype(field)>::Is_List) {
            if (is_of_time(field))
                hand_out(field.name, field.value(record));
        } else {
            const auto look_at = [&](const auto &column) {
                for (std::size_t i = 0; is_of_time(column) && i < field.size(record); ++i)
                    hand_out(column.name, column.value(record, i));
            };
            fields::for_each(field.columns, look_at);
        }
    });
}

/// The first time of a record that is none, in words; empty: there is none.
std::string impossible_time(const Item &item)
{
    std::string found;
    visit_any(item.record(), item.type(), [&](const auto &record) {
        if constexpr (!std::is_same_v<std::decay_t<decltype(record)>, blk_dh_t>)
            for_each_time(record, [&](std::string_view name, std::string_view text) {
                if (found.empty() && !is_time(text)) {
                    found = std::string(name) + " is " + quoted(text) +
                            ", which is no time of the calendar";
                    std::replace(found.begin(), found.end(), '_', ' ');
                }
            });
    });
    return found;
}

/// A span that ends before it starts, in words; empty: there is none.
std::string backward_span(const Item &item)
{
    const auto tell = [](std::string_view begin, std::string_view end) -> std::string {
        const double start = start_seconds(trimmed(begin));
        const double stop = end_seconds(trimmed(end));
        if (!(stop < start))
            return {};
        return "its end, " + std::string(trimmed(end)) + ", is before its start, " +
               std::string(trimmed(begin));
    };
    if (const auto *volume = item.get<blk_010_t>())
        return tell(volume->beg_time, volume->end_time);
    if (const auto *span = item.get<blk_070_t>())
        return tell(span->beg_time, span->end_time);
    if (const auto *spans = item.get<blk_012_t>())
        for (int i = 0; i < spans->num_span_held; ++i)
            if (std::string text = tell(spans->beg_span[i], spans->end_span[i]); !text.empty())
                return text;
    return {};
}

void header_time(const Context &context, const Item &item, const Report &report)
{
    if (!item.record() || !has_times(item.type()) || item.bad())
        return;
    std::string text = impossible_time(item);
    if (text.empty())
        text = backward_span(item);
    if (!text.empty())
        report(item.place().record, std::to_string(item.type()), [&] {
            return Told{
                about::Blockette{item.type(), context.number_in_record, context.describes()}, text};
        });
}

constexpr std::array Rules = {
    Rule{"header-time", Severity::error,
         "times in control headers are of the calendar, and the spans of 010, 012 and 070 do not "
         "end before they start",
         "blockettes", Look<Item>(header_time)},
};

} // namespace

bool may_have_leap_second(int year, int day_of_year, int hour, int minute)
{
    constexpr int End_Of_June = 181;
    constexpr int End_Of_December = 365;
    const int leap_day = std::chrono::year(year).is_leap() ? 1 : 0;
    return hour == 23 && minute == 59 &&
           (day_of_year == End_Of_June + leap_day || day_of_year == End_Of_December + leap_day);
}

std::span<const Rule> time_rules() { return Rules; }

} // namespace quarl
