// Decompression of a descriptor's contents.
#pragma once

#include "platform/inflater.h"

#include <memory>
#include <string_view>

namespace quarl
{

/// An inflater of the contents of `fd`, which begin with the bytes `begin`, from its present
/// position on; null when these are not the mark of a compressed file. It does not own `fd`.
std::unique_ptr<Inflater> new_inflater(int fd, std::string_view begin);

} // namespace quarl
