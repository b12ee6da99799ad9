#include "platform/allocate.h"

#include "platform/text.h"

namespace quarl
{

void out_of_memory(const Where &where, std::size_t count, std::string_view what)
{
    const std::string_view file = where.file;
    errno = ENOMEM;
    elog_die<MessageKind::out_of_memory,
             "Out of memory in %s at line %d of '%s'\n\tCan't malloc %lu bytes for %s\n">(
        1, where.function, where.line, base_name(file), count, what);
}

} // namespace quarl
