// The flags and tables of one run.
#pragma once

#include "platform/containers.h"
#include "platform/current.h"
#include "platform/db.h"
#include "platform/pf.h"

#include <string>

namespace quarl
{

/// Set before the reading starts, or by it.
struct Run {
    int Verbose_Flag = 1;   ///< 1 (not 0) plus the number of -v; above 1 record numbers are shown
    int Simplify = 0;       ///< number of -S; the short channel line
    int File_No = 0;        ///< tape file to position to
    int File_Flag = 0;      ///< read exactly one input file
    int Tapefile = 0;       ///< number of the input file being read, from 0
    Dbptr Db = dbinvalid(); ///< the database of -d, or invalid
    Pf Parameters;          ///< the parameter file

    Tbl<std::string> Tbl_031 = newtbl<std::string>(10); ///< comments by comment code key
    Tbl<std::string> Tbl_032 = newtbl<std::string>(10); ///< authors by source code
    Tbl<std::string> Tbl_033 = newtbl<std::string>(10); ///< generic abbreviations by code
    Tbl<std::string> Tbl_034 = newtbl<std::string>(10); ///< unit names by code
    Tbl<std::string> Tbl_responses;                     ///< response names by lookup key
};

inline Run &run() { return Current<Run>::get(); }

} // namespace quarl
