#include "programs/baseline.h"

#include <cerrno>
#include <cstring>
#include <fstream>

namespace quarl
{

std::string Baseline::read(const std::string &path)
{
    constexpr std::string_view Key = "\"fingerprint\":\"";
    constexpr std::size_t Digits = 16;
    used_ = true;
    errno = 0;
    std::ifstream file(path);
    if (!file)
        return path + ": " + std::strerror(errno);
    std::string line;
    while (std::getline(file, line)) {
        if (line.find_first_not_of(" \t\r") == std::string::npos)
            continue;
        // Behind the last key of that name: a text in front could spell it, but with a backslash.
        const std::size_t key = line.rfind(Key);
        const std::string found =
            key == std::string::npos ? std::string() : line.substr(key + Key.size(), Digits);
        if (found.size() != Digits ||
            found.find_first_not_of("0123456789abcdef") != std::string::npos)
            return path + ": is no output of quarl-check --json: a line has no fingerprint";
        fingerprints_.insert(found);
    }
    return file.bad() ? path + ": " + std::strerror(errno) : std::string();
}

} // namespace quarl
