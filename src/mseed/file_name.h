// Names of the files that records go to.
#pragma once

#include <quarl/contents.h>
#include <quarl/time.h>
#include <string>
#include <string_view>

namespace quarl::mseed
{

/// What a name can be made of.
struct NameParts {
    const ChannelCode &channel;
    char quality = 'D';
    Time start{};
};

/// Whether codes can stand in names of files: letters, digits, "-" and "_" only.
bool has_plain_codes(const ChannelCode &code);

/// "YEAR/NET/STA/CHAN.D/NET.STA.LOC.CHAN.D.YEAR.DAY"; "" when a code that a folder is named by is
/// empty, or one is not plain.
std::string archive_name(const NameParts &parts);

/// A pattern of names: "%n" stands for the network, "%s" the station, "%l" the location, "%c" the
/// channel, "%q" the quality indicator, "%Y", "%m", "%d", "%j", "%H", "%M" and "%S" for parts of
/// the start time, of which "%j" is the day of the year, and "%%" for a "%".
class NamePattern
{
public:
    /// Returns what is wrong with the pattern, or "".
    std::string set(std::string_view pattern);
    /// "" when a code is not plain, or when a folder or file would have no name.
    [[nodiscard]] std::string name(const NameParts &parts) const;
    /// The folder in which all these files are, or below it.
    [[nodiscard]] std::string folder() const;

private:
    std::string pattern_;
};

} // namespace quarl::mseed
