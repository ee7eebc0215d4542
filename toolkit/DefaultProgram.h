#pragma once

#include <string>

namespace vantro {

// Opens an address in the user's default browser, a mail address in the mail program, without what the
// engine of our own pages has in its environment. False when none could be started.
[[nodiscard]] bool OpenInDefaultProgram(const std::string& address);

} // namespace vantro
