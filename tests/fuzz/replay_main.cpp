// Runs a fuzz target over every file of the folders that are named; for builds without libFuzzer.
#include "compose/files.h"
#include "fuzz/harness.h"

#include <cstdio>
#include <fcntl.h>
#include <filesystem>

int main(int argc, char *argv[])
{
    if (dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO) < 0)
        return 1;
    int files = 0;
    for (int i = 1; i < argc; ++i)
        for (const auto &entry : std::filesystem::directory_iterator(argv[i])) {
            std::fprintf(stderr, "replay: %s\n", entry.path().c_str());
            const std::string bytes = read_file(entry.path());
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()),
                                   bytes.size());
            ++files;
        }
    return files > 0 ? 0 : 1;
}
