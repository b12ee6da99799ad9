// A volume from the first byte to the end of its page; the first byte of the input is the target
// whole_run's.
#include "fuzz/harness.h"
#include "platform/inflate.h"
#include "programs/make_page.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string_view bytes = as_text(data + 1, size - 1);
    if (new_inflater(-1, bytes))
        return 0; // the target "compressed" reads these
    const MemoryFile volume(bytes);
    run_one([&](Console *console) { make_page(console, volume.path(), {}); });
    return 0;
}
