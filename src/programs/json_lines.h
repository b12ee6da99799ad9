// The run loop of quarl-json.
#pragma once

#include "inventory/selection.h"
#include "programs/console.h"
#include "json/style.h"

#include <bitset>
#include <quarl/volume.h>
#include <string>
#include <string_view>

namespace quarl
{

/// Which items are printed.
class Selection
{
public:
    /// Of types as "050,052,data,file"; false when there is something else.
    [[nodiscard]] bool read(std::string_view types);
    /// The end of an input file is always printed: who reads has to know of a cut input.
    [[nodiscard]] bool has(const Item &item) const;

private:
    bool all_ = true;
    std::bitset<1000> blockettes_; ///< by type
    bool data_ = false;
};

/// What is printed, and how.
struct LinesWanted {
    Selection selection;
    ChannelSelection channels; ///< of data records
    bool samples = false;      ///< those of data records, too
    json::Style style;         ///< the volume's name is the reader's
};

/// Reads the volume at `path` ("-": standard input) to its end and prints a line for each item that
/// is wanted, with the messages of a listing. What keeps it from being opened or read on is a
/// message, too, and an object of an input file that failed; an Error of the output is thrown.
/// Returns the exit status: 1 when an input file was not read to its end.
int print_lines(Console *console, VolumeOptions options, const std::string &path,
                LinesWanted wanted);

} // namespace quarl
