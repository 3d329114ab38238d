#pragma once

#include "Samples/Host/options.h"

#include <string>

/// Shows the screens: in a window until it is closed, or one of them, without a display, in a picture.
/// @return false, with a line on the error stream, if that cannot be done
bool showScreens(Options const &options);
