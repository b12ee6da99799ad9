// The run loop of quarl-json.
#pragma once

#include "programs/console.h"

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
    [[nodiscard]] bool has(const Item &item) const;
    [[nodiscard]] bool has_files() const { return all_ || files_; }

private:
    bool all_ = true;
    std::bitset<1000> blockettes_; ///< by type
    bool data_ = false;
    bool files_ = false;
};

/// Reads the volume at `path` ("-": standard input) to its end and prints a line for each item that
/// `selection` has, with the messages of a listing. Returns the exit status: 1 when a read error
/// ended an input file.
int print_lines(Console *console, VolumeOptions options, const std::string &path,
                const Selection &selection);

} // namespace quarl
