#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vantro {

// Why a file operation failed: the number of the error and a sentence that names the file and the reason.
struct FileError {
    int number = 0;
    std::string sentence;
};
inline constexpr int kFileAlreadyExists = 58;

// What the system says of an error number (errno).
[[nodiscard]] std::string DescribeError(int number);

// Failures to delete are ignored.
void DeleteFileIfExists(const std::filesystem::path& path) noexcept;

// Writes the bytes of a resource as they are. An existing file is replaced when `overwrite` is true; else the
// call fails with kFileAlreadyExists.
[[nodiscard]] std::optional<FileError> SaveResourceToFile(
    const std::filesystem::path& path, std::string_view name, std::string_view type, bool overwrite);

// Replaces the file by the page text, written as Windows-1252 (see EncodePageText).
[[nodiscard]] std::optional<FileError> WriteTextFile(
    const std::filesystem::path& path, std::string_view pageText);

// Makes the file `path` (in an existing folder) hold exactly `bytes`, or returns the description of the
// failure and leaves it as it was, by way of a PartFile.
[[nodiscard]] std::optional<std::string> ReplaceFile(const std::string& path, std::string_view bytes);

// The whole content of a regular file, or its first `most` bytes; nothing, with the number of the error in
// errno, when it cannot be read: EINVAL for anything else, which is not waited for.
[[nodiscard]] std::optional<std::string> ReadWholeFile(
    const std::filesystem::path& path, std::size_t most = std::string::npos);

// True when the file is a regular one and can be opened for reading.
[[nodiscard]] bool FileExists(const std::filesystem::path& path);

} // namespace vantro
