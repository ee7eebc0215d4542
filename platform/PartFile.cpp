#include "platform/PartFile.h"

#include "platform/Files.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace vantro {

namespace fs = std::filesystem;

namespace {

constexpr long kSmall = 1024L * 1024; // bytes

// Not the name of the file with something added: that would be too long where the name itself just fits.
std::string NextName()
{
    static std::atomic<unsigned> count = 0;
    return ".part-" + std::to_string(getpid()) + "-" + std::to_string(++count);
}

} // namespace

PartFile::PartFile(const fs::path& folder) : path_(folder / NextName())
{
    DeleteFileIfExists(path_); // of an earlier process of the same number
    file_.reset(std::fopen(path_.c_str(), "wbxe")); // x: never through a link that someone left there
    if (!file_) {
        error_ = errno;
        path_.clear();
    }
}

PartFile::~PartFile()
{
    if (!path_.empty())
        DeleteFileIfExists(path_);
}

void PartFile::Fail(int number)
{
    error_ = number;
    file_.reset();
    DeleteFileIfExists(path_);
    path_.clear();
}

void PartFile::Append(std::string_view bytes)
{
    if (file_ && std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size())
        Fail(errno);
}

void PartFile::Close()
{
    if (!file_)
        return;
    int error = std::fflush(file_.get()) == 0 ? 0 : errno;
    // A small file may be gone again before it ever needs the disk. Where this is not supported, the rename
    // does without.
    if (error == 0 && std::ftell(file_.get()) > kSmall)
        sync_file_range(fileno(file_.get()), 0, 0, SYNC_FILE_RANGE_WRITE);
    if (std::fclose(file_.release()) != 0 && error == 0)
        error = errno;
    if (error != 0)
        Fail(error);
}

std::optional<std::string> PartFile::SaveAs(const std::string& path)
{
    const std::string name = path.substr(path.rfind('/') + 1);
    if (name.empty() || name == "." || name == "..")
        Fail(EISDIR);
    Close();
    if (error_ != 0)
        return DescribeError(error_);
    replaced_ = Descriptor(open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (std::rename(path_.c_str(), path.c_str()) == 0) {
        path_.clear();
        return std::nullopt;
    }
    const int error = errno;
    if (error == EXDEV && fs::path(path).parent_path() != path_.parent_path())
        return CopyTo(path);
    Fail(error);
    return DescribeError(error);
}

std::optional<std::string> PartFile::CopyTo(const std::string& path) const
{
    const auto content = ReadWholeFile(path_);
    return content ? ReplaceFile(path, *content) : DescribeError(EIO);
}

} // namespace vantro
