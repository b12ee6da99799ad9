// How a page writes names and times: "XX.QRL1.00.BHZ", "2018-07-10 12:30:00".
#pragma once

#include <quarl/contents.h>
#include <string>
#include <string_view>
#include <unordered_set>

namespace quarl::html
{

/// "XX.QRL1.00.BHZ", of a station "XX.QRL1"; a subchannel follows in brackets.
std::string page_name(const ChannelCode &code);

/// A time of a volume, which is date and time of ISO 8601 in UTC, the date alone for a midnight.
/// Empty for what is no time.
std::string page_time(std::string_view seed);
/// The same of seconds since 1970; "" for Always and Forever.
std::string page_time(double seconds);

/// Brings texts of findings into the page's notation.
class Notation
{
public:
    void know(const ChannelCode &code);
    [[nodiscard]] std::string put(std::string_view text) const;

private:
    std::unordered_set<std::string> names_; ///< as they stand in such texts
};

} // namespace quarl::html
