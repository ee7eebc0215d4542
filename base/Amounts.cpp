#include "base/Amounts.h"

#include "base/Words.h"

namespace vantro {

std::string SizeText(std::int64_t bytes)
{
    constexpr std::int64_t kMiB = 1024LL * 1024;
    return bytes % kMiB == 0 ? Words("%1 MiB", {std::to_string(bytes / kMiB)})
                             : CountedWords("%1 byte", "%1 bytes", bytes);
}

std::string TimeText(std::chrono::seconds time)
{
    const auto count = time.count();
    return count % 60 == 0 ? CountedWords("%1 minute", "%1 minutes", count / 60)
                           : CountedWords("%1 second", "%1 seconds", count);
}

} // namespace vantro
