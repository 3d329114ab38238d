#pragma once

#include <optional>
#include <string>

/// What the host was asked to do.
struct Options {
    unsigned frames = 300;  ///< the loop ends after so many
    unsigned fps = 100;     ///< 0 for no limit
    std::string pluginFile; ///< plugins.cfg of the working folder, else the one beside the program
    std::string logFile = "debug.log";
};

/// Reads the command line, and answers --help and mistakes by itself.
/// @param exitCode  set when there is nothing left to do
/// @return nothing in that case
std::optional<Options> readOptions(int argc, char **argv, int &exitCode);
