// What was found in a volume, as a line that editors and CI systems read.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quarl
{

/// "PATH:RECORD: SEVERITY: SUBJECT: TEXT [NAME]" with a newline. A volume's
/// texts may hold anything: a finding stays on its line, and beside its path in ASCII.
std::string finding_line(const std::string &path, std::int64_t record, std::string_view severity,
                         std::string_view subject, std::string_view text, std::string_view name);

} // namespace quarl
