#include "programs/finding_line.h"

#include "platform/escaped.h"

namespace quarl
{

std::string finding_line(const std::string &path, std::int64_t record, std::string_view severity,
                         std::string_view subject, std::string_view text, std::string_view name)
{
    return escaped(path) + ":" + std::to_string(record) + ": " + std::string(severity) + ": " +
           escaped_in_ascii(subject) + ": " + escaped_in_ascii(text) + " [" + std::string(name) +
           "]\n";
}

} // namespace quarl
