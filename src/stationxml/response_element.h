// The element for a response.
#pragma once

#include "platform/xml_text.h"
#include "stationxml/carried_parts.h"

namespace quarl
{

/// What all elements are written with.
struct ElementWriting {
    xml::Writer &to;
    const CarryOptions &options;
};

/// Writes the response of a channel epoch: always an element, down to where the level says.
void write_response(const ElementWriting &writing, const CarriedChannel &channel,
                    const Teller &tell);

} // namespace quarl
