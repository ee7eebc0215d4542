#pragma once

#include "base/Owned.h"
#include "platform/Descriptor.h"

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vantro {

// A file that is written under a short name of this process, ".part-" and numbers, and takes its own name
// when it is whole. Deleted by its destructor if it was not saved. Used by one thread at a time.
class PartFile {
public:
    // Made in `folder`, which must exist.
    explicit PartFile(const std::filesystem::path& folder);
    ~PartFile();
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;

    [[nodiscard]] bool IsOpen() const { return file_ != nullptr; }
    // A failure is kept for SaveAs(), and what follows it is ignored.
    void Append(std::string_view bytes);
    // Nothing is appended any more. If they are many, the bytes are on their way to the disk afterwards:
    // renaming a file makes some file systems see to that first, which takes tens of milliseconds for 64 MiB.
    void Close();
    // Takes the place of `path`, or returns the description of the failure and leaves it as it was. A link
    // there is replaced, not followed. A path that ends in no name, "." or ".." is refused as a folder.
    // Takes well under a millisecond after Close() if `path` lies in the same file system.
    [[nodiscard]] std::optional<std::string> SaveAs(const std::string& path);

private:
    void Fail(int number);
    [[nodiscard]] std::optional<std::string> CopyTo(const std::string& path) const;

    std::filesystem::path path_; // "" when no such file is there any more
    Owned<std::FILE, std::fclose> file_; // null once closed
    int error_ = 0; // the number of the first failure
    // The file that was replaced: freeing the space of 64 MiB takes long, too, and so happens where this
    // object is destroyed.
    Descriptor replaced_;
};

} // namespace vantro
