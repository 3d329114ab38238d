#pragma once

#include <optional>
#include <string>
#include <vector>

/// What qelpack was asked to do.
struct Options {
    bool encode = true;
    std::vector<std::string> codecs; ///< "CODEC_ZIP" and so on, in encoding order
    std::string in;
    std::string out;
    bool extended = false; ///< blocks of the extended form of "CODEC_ZIP"
    unsigned level = 5;    ///< of "CODEC_ZIP"
    bool verify = true;    ///< decode what was encoded, and compare
    unsigned limit = 64;   ///< MiB of output that may be out of proportion to the input
    bool quiet = false;    ///< no progress and no summary
};

/// Reads the command line, and answers --help and mistakes by itself.
/// @param exitCode  set when there is nothing left to do
/// @return nothing in that case
std::optional<Options> readOptions(int argc, char **argv, int &exitCode);
