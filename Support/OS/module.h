#pragma once

#include "Support/export.h"

#include <string>

namespace os {

/// Loads a module. A name that ends in ".dll", in any case, is tried as it stands and then with ".so" in
/// its place. A bare name is looked for beside the program, beside this library, in the folder of the
/// engine's own plugins below it, in the working directory and by the loader's own search, in this order; a
/// name with a path is taken as it is.
/// @param error  on failure: which files were tried and why each of them failed
/// @return null on failure
QEL_API void *openModule(char const *name, std::string &error);

QEL_API void *findSymbol(void *module, char const *symbol); ///< one of its own; null if there is none
QEL_API bool closeModule(void *module);                     ///< false if it is null or cannot be released

} // namespace os
