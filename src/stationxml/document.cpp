// The document as a whole.
#include "platform/text.h"
#include "stationxml/carried.h"
#include "stationxml/elements.h"

#include <array>
#include <utility>

namespace quarl
{

namespace
{

/// Who made the first volume that says so.
std::string source_of(std::span<const NamedInventory> volumes, const CarryOptions &options)
{
    if (!options.source.empty())
        return options.source;
    for (const NamedInventory &volume : volumes)
        if (const auto source = trimmed(volume.inventory->volume().organisation); !source.empty())
            return std::string(source);
    return {};
}

void write_head(xml::Writer &to, std::span<const NamedInventory> volumes,
                const CarryOptions &options)
{
    to.declaration();
    to.open("FDSNStationXML");
    to.attribute("xmlns", "http://www.fdsn.org/xml/station/1");
    to.attribute("schemaVersion", "1.2");
    to.element("Source", source_of(volumes, options));
    if (!options.sender.empty())
        to.element("Sender", options.sender);
    if (!options.module_name.empty())
        to.element("Module", options.module_name);
    to.element("Created", xml_time(options.created));
    if (!options.keep_all)
        return;
    for (const NamedInventory &volume : volumes) {
        const VolumeIdentifier &identifier = volume.inventory->volume();
        to.comment("volume " + volume.name + ", label '" + identifier.label + "', version " +
                   std::to_string(identifier.version) + ", records of " +
                   std::to_string(identifier.record_length) + " bytes");
    }
}

void write_network(const ElementWriting &writing, const CarriedNetwork &network)
{
    xml::Writer &to = writing.to;
    to.open("Network");
    to.attribute("code", network.code);
    if (!network.description.empty())
        to.element("Description", network.description);
    const StationXmlLevel level = writing.options.level;
    for (const CarriedStation &station : network.stations) {
        if (level == StationXmlLevel::network)
            break;
        begin_station(writing, station);
        if (level != StationXmlLevel::station)
            for (const CarriedChannel &channel : station.channels)
                write_channel(writing, channel);
        to.close();
    }
    to.close();
}

} // namespace

struct StationXml::Work {
    std::span<const NamedInventory> volumes;
    CarryOptions options;
    std::vector<CarriedNetwork> networks = carried(volumes, options);
};

StationXml::StationXml(std::span<const NamedInventory> volumes, CarryOptions options)
    : work_(std::make_unique<Work>(Work{volumes, std::move(options)}))
{
}
StationXml::StationXml(StationXml &&) noexcept = default;
StationXml &StationXml::operator=(StationXml &&) noexcept = default;
StationXml::~StationXml() = default;

bool StationXml::is_empty() const { return work_->networks.empty(); }

void StationXml::write(std::ostream &to) const
{
    xml::Writer writer([&](std::string_view piece) {
        to.write(piece.data(), static_cast<std::streamsize>(piece.size()));
    });
    write_head(writer, work_->volumes, work_->options);
    for (const CarriedNetwork &network : work_->networks)
        write_network({writer, work_->options}, network);
    writer.close();
    writer.finish();
}

void StationXml::for_each_channel(
    const std::function<void(std::size_t volume, const ChannelEpoch &)> &take) const
{
    for (const CarriedNetwork &network : work_->networks)
        for (const CarriedStation &station : network.stations)
            for (const CarriedChannel &channel : station.channels)
                take(channel.volume, *channel.epoch);
}

bool write_stationxml(std::ostream &to, const Inventory &inventory, CarryOptions options)
{
    const std::array<NamedInventory, 1> volumes = {{{{}, &inventory}}};
    const StationXml document(volumes, std::move(options));
    if (document.is_empty())
        return false;
    document.write(to);
    return true;
}

} // namespace quarl
