// Parameter files: TOML tables of texts.
#pragma once

#include "platform/containers.h"

#include <string>
#include <string_view>

namespace quarl
{

/// A parameter file read into memory: its tables by name.
struct Pf {
    Arr<Arr<std::string>> tables;
};

/// Reads parameter file `name` + ".pf": the first one found in the directories of QUARL_PFPATH
/// (colon-separated) when that is set and not empty, else in the current directory, ../share/quarl
/// seen from the program, and the configured data directory. 0 on success; otherwise -1, with the
/// reason logged when a file was found.
[[nodiscard]] int pfread(std::string_view name, Pf *pf);

/// Reads the parameter file at `path`. 0 on success; otherwise -1 with the reason logged.
[[nodiscard]] int pfread_file(const std::string &path, Pf *pf);

/// Reads a parameter file from memory; `origin` names it in messages. 0 on success; -1 with the
/// reason, line and column logged when the text is not TOML, or holds anything but texts, which are
/// passed over, and tables of texts.
[[nodiscard]] int pfparse(std::string_view text, std::string_view origin, Pf *pf);

/// The table `key`, or null. It lives as long as `pf`.
const Arr<std::string> *pfget_arr(const Pf &pf, std::string_view key);

} // namespace quarl
