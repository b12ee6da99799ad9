// Any bytes as a compressed file; the first one says how much is asked for in each call.
#include "fuzz/harness.h"
#include "platform/gz_cat.h"

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    constexpr std::size_t Enough = 4U << 20; // bytes: a few of them can stand for gigabytes
    if (size == 0)
        return 0;
    run_one([&](Console * /*console*/) {
        const MemoryFile file(as_text(data + 1, size - 1));
        const auto stream = gz_cat(file.path().c_str());
        if (!stream)
            __builtin_trap();
        std::vector<char> block(*data < 128 ? 65536 : 1 + *data % 64);
        std::size_t total = 0;
        ssize_t count = 1;
        while (count > 0 && total < Enough) {
            count = stream->read(block.data(), block.size());
            if (count > std::ssize(block))
                __builtin_trap();
            total += count > 0 ? static_cast<std::size_t>(count) : 1;
        }
        if (count < 0 && (stream->read(block.data(), block.size()) != 0))
            __builtin_trap(); // a fault is told once
        (void)elog_take_reason();
    });
    return 0;
}
