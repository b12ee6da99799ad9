#include "json/samples.h"

#include <charconv>

namespace quarl::json
{

namespace
{

constexpr std::size_t Few = 1024; ///< room for what is not a sample

char *put_sample(char *to, std::int32_t value) { return put_number(to, value); }
char *put_sample(char *to, double value) { return put_number(to, value); }
/// The shortest text that reads back as the same float.
char *put_sample(char *to, float value)
{
    constexpr float Few_Digits = 10000;
    if (std::fabs(value) < Few_Digits && (value != 0 || !std::signbit(value)))
        if (const int whole = static_cast<int>(value); static_cast<float>(whole) == value)
            return put_number(to, whole);
    return std::isfinite(value) ? std::to_chars(to, to + Number_Room, value).ptr
                                : put_text(to, "null");
}

template <class T> char *put_values(const Pen &pen, char *to, std::span<const T> values)
{
    constexpr std::size_t At_Once = 64;
    to = put_text(pen.room(to, Few), ",\"values\":[");
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i % At_Once == 0)
            to = pen.room(to, At_Once * (Number_Room + 1));
        if (i > 0)
            *to++ = ',';
        to = put_sample(to, values[i]);
    }
    to = pen.room(to, Few);
    *to++ = ']';
    return to;
}

char *put_values(const Pen &pen, char *to, Text text)
{
    to = put_text(pen.room(to, Few), ",\"text\":");
    return put_long_text(pen, to, text);
}

char *put_values(const Pen &pen, char *to, std::monostate /*nothing*/)
{
    return put_text(pen.room(to, Few), ",\"values\":null");
}

} // namespace

char *put_samples(Pen &pen, char *to, const Item &item, SampleBuffer *buffer)
{
    const Samples samples = decode(item, *buffer);
    to =
        std::visit([&](const auto &values) { return put_values(pen, to, values); }, samples.values);
    std::string error;
    for (const SampleProblem &problem : samples.problems)
        error += (error.empty() ? "" : "; ") + problem.text;
    if (error.empty())
        return to;
    to = put_text(pen.room(to, Few), ",\"values_error\":");
    return put_long_text(pen, to, error);
}

} // namespace quarl::json
