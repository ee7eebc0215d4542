#include "base/Amounts.h"

namespace vantro {

std::string SizeText(std::int64_t bytes)
{
    constexpr std::int64_t kMiB = 1024LL * 1024;
    return bytes % kMiB == 0 ? std::to_string(bytes / kMiB) + " MiB" : std::to_string(bytes) + " bytes";
}

std::string TimeText(std::chrono::seconds time)
{
    const auto count = time.count();
    return count % 60 == 0 ? std::to_string(count / 60) + " minutes" : std::to_string(count) + " seconds";
}

} // namespace vantro
