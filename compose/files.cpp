#include "compose/files.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace
{

struct Close {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Close>;

[[noreturn]] void fail(const std::string &path)
{
    throw std::runtime_error(path + ": " + std::strerror(errno));
}

} // namespace

std::string read_file(const std::string &path)
{
    const File file(std::fopen(path.c_str(), "rb"));
    if (!file)
        fail(path);
    std::string bytes;
    char block[65536];
    while (const std::size_t n = std::fread(block, 1, sizeof block, file.get()))
        bytes.append(block, n);
    if (std::ferror(file.get()) != 0)
        fail(path);
    return bytes;
}

void write_file(const std::string &path, std::string_view bytes)
{
    const File file(std::fopen(path.c_str(), "wb"));
    if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size() ||
        std::fflush(file.get()) != 0)
        fail(path);
}
