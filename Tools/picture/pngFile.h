#pragma once

#include "System/Graphics/image/image.h"

#include <string>

/// Writes an A8R8G8B8 image as a PNG, with alpha where it has any that is not whole.
/// @return false if the file cannot be written; nothing is left of it then
bool writePng(std::string const &path, Qel::cImage const &image);
