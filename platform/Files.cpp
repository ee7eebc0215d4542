#include "platform/Files.h"

#include "base/Owned.h"
#include "base/Resources.h"
#include "base/TextCoding.h"
#include "base/Words.h"
#include "platform/PartFile.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace vantro {

namespace fs = std::filesystem;

namespace {

using File = Owned<std::FILE, std::fclose>;

// Open for reading; null, with errno, when it cannot be opened or is no regular file. A pipe is not waited
// for.
File OpenToRead(const fs::path& path, struct stat& status)
{
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        return nullptr;
    if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode))
        return File(fdopen(descriptor, "rb"));
    close(descriptor);
    errno = EINVAL;
    return nullptr;
}

// Makes a file that is not there hold the bytes. The number of the error, and then it is not there; else 0.
int WriteNewFile(const fs::path& path, std::string_view bytes)
{
    File file(std::fopen(path.c_str(), "wbxe")); // x: never through a link that someone left there
    if (!file)
        return errno;
    int error = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size() ? 0 : errno;
    if (std::fclose(file.release()) != 0 && error == 0)
        error = errno;
    if (error != 0)
        DeleteFileIfExists(path);
    return error;
}

std::optional<FileError> WritePageFile(const fs::path& path, std::string_view bytes)
{
    DeleteFileIfExists(path);
    const int error = WriteNewFile(path, bytes);
    if (error == 0)
        return std::nullopt;
    return FileError{
        error, Words("The file %1 cannot be written: %2.", {path.string(), DescribeError(error)})};
}

} // namespace

std::string DescribeError(int number)
{
    return std::generic_category().message(number);
}

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
            Words("The page part %1 %2 for %3 is missing from the program.", {type, name, path.string()})};
    if (!overwrite && FileExists(path))
        return FileError{kFileAlreadyExists, Words("The file %1 already exists.", {path.string()})};
    return WritePageFile(path, *bytes);
}

std::optional<FileError> WriteTextFile(const fs::path& path, std::string_view pageText)
{
    return WritePageFile(path, EncodePageText(pageText));
}

std::optional<std::string> ReplaceFile(const std::string& path, std::string_view bytes)
{
    PartFile part(fs::path(path).parent_path());
    part.Append(bytes);
    return part.SaveAs(path);
}

std::optional<std::string> ReadWholeFile(const fs::path& path, std::size_t most)
{
    struct stat status { };
    const File file = OpenToRead(path, status);
    if (!file)
        return std::nullopt;
    std::string content(std::min(static_cast<std::size_t>(status.st_size), most), '\0');
    content.resize(std::fread(content.data(), 1, content.size(), file.get()));
    if (std::ferror(file.get()) != 0)
        return std::nullopt;
    return content;
}

bool FileExists(const fs::path& path)
{
    struct stat status { };
    return OpenToRead(path, status) != nullptr;
}

} // namespace vantro
