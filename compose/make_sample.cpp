// Writes the sample volume: make_sample OUTPUT
#include "compose/files.h"
#include "compose/sample.h"

#include <cstdio>
#include <exception>

int main(int argc, char *argv[])
{
    if (argc != 2) {
        std::fprintf(stderr, "Usage: %s OUTPUT\n", argv[0]);
        return 1;
    }
    try {
        write_file(argv[1], sample_volume());
    } catch (const std::exception &e) {
        std::fprintf(stderr, "%s: %s\n", argv[0], e.what());
        return 1;
    }
    return 0;
}
