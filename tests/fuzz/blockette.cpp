// One control blockette, parsed, listed and counted; the first byte of the input picks the type.
#include "count.h"
#include "fuzz/harness.h"
#include "pbrief.h"
#include "seed/seed.h"

#include <array>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
#define TYPE(number, name) number,
    constexpr std::array Types = {SEED_BLOCKETTES(TYPE) 60, 999, -7};
#undef TYPE
    if (size == 0)
        return 0;
    const int type = Types[*data % Types.size()];
    const std::vector<char> exact(data + 1, data + size); // a byte beyond the text is reported
    run_one([&] {
        const Record record = parse_blk({exact.data(), exact.size()}, type);
        if (record)
            pbrief_blk(Stdout, record.get(), type);
        init_count();
        count_blk(record.get(), type);
        summary(0, static_cast<std::int64_t>(size));
    });
    return 0;
}
