#include "platform/banner.h"

#include "platform/elog.h"
#include "platform/text.h"

void banner(const char *program, const char *more)
{
    Stdout.flush();
    print<"%s %s - lists what a SEED volume holds: every header blockette and data record, with "
          "statistics\n">(Stderr, base_name(program), std::string_view(QUARL_VERSION));
    if (more)
        print<"%s\n">(Stderr, std::string_view(more));
    Stderr.flush();
}
