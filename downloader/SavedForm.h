#pragma once

#include "downloader/PropertyBag.h"

#include <string_view>

namespace vantro {

// What the program's saved form ("frmMain", a resource of type "FORMS") holds for the control of that name;
// names match exactly, but all members of an array, such as "download(0)", have what it holds for "download".
// An empty bag, from which every property reads as its default, when the form or the control is missing.
[[nodiscard]] PropertyBag SavedProperties(std::string_view form, std::string_view control);

} // namespace vantro
