// Whether this program runs under AddressSanitizer, which takes memory for itself.
#pragma once

#include <dlfcn.h>

inline bool sanitized() { return dlsym(RTLD_DEFAULT, "__asan_init") != nullptr; }
