#pragma once

#include <cstddef>
#include <string>

/// Feeds a reader with any bytes. One for each fuzz target.
/// @param data  @p size bytes in a block of just that size
/// @return everything that the reader made of them, in any form: the same bytes have to give the same text.
/// It
///         stops the program where a promise of the reader is broken.
std::string fuzzTarget(unsigned char const *data, std::size_t size);

/// Stops the program, in every build.
void fuzzRequire(bool condition, char const *promise);
