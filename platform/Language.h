#pragma once

namespace vantro {

// From now on sentences are in the language that the environment asks for, those of the libraries as well:
// Words() finds the translations that were built or installed with the program. To be called before there are
// other threads.
void UseLanguageOfUser();

} // namespace vantro
