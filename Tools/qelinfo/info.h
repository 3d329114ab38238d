#pragma once

#include <string>

/// What qelinfo was asked to do.
struct Options {
    std::string file;
    std::string convert;    ///< where to, by its ending; empty: nowhere
    unsigned int index = 0; ///< which picture of an icon
};

enum ExitCode { exitDone = 0, exitRefused = 1, exitUsage = 2, exitFile = 3 };

/// @return whether convert() has a writer for the ending of a file's name
bool isWritable(std::string const &path);

/// Says what the file is, on the standard output, and converts it if that was asked for.
ExitCode inform(Options const &options);
