#include "platform/ReplaceFile.h"

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <unistd.h>

namespace vantro {

namespace {

std::string Describe(int error)
{
    return std::generic_category().message(error);
}

// The description of the failure, if any.
std::optional<std::string> WriteBytes(const std::string& path, const std::string& bytes)
{
    std::FILE* file = std::fopen(path.c_str(), "wbx"); // x: never through a link that someone left there
    if (!file)
        return Describe(errno);
    const bool isWritten = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    int error = isWritten ? 0 : errno;
    if (std::fclose(file) != 0 && error == 0)
        error = errno;
    return error == 0 ? std::nullopt : std::optional(Describe(error));
}

} // namespace

std::optional<std::string> ReplaceFile(const std::string& path, const std::string& bytes)
{
    const std::string name = path.substr(path.rfind('/') + 1);
    if (name.empty() || name == "." || name == "..")
        return Describe(EISDIR);
    // Not the name with something added: that would be too long where the name itself just fits.
    const std::string part = path.substr(0, path.size() - name.size()) + ".part-" + std::to_string(getpid());
    std::remove(part.c_str());
    std::optional<std::string> failure = WriteBytes(part, bytes);
    if (!failure && std::rename(part.c_str(), path.c_str()) != 0)
        failure = Describe(errno);
    if (failure)
        std::remove(part.c_str());
    return failure;
}

} // namespace vantro
