#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>

namespace test {

/// A display of its own without a screen, which SDL then uses, and xdotool to work keyboard and mouse on it.
class XServer {
public:
    XServer()
    {
        // The server names its display when it is ready. It does not outlive a test that has been killed.
        m_output = popen("exec 2>/dev/null; command -v xdotool && echo $$ && exec timeout 300 "
                         "Xvfb -displayfd 1 -screen 0 800x600x24 -nolisten tcp -noreset -r",
                         "r");
        int display = 0;
        m_isRunning = m_output != nullptr && std::fscanf(m_output, "%*s %d %d", &m_process, &display) == 2;
        std::string name = ":";
        name += std::to_string(display);
        setenv("DISPLAY", name.c_str(), 1);
        setenv("SDL_VIDEODRIVER", "x11", 1);
        setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
    }

    ~XServer()
    {
        if (m_process > 0) {
            kill(m_process, SIGTERM);
        }
        if (m_output != nullptr) {
            pclose(m_output);
        }
        setenv("SDL_VIDEODRIVER", "dummy", 1);
    }

    XServer(XServer const &) = delete;
    XServer &operator=(XServer const &) = delete;

    bool isRunning() const { return m_isRunning; }

    static bool xdotool(std::string const &what)
    {
        return std::system(("xdotool " + what + " >/dev/null").c_str()) == 0;
    }

    /// The same, without waiting for its end.
    static void xdotoolLater(std::string const &what)
    {
        EXPECT_EQ(std::system(("timeout 60 xdotool " + what + " >/dev/null &").c_str()), 0);
    }

private:
    std::FILE *m_output = nullptr;
    pid_t m_process = 0;
    bool m_isRunning = false;
};

} // namespace test
