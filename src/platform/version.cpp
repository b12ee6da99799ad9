#include <quarl/version.h>

namespace quarl
{

std::string_view version() noexcept { return QUARL_VERSION; }

} // namespace quarl
