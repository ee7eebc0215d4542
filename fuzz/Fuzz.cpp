#include "fuzz/Fuzz.h"

#include "platform/PrivateFolder.h"

#include <cstdlib>
#include <fstream>
#include <iostream>

namespace vantro {

namespace {

const std::filesystem::path& OwnFolder()
{
    static const std::filesystem::path folder
        = MakePrivateFolder(std::filesystem::temp_directory_path(), "vantro-fuzz-");
    return folder;
}

} // namespace

void Require(bool holds, const char* promise)
{
    if (!holds) {
        std::cerr << "Broken promise: " << promise << '\n';
        std::abort();
    }
}

std::filesystem::path Write(std::string_view name, std::string_view bytes)
{
    std::filesystem::path file = OwnFolder() / name;
    std::ofstream(file, std::ios::binary) << bytes;
    return file;
}

std::filesystem::path EmptyFolder(std::string_view name)
{
    std::filesystem::path folder = OwnFolder() / name;
    std::filesystem::remove_all(folder);
    std::filesystem::create_directory(folder);
    return folder;
}

std::filesystem::path NoPlace()
{
    return OwnFolder();
}

std::string Spoilt(std::string_view whole, Input input)
{
    std::string spoilt(whole);
    while (!input.IsAtEnd()) {
        const std::size_t place = input.Number(2) % (whole.size() + 1);
        if (place == whole.size())
            spoilt.resize(input.Number(2) % (spoilt.size() + 1));
        else if (place < spoilt.size())
            spoilt[place] = static_cast<char>(input.Byte());
    }
    return spoilt;
}

} // namespace vantro

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    vantro::Try({reinterpret_cast<const char*>(data), size});
    return 0;
}
