// Compressed files for tests.
#pragma once

#include <array>
#include <string>

/// The compressions that the tool reads.
inline constexpr std::array Filters = {"gzip", "compress", "bzip2", "xz", "lzma", "zstd", "lz4"};

/// `bytes` as a file of this compression; throws std::runtime_error when that fails.
std::string compressed(const std::string &bytes, const char *filter);
