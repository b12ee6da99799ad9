// The channels and the times that a program's user wants.
#pragma once

#include <optional>
#include <quarl/contents.h>
#include <quarl/item.h>
#include <quarl/time.h>
#include <string>
#include <string_view>
#include <vector>

namespace quarl
{

class ChannelSelection
{
public:
    /// Adds globs of NETWORK.STATION.LOCATION.CHANNEL, with commas between them; a channel is
    /// selected when one of all that were added stands for it. "--" is an empty location. Returns
    /// what is wrong, or "".
    std::string add(std::string_view globs);
    /// Sets a bound of the times, an ISO 8601 or a SEED time. Returns what is wrong, or "".
    std::string set_start(std::string_view time);
    std::string set_end(std::string_view time);

    [[nodiscard]] bool has_all() const { return globs_.empty() && !has_times(); }
    [[nodiscard]] bool has_times() const { return start_ || end_; }

    [[nodiscard]] bool has(const ChannelCode &code) const;
    /// Whether something that lasts from `start` until just before `end`, in seconds since 1970, is
    /// there at a time from the start on and before the end.
    [[nodiscard]] bool has(double start, double end) const;
    /// Whether a sample, or the time of a record that has none, is from the start on and before the
    /// end. A record without a time is none of any bounds.
    [[nodiscard]] bool has(const std::optional<DataTimes> &times) const;
    /// Whether a data record is selected by its codes and its samples' times.
    [[nodiscard]] bool has(const Item &item, const blk_dh_t &header) const;

private:
    std::string check_order() const;

    std::vector<std::string> globs_;
    std::optional<Time> start_;
    std::optional<Time> end_;
};

} // namespace quarl
