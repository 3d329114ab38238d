#pragma once

#include <chrono>
#include <cstddef>
#include <string>

/// Shows on the standard output how far something is: a bar on a terminal, a line for every quarter
/// elsewhere.
class Progress {
public:
    /// @param quiet  shows nothing, for when somebody types on the terminal
    explicit Progress(bool quiet);

    /// Call it as often as wished.
    /// @param what  a new text starts anew
    /// @param unit  what is counted
    void show(std::string const &what, std::size_t done, std::size_t all, char const *unit);

private:
    enum Style { none, lines, bar };

    Style m_style;
    std::string m_what;
    std::size_t m_shown = 0; // steps of this text
    std::chrono::steady_clock::time_point m_last;
};
