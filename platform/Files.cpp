#include "platform/Files.h"

#include "base/Resources.h"
#include "base/TextCoding.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace vantro {

namespace fs = std::filesystem;

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

FileError ErrorOf(const char* what, const fs::path& path, int number)
{
    return {number,
        "The file " + path.string() + " cannot be " + what + ": " + std::generic_category().message(number)
            + "."};
}

std::optional<FileError> WriteBytes(const fs::path& path, std::string_view bytes)
{
    DeleteFileIfExists(path);
    File file(std::fopen(path.c_str(), "wbxe"));
    const bool written = file && std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size()
        && std::fflush(file.get()) == 0;
    if (written)
        return std::nullopt;
    FileError error = ErrorOf("written", path, errno);
    if (file) {
        file.reset();
        DeleteFileIfExists(path);
    }
    return error;
}

} // namespace

void DeleteFileIfExists(const fs::path& path) noexcept
{
    unlink(path.c_str());
}

std::optional<FileError> SaveResourceToFile(
    const fs::path& path, std::string_view name, std::string_view type, bool overwrite)
{
    const auto bytes = FindResource(type, name);
    if (!bytes)
        return FileError{ENOENT,
            "The page part " + std::string(type) + " " + std::string(name) + " for " + path.string()
                + " is missing from the program."};
    if (!overwrite && FileExists(path))
        return FileError{kFileAlreadyExists, "The file " + path.string() + " already exists."};
    return WriteBytes(path, *bytes);
}

std::optional<FileError> WriteTextFile(const fs::path& path, std::string_view pageText)
{
    return WriteBytes(path, EncodePageText(pageText));
}

std::optional<std::string> ReadWholeFile(const fs::path& path)
{
    File file(std::fopen(path.c_str(), "rbe"));
    struct stat status { };
    if (!file || fstat(fileno(file.get()), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    std::string content(static_cast<std::size_t>(status.st_size), '\0');
    content.resize(std::fread(content.data(), 1, content.size(), file.get()));
    if (std::ferror(file.get()) != 0)
        return std::nullopt;
    return content;
}

bool FileExists(const fs::path& path)
{
    return File(std::fopen(path.c_str(), "rbe")) != nullptr;
}

} // namespace vantro
