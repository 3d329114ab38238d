#pragma once

#include <string>
#include <vector>

/// What to show of a model.
struct ModelRequest {
    std::string mesh;                    ///< empty: none
    std::vector<std::string> animations; ///< to pose it with
    std::string screenshot;              ///< PNG file; empty: none
};

/// Prints what a model consists of and its poses over time, and draws them.
/// @return false, with a line on the error stream, if a file cannot be read or written
bool showModel(ModelRequest const &request);
