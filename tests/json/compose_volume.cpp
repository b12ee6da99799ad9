// Writes the volume of a recipe to a file: compose_volume RECIPE VOLUME
#include "compose/files.h"
#include "support/recipe.h"

#include <cstdio>
#include <exception>

int main(int argc, char *argv[])
try {
    if (argc != 3)
        return 2;
    write_file(argv[2], parse_recipe(read_file(argv[1])).volume());
    return 0;
} catch (const std::exception &e) {
    std::fprintf(stderr, "compose_volume: %s\n", e.what());
    return 2;
}
