// A volume checked by all rules, from the first byte to the findings.
#include "programs/check.h"
#include "check/checker.h"
#include "fuzz/harness.h"
#include "platform/inflate.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    CheckRun check;
    check.chosen.assign(all_rules().size(), true);
    check.json = (*data & 1) != 0;
    const std::string_view bytes = as_text(data + 1, size - 1);
    if (new_inflater(-1, bytes))
        return 0; // the target "compressed" reads these, and not all that they may stand for
    const MemoryFile volume(bytes);
    run_one([&](Console *console) { check_volume(console, &check, volume.path()); });
    return 0;
}
