#include "programs/banner.h"

#include "platform/text.h"

#include <quarl/version.h>

namespace quarl
{

void banner(Console *console)
{
    console->out().flush();
    print<"%s %s - lists what a SEED volume holds: every header blockette and data record, with "
          "statistics\n">(console->err(), base_name(console->Program_Name), version());
    console->err().flush();
}

} // namespace quarl
