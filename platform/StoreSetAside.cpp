#include "platform/StoreSetAside.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace vantro {

namespace {

namespace fs = std::filesystem;

struct Part {
    const char* suffix;
    const char* apart; // by which SQLite knows no journal
};

// The journals go first and the file last: were the program killed half way, the file would still be found in
// its place, while SQLite deletes a journal it finds without its file.
constexpr std::array<Part, 4> kParts{
    {{"-wal", ".wal"}, {"-journal", ".journal"}, {"-shm", ".shm"}, {"", ""}}};

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

bool IsTaken(const fs::path& name)
{
    std::error_code ignored;
    return fs::symlink_status(name, ignored).type() != fs::file_type::not_found;
}

// Of the file, which nothing has yet, nor what its journals would be called.
fs::path FreeName(const fs::path& file)
{
    const auto isTaken = [](const fs::path& name) {
        return std::ranges::any_of(kParts, [&](const Part& part) {
            return IsTaken(WithSuffix(name, part.suffix)) || IsTaken(WithSuffix(name, part.apart));
        });
    };
    const fs::path wanted = WithSuffix(file, ".damaged-" + LocalDateAndTime());
    fs::path name = wanted;
    for (int number = 2; isTaken(name); ++number)
        name = WithSuffix(wanted, "-" + std::to_string(number));
    return name;
}

} // namespace

std::optional<fs::path> SetStoreAside(const fs::path& file, Aside what)
{
    const fs::path name = FreeName(file);
    std::vector<std::pair<fs::path, fs::path>> moved;
    for (const Part& part : kParts) {
        if (what == Aside::JournalsAlone && *part.suffix == '\0')
            continue;
        const fs::path from = WithSuffix(file, part.suffix);
        const fs::path to = WithSuffix(name, what == Aside::FileAndItsJournals ? part.suffix : part.apart);
        std::error_code failure;
        fs::rename(from, to, failure);
        if (!failure) {
            moved.emplace_back(from, to);
        } else if (failure != std::errc::no_such_file_or_directory) {
            for (const auto& [before, after] : moved)
                fs::rename(after, before, failure);
            return std::nullopt;
        }
    }
    return name;
}

} // namespace vantro
