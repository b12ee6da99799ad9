// SQLite files, read without a trace.
#pragma once

#include "platform/db_session.h"

#include <string>

namespace quarl
{

/// Opens the SQLite file of this path; null with the reason left for elog (errno or
/// elog_set_reason). What is committed is what is read; nothing is written to the file, nor beside
/// it. A file whose state cannot be told without writing is refused.
Session open_sqlite(const std::string &path);

} // namespace quarl
