#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace vantro {

// Allows this process and those it starts as many open files as is usual, where the system lets it.
void RaiseFileLimit();

// What one process needs beside what it has.
struct Room {
    int fileLimit; // all open files
    int files; // further ones
    int threads; // further ones, each of which may be a process
    std::size_t addresses = 0; // further bytes in one piece, which need not be filled
};

// What of it is not to be had, as the end of a sentence; nothing when all is. Takes it for a moment. Any
// thread.
[[nodiscard]] std::optional<std::string> WhatIsLacking(const Room& room);

} // namespace vantro
