#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace vantro {

// What a target does with one input. Each target defines it, in a unit of its own.
void Try(std::string_view bytes);

// Ends the process, which the fuzzer takes for a finding.
void Require(bool holds, const char* promise);

// Writes a file of that name into the folder of the process, which lies below TMPDIR.
std::filesystem::path Write(std::string_view name, std::string_view bytes);
// A new, empty folder of that name there.
std::filesystem::path EmptyFolder(std::string_view name);
// Where no file can be: a store that is opened there lives in memory.
std::filesystem::path NoPlace();

// Takes an input apart from its beginning.
class Input {
public:
    explicit Input(std::string_view bytes) : rest_(bytes) { }

    [[nodiscard]] bool IsAtEnd() const { return rest_.empty(); }
    // Zeros behind the end.
    std::uint8_t Byte()
    {
        const std::string_view byte = rest_.substr(0, 1);
        rest_.remove_prefix(byte.size());
        return byte.empty() ? 0 : static_cast<std::uint8_t>(byte.front());
    }
    std::size_t Below(std::size_t limit) { return Byte() % limit; }
    // Of so many bytes, the highest first.
    std::uint32_t Number(int bytes)
    {
        std::uint32_t number = 0;
        while (bytes-- > 0)
            number = number << 8 | Byte();
        return number;
    }
    // The bytes before the next `end`, which is taken as well.
    std::string_view UpTo(char end)
    {
        const std::string_view taken = rest_.substr(0, rest_.find(end));
        rest_.remove_prefix(taken.size() + (taken.size() < rest_.size() ? 1 : 0));
        return taken;
    }

private:
    std::string_view rest_;
};

// A file with some of its bytes changed, and cut perhaps, as the input says.
std::string Spoilt(std::string_view whole, Input input);

} // namespace vantro
