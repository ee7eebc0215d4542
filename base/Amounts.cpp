#include "base/Amounts.h"

namespace vantro {

std::string CountText(std::int64_t count, std::string_view thing)
{
    return std::to_string(count) + " " + std::string(thing) + (count == 1 ? "" : "s");
}

std::string SizeText(std::int64_t bytes)
{
    constexpr std::int64_t kMiB = 1024LL * 1024;
    return bytes % kMiB == 0 ? std::to_string(bytes / kMiB) + " MiB" : CountText(bytes, "byte");
}

std::string TimeText(std::chrono::seconds time)
{
    const auto count = time.count();
    return count % 60 == 0 ? CountText(count / 60, "minute") : CountText(count, "second");
}

} // namespace vantro
