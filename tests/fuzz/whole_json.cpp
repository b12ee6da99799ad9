// A volume from the first byte to the last line of JSON; the first byte of the input is the target
// whole_run's, whose corpus it shares.
#include "fuzz/harness.h"
#include "platform/inflate.h"
#include "programs/json_lines.h"
#include "programs/reading.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string_view bytes = as_text(data + 1, size - 1);
    if (new_inflater(-1, bytes))
        return 0; // the target "compressed" reads these
    const MemoryFile volume(bytes);
    run_one([&](Console *console) {
        LinesWanted wanted;
        wanted.samples = wanted.style.has_seconds = wanted.style.takes_utf8 = true;
        print_lines(console, reading_options(console, nullptr), volume.path(), wanted);
    });
    return 0;
}
