#pragma once

#include "Support/OS/debug.h"

#include <string>

namespace test {

/// Catches what goes to the debugger while it lives. One at a time.
class DebugText {
public:
    DebugText() : m_scope(&append) { caught().clear(); }

    std::string const &text() const { return caught(); }

private:
    static std::string &caught()
    {
        static std::string all;
        return all;
    }
    static void append(char const *text) { caught() += text; }

    os::DebugSinkScope m_scope;
};

} // namespace test
