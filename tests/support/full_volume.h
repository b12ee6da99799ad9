// A volume for tests that compare all that is made of one.
#pragma once

#include <string>

/// Nearly every field of its blockettes has a value of its own: one that is taken for another is
/// seen. A channel's data have gaps, overlaps and records out of order; another one's have no time.
std::string full_volume();
