#pragma once

namespace vantro {

// Hands back the memory of the code and the constants that are mapped, of which the start alone uses more
// than half: what is wanted again comes from the system's cache of files, in microseconds. A debugger loses
// the breakpoints that it has set. Any thread.
void ForgetStartUpCode();

} // namespace vantro
