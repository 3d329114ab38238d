#pragma once

#include "options.h"

enum ExitCode { exitDone = 0, exitDamaged = 1, exitUsage = 2, exitFile = 3 };

/// Does CodecManager know it? The names are in full.
bool isKnownCodec(std::string const &name);

/// Does what was asked for. Errors go to the error stream.
ExitCode pack(Options const &options);
