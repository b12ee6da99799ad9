// One control blockette, parsed, listed and counted; the first byte of the input picks the type.
#include "fuzz/harness.h"
#include "listing/pbrief.h"
#include "listing/summary.h"
#include "volume/count.h"
#include "volume/seed.h"

#include <array>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
#define TYPE(name) blk_##name##_t::Number,
    constexpr std::array Types = {SEED_BLOCKETTES(TYPE) 60, 999, -7};
#undef TYPE
    if (size == 0)
        return 0;
    const int type = Types[*data % Types.size()];
    const std::vector<char> exact(data + 1, data + size); // a byte beyond the text is reported
    run_one([&](Console *console) {
        const Record record = parse_blk({exact.data(), exact.size()}, type);
        if (record)
            pbrief_blk(console->out(), record.get(), type);
        init_count();
        count_blk(record.get(), type);
        summary(console->out(), 0, statistics(static_cast<std::int64_t>(size), 1));
    });
    return 0;
}
