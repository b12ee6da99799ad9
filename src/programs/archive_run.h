// quarl-db: what a run does with an archive.
#pragma once

#include "archive/volume_reading.h"
#include "programs/console.h"

#include <string>
#include <vector>

namespace quarl
{

struct ArchiveWishes {
    enum class Task { merge, list, remove, prune };
    Task task = Task::merge;
    int threads = 0; ///< 0: one for each processor
    bool verbose = false;
    archive::ReadingOptions reading;
    std::string database;
    std::vector<std::string> volumes;
};

/// Returns the status. Throws DatabaseError when the database cannot be used.
int run_archive(Console *console, const ArchiveWishes &wishes);

} // namespace quarl
