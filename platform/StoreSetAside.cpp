#include "platform/StoreSetAside.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <string>
#include <system_error>
#include <vector>

namespace vantro {

namespace {

namespace fs = std::filesystem;

// The journals go first and the file last: were the program killed half way, the file would still be found in
// its place, while SQLite deletes a journal it finds without its file.
constexpr std::array<const char*, 4> kParts{"-wal", "-journal", "-shm", ""};

std::string LocalDateAndTime()
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    std::array<char, sizeof "20040315-120000"> text{};
    if (localtime_r(&now, &local) != nullptr)
        std::strftime(text.data(), text.size(), "%Y%m%d-%H%M%S", &local);
    return text.data();
}

fs::path WithSuffix(fs::path path, const std::string& suffix)
{
    return path += suffix;
}

// Of the file, which nothing has yet, nor what its journals would be called.
fs::path FreeName(const fs::path& file)
{
    const auto isTaken = [](const fs::path& name) {
        return std::ranges::any_of(kParts, [&](const char* part) {
            std::error_code ignored;
            return fs::symlink_status(WithSuffix(name, part), ignored).type() != fs::file_type::not_found;
        });
    };
    const fs::path wanted = WithSuffix(file, ".damaged-" + LocalDateAndTime());
    fs::path name = wanted;
    for (int number = 2; isTaken(name); ++number)
        name = WithSuffix(wanted, "-" + std::to_string(number));
    return name;
}

} // namespace

std::optional<fs::path> SetStoreAside(const fs::path& file)
{
    const fs::path name = FreeName(file);
    std::vector<const char*> moved;
    for (const char* part : kParts) {
        std::error_code failure;
        fs::rename(WithSuffix(file, part), WithSuffix(name, part), failure);
        if (!failure) {
            moved.push_back(part);
        } else if (failure != std::errc::no_such_file_or_directory) {
            for (const char* back : moved)
                fs::rename(WithSuffix(name, back), WithSuffix(file, back), failure);
            return std::nullopt;
        }
    }
    return name;
}

} // namespace vantro
