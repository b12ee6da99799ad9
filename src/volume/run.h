// The tables of one run.
#pragma once

#include "platform/containers.h"
#include "platform/current.h"
#include "platform/db.h"
#include "platform/pf.h"

#include <string>

namespace quarl
{

class FormatTable;
struct Count;
struct FormatsMet;

/// Set before the reading starts, or by it.
struct Run {
    int Tapefile = 0;       ///< number of the input file being read, from 0
    Dbptr Db = dbinvalid(); ///< the database, or invalid
    Pf Parameters;          ///< of the parameter files

    // What has a module of its own. One that reads makes all of it current at once.
    Databases *databases = nullptr;
    FormatsMet *formats_met = nullptr;
    FormatTable *format_table = nullptr;
    Count *count = nullptr;

    Tbl<std::string> Tbl_031 = newtbl<std::string>(10); ///< comments by comment code key
    Tbl<std::string> Tbl_032 = newtbl<std::string>(10); ///< authors by source code
    Tbl<std::string> Tbl_033 = newtbl<std::string>(10); ///< generic abbreviations by code
    Tbl<std::string> Tbl_034 = newtbl<std::string>(10); ///< unit names by code
    Tbl<std::string> Tbl_responses;                     ///< response names by lookup key
};

inline Run &run() { return Current<Run>::get(); }

} // namespace quarl
