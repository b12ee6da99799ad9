// Writes what volumes describe as FDSN StationXML 1.2, and responses as RESP texts.
//
//     quarl::Inventory inventory;
//     for (const quarl::Item &item : volume)
//         inventory.add(item); // data records need not be
//     if (!quarl::write_stationxml(std::cout, inventory, {.created = 1542880800}))
//         std::puts("no station headers");
//
// A document is valid against the schema, whatever the volume: what is missing or out of range is
// told and left out, never made up. Texts go over as UTF-8, numbers as the shortest text that reads
// back as the same double. An inventory must be finished (at FileEnd it is). Functions throw what
// the stream throws, and for want of memory.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <quarl/inventory.h>
#include <span>
#include <string>
#include <string_view>

namespace quarl
{

/// Something that could not be carried over as it stands, or that had to be.
struct CarryRemark {
    enum class Severity {
        note,    ///< nothing is lost
        warning, ///< a part that the rest can do without
        error,   ///< an epoch, or the stages of a response
    };
    Severity severity = Severity::note;
    std::string_view name;   ///< of its kind, small letters and "-"; lives for ever
    std::size_t volume = 0;  ///< index of the volume
    std::int64_t record = 0; ///< logical record of the epoch
    std::string subject;     ///< "IU_ANMO_00_BHZ 2018,191"
    std::string text;
};

/// How far down a document goes.
enum class StationXmlLevel { network, station, channel, response };

struct CarryOptions {
    StationXmlLevel level = StationXmlLevel::response;
    /// Whether a channel epoch is wanted, in seconds since 1970; of a station, which lacks the
    /// codes of a channel, whether it is with no channel of its own. Empty: all are.
    std::function<bool(const ChannelCode &, double start, double end)> select = {};
    std::string source = {};      ///< empty: who made the first volume, as it says
    std::string sender = {};      ///< empty: left out
    std::string module_name = {}; ///< the program that writes; empty: left out
    double created = 0.0;         ///< when the document is made, seconds since 1970
    bool keep_all = false;        ///< comments of XML tell what has no place
    std::function<void(const CarryRemark &)> tell = {};
};

/// The inventory of a volume.
struct NamedInventory {
    std::string name;
    const Inventory *inventory = nullptr;
};

/// One document of several volumes: an epoch that stands in more than one of them is there once.
/// Volumes and inventories must outlive it.
class StationXml
{
public:
    explicit StationXml(std::span<const NamedInventory> volumes, CarryOptions options = {});
    StationXml(StationXml &&) noexcept;
    StationXml &operator=(StationXml &&) noexcept;
    ~StationXml();

    /// There is no station in it: it cannot be written.
    [[nodiscard]] bool is_empty() const;
    void write(std::ostream &to) const;
    /// Its channel epochs in their order, whatever the level.
    void for_each_channel(
        const std::function<void(std::size_t volume, const ChannelEpoch &)> &take) const;

private:
    struct Work;
    std::unique_ptr<Work> work_;
};

/// The document of one volume. False, and nothing written, when it describes no station.
bool write_stationxml(std::ostream &to, const Inventory &inventory, CarryOptions options = {});

/// Writes the response of an epoch as the text form that evaluators read (RESP).
void write_resp(std::ostream &to, const Inventory &inventory, const ChannelEpoch &epoch);

/// Its usual file name, "RESP.NET.STA.LOC.CHA"; characters that have a meaning in paths become "_".
std::string resp_name(const ChannelCode &code);

} // namespace quarl
