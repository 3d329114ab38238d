#include "progress.h"

#include "Support/OS/file.h"

#include <cstdio>

namespace {

constexpr std::size_t width = 40;
constexpr std::size_t quarters = 4;

} // namespace

Progress::Progress(bool quiet) : m_style(quiet ? none : os::isTerminal(stdout) ? bar : lines)
{
}

void Progress::show(std::string const &what, std::size_t done, std::size_t all, char const *unit)
{
    if (m_style == none || all == 0) {
        return;
    }
    if (what != m_what) {
        m_what = what;
        m_shown = 0;
        m_last = {};
    }
    auto const now = std::chrono::steady_clock::now();
    std::size_t const steps = done * (m_style == bar ? width : quarters) / all;
    bool const isLate = now - m_last > std::chrono::milliseconds(50);
    bool const isNews = steps > m_shown && (m_style == lines || isLate || done == all);
    if (!isNews) {
        return;
    }
    m_shown = steps;
    m_last = now;
    if (m_style == bar) {
        std::printf("\r%-13s [%s%s] %zu of %zu %s%s", what.c_str(), std::string(steps, '#').c_str(),
                    std::string(width - steps, ' ').c_str(), done, all, unit, done == all ? "\n" : "");
    } else {
        std::printf("%-13s %zu of %zu %s\n", what.c_str(), done, all, unit);
    }
    std::fflush(stdout);
}
