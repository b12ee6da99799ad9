// What a document of several volumes consists of, and how it is told what it lacks.
#pragma once

#include <cstddef>
#include <quarl/stationxml.h>
#include <string>
#include <vector>

namespace quarl
{

/// A comment with the volume whose dictionary has its text.
struct CarriedComment {
    const Inventory *inventory = nullptr;
    const Comment *comment = nullptr;
};

struct CarriedChannel {
    std::size_t volume = 0;
    const Inventory *inventory = nullptr;
    const ChannelEpoch *epoch = nullptr;
    std::vector<CarriedComment> comments;
};

struct CarriedStation {
    std::size_t volume = 0;
    const Inventory *inventory = nullptr;
    const StationEpoch *epoch = nullptr;
    std::vector<CarriedComment> comments;
    std::vector<CarriedChannel> channels;
};

struct CarriedNetwork {
    std::string code;
    std::string description;
    std::vector<CarriedStation> stations;
};

const ChannelCode &code_of(const CarriedStation &station);
const ChannelCode &code_of(const CarriedChannel &channel);

/// Tells of one epoch.
class Teller
{
public:
    using Severity = CarryRemark::Severity;
    Teller(const CarryOptions &options, std::size_t volume, std::int64_t record,
           std::string subject)
        : options_(options), volume_(volume), record_(record), subject_(std::move(subject))
    {
    }
    Teller(const CarryOptions &options, const CarriedStation &station);
    Teller(const CarryOptions &options, const CarriedChannel &channel);

    void operator()(Severity severity, std::string_view name, std::string text) const
    {
        if (options_.tell)
            options_.tell({severity, name, volume_, record_, subject_, std::move(text)});
    }

private:
    const CarryOptions &options_;
    std::size_t volume_;
    std::int64_t record_;
    std::string subject_;
};

} // namespace quarl
