// The volumes of a run of quarl-stationxml, as far as they were read.
#pragma once

#include "programs/console.h"

#include <cstdint>
#include <deque>
#include <quarl/inventory.h>
#include <quarl/stationxml.h>
#include <string>
#include <vector>

namespace quarl
{

class CarriedVolumes
{
public:
    /// With `validate` the rules about headers are asked, too.
    CarriedVolumes(Console *console, bool validate) : console_(console), validate_(validate) {}

    /// Reads the volume at `path`, input file by input file.
    void read(const std::string &path);

    [[nodiscard]] const std::vector<NamedInventory> &inventories() const { return inventories_; }
    /// A volume could not be read to its end.
    [[nodiscard]] bool is_unread() const { return unread_; }
    /// A volume has no station headers, or the reading has told that some are damaged or cut.
    [[nodiscard]] bool lacks_headers() const { return lacks_headers_; }
    /// Says how many findings there were: "3 errors, 0 warnings, 1 note in 2 volumes".
    void say_summary() const;

private:
    void read_validated(const std::string &path);
    void read_plain(const std::string &path);
    void look_at(const Item &item);
    void keep(const std::string &path, Inventory inventory);

    Console *console_;
    bool validate_;
    std::deque<Inventory> held_;
    std::vector<NamedInventory> inventories_;
    bool unread_ = false;
    bool lacks_headers_ = false;
    bool has_data_ = false; ///< the input file: headers are over
    std::int64_t volumes_ = 0;
    std::int64_t errors_ = 0;
    std::int64_t warnings_ = 0;
    std::int64_t notes_ = 0;
};

} // namespace quarl
