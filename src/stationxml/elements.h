// The elements of a document for one station and one channel epoch.
#pragma once

#include "stationxml/response_element.h"

#include <string>

namespace quarl
{

/// Tells why an epoch cannot stand in a document; false when it can.
bool is_unfit(const CarriedStation &station, const CarryOptions &options);
bool is_unfit(const CarriedChannel &channel, const CarryOptions &options);

/// Opens the element of a station and writes what stands in front of its channels.
void begin_station(const ElementWriting &writing, const CarriedStation &station);
void write_channel(const ElementWriting &writing, const CarriedChannel &channel);

/// What is written of an epoch, but for its comments: the same for epochs that say the same.
std::string text_of(const CarriedStation &station, const CarryOptions &options);
std::string text_of(const CarriedChannel &channel, const CarryOptions &options);
/// The text of a comment, with its level.
std::string text_of(const CarriedComment &comment);

/// A time in seconds since 1970, to 0.0001 s; "" for open ends.
std::string xml_time(double seconds);

} // namespace quarl
