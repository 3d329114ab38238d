#pragma once

#include <string>
#include <string_view>

/// What qelinfo was asked to do.
struct Options {
    std::string file;
    std::string convert;    ///< where to, by its ending; empty: nowhere
    unsigned int index = 0; ///< which picture of an icon
    std::string animation;  ///< to look at with a model; empty: none
};

enum ExitCode { exitDone = 0, exitRefused = 1, exitUsage = 2, exitFile = 3 };

/// @return whether convert() has a writer for the ending of a file's name
bool isWritable(std::string const &path);

/// Says what the file is, on the standard output, and converts it if that was asked for.
ExitCode inform(Options const &options);

/// Says what a text of a model or an animation holds, if it is one.
/// @return false if it is none; nothing is said then
bool informOfModel(Options const &options, std::string_view text, ExitCode &code);
