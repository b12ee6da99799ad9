// A volume from the first byte to the statistics; the first byte of the input picks the options.
#include "fuzz/harness.h"
#include "platform/inflate.h"
#include "programs/reading.h"
#include "programs/sdd.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const ListingWishes wishes = {.items = (*data & 8) == 0,
                                  .simplified = (*data & 2) != 0,
                                  .record_numbers = (*data & 1) != 0};
    const std::string_view bytes = as_text(data + 1, size - 1);
    if (new_inflater(-1, bytes))
        return 0; // the target "compressed" reads these, and not all that they may stand for
    const MemoryFile volume(bytes);
    run_one([&](Console *console) {
        VolumeOptions options = reading_options(console, nullptr);
        options.one_file = (*data & 4) != 0;
        sdd(console, std::move(options), volume.path(), wishes);
    });
    return 0;
}
