#include "base/Amounts.h"

namespace vantro {

namespace {

std::string Counted(std::int64_t count, const char* unit)
{
    return std::to_string(count) + " " + unit + (count == 1 ? "" : "s");
}

} // namespace

std::string SizeText(std::int64_t bytes)
{
    constexpr std::int64_t kMiB = 1024LL * 1024;
    return bytes % kMiB == 0 ? std::to_string(bytes / kMiB) + " MiB" : Counted(bytes, "byte");
}

std::string TimeText(std::chrono::seconds time)
{
    const auto count = time.count();
    return count % 60 == 0 ? Counted(count / 60, "minute") : Counted(count, "second");
}

} // namespace vantro
