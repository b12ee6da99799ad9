#include "programs/banner.h"

#include "platform/text.h"

namespace quarl
{

void banner(Console *console)
{
    console->out().flush();
    print<"%s %s - lists what a SEED volume holds: every header blockette and data record, with "
          "statistics\n">(console->err(), base_name(console->Program_Name),
                          std::string_view(QUARL_VERSION));
    console->err().flush();
}

} // namespace quarl
