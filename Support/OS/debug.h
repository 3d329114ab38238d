#pragma once

#include "Support/export.h"

namespace os {

using DebugSink = void (*)(char const *text);

/// Gives @p text to the debugger's output: the error stream, or the sink of a DebugSinkScope.
QEL_API void debugOutput(char const *text);

/// Stops in the debugger; without one the process ends by SIGTRAP.
QEL_API void debugBreak();

/// Replaces the debugger's output for a scope, on every thread. Scopes nest; they end in reverse order.
class QEL_API DebugSinkScope {
public:
    explicit DebugSinkScope(DebugSink sink);
    ~DebugSinkScope();

    DebugSinkScope(DebugSinkScope const &) = delete;
    DebugSinkScope &operator=(DebugSinkScope const &) = delete;

private:
    DebugSink m_before;
};

} // namespace os
