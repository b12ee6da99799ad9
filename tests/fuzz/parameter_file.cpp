// Any bytes as a parameter file, and a name looked up in it.
#include "fuzz/harness.h"
#include "platform/pf.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    run_one([&](Console * /*console*/) {
        Pf parameters;
        if (pfparse(as_text(data, size), "quarl.pf", &parameters) != 0)
            return;
        if (const auto *aliases = pfget_arr(parameters, "data_type_aliases"))
            (void)getarr(*aliases, "STEIM2");
    });
    return 0;
}
