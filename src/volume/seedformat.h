// The database's table seedformat: data formats of channels that volumes do not describe.
#pragma once

#include <quarl/records.h>

#include <memory>
#include <string_view>

namespace quarl
{

/// The table as a run has read it.
class FormatTable
{
public:
    FormatTable();
    FormatTable(const FormatTable &) = delete;
    FormatTable &operator=(const FormatTable &) = delete;
    ~FormatTable();

    struct Table;
    std::unique_ptr<Table> table_;
};

/// The data format name of a channel at `epoch` in the table seedformat of `Db`: the row that
/// answered last while it applies, else the first row in table order that does. Empty when there is
/// none. A row applies to its station and channel from its start to its end, both included; an end
/// before 1970 means no end. The text lives for the rest of the run.
std::string_view lookup_seedformat(const char (&stn)[Station_Size],
                                   const char (&chan)[Channel_Id_Size], double epoch);

} // namespace quarl
