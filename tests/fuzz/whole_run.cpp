// A volume from the first byte to the statistics; the first byte of the input picks the options.
#include "fuzz/harness.h"
#include "platform/inflate.h"
#include "programs/sdd.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    auto state = std::make_unique<State>(VolumeOptions());
    state->run.Verbose_Flag = 1 + (*data & 1);
    state->run.Simplify = *data >> 1 & 1;
    state->run.File_Flag = *data >> 2 & 1;
    const bool listing_off = *data >> 3 & 1;
    const std::string_view bytes = as_text(data + 1, size - 1);
    if (new_inflater(-1, bytes))
        return 0; // the target "compressed" reads these, and not all that they may stand for
    const MemoryFile volume(bytes);
    run_one([&](Console *console) { sdd(console, std::move(state), volume.path(), listing_off); });
    return 0;
}
