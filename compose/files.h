// Whole files in one call, for tests and generators.
#pragma once

#include <string>
#include <string_view>

/// The contents of a file; throws std::runtime_error when it cannot be read.
std::string read_file(const std::string &path);

/// Replaces the contents of a file; throws std::runtime_error when that fails.
void write_file(const std::string &path, std::string_view bytes);
