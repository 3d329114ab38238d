#pragma once

#include "System/Graphics/image/image.h"

#include <string>

/// The pixels of a file as A8R8G8B8, in the colours that its author meant.
///
/// The readers keep the order of a file's bytes and name the channels by it: a TGA's first byte is its blue,
/// and is called red; a PCX's first plane is its red, and is called blue. A palette is as it was meant.
/// @param kind  the file's, as fileKindOf() names it
/// @return without pixels if there is no memory
Qel::cImage trueColors(Qel::cImage const &image, std::string const &kind);
