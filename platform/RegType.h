#pragma once

#include <cstdint>

namespace vantro {

// The types a stored value can have; the numbers stand in the file.
enum class RegType : std::int32_t { Sz = 1, Dword = 4 };

// An open key of the store: good until the key is deleted or its creation undone; 0 names no key.
using RegKeyId = std::int64_t;

} // namespace vantro
