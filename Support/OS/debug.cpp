#include "Support/OS/debug.h"

#include <atomic>
#include <csignal>
#include <cstdio>

namespace os {

namespace {

void toErrorStream(char const *text)
{
    std::fputs(text, stderr);
}

constinit std::atomic<DebugSink> activeSink{&toErrorStream};

} // namespace

void debugOutput(char const *text)
{
    activeSink.load(std::memory_order_acquire)(text);
}

void debugBreak()
{
    std::raise(SIGTRAP);
}

DebugSinkScope::DebugSinkScope(DebugSink sink) : m_before(activeSink.exchange(sink))
{
}

DebugSinkScope::~DebugSinkScope()
{
    activeSink.store(m_before);
}

} // namespace os
