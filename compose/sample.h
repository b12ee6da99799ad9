// The volume of the examples folder.
#pragma once

#include <string>

/// A full volume of two invented stations: dictionaries, channels with responses, one event and
/// data records. The same bytes on every call.
std::string sample_volume();
