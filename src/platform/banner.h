// The release banner.
#pragma once

/// Writes program, version and purpose to standard error.
void banner(const char *program, const char *more);
