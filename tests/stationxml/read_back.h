// Responses as they were written, read back: from documents by libxml2, from RESP texts by lines.
#pragma once

#include <map>
#include <quarl/stages.h>
#include <string>
#include <vector>

/// A channel epoch that was read back.
struct ReadEpoch {
    std::string code;  ///< "NET.STA.LOC.CHA"
    std::string start; ///< as it stands
    quarl::Response response;
};

/// Those of a document, in its order. Ends the process when it is no document.
std::vector<ReadEpoch> read_xml(const std::string &text);

/// Those of a RESP text.
std::vector<ReadEpoch> read_resp(const std::string &text);
