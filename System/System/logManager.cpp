#include "System/System/logManager.h"

#include "System/System/formatBuffer.h"
#include "System/System/pluginMgr.h"

#include <algorithm>
#include <cstdarg>

namespace Qel {

template class tSingleton<LogManager>;

std::atomic<LoggingLevel> LogManager::defaultLogLevel{2};

LogManager::LogManager() = default;

LogManager::~LogManager() = default;

Log *LogManager::createLog(String const &name, bool defaultLog, bool debugOutput, bool fileOutput)
{
    auto const existing = m_logs.find(name);
    if (existing != m_logs.end()) {
        return existing->second.get();
    }
    auto const added =
        m_logs.emplace(name, std::make_unique<Log>(name, debugOutput, fileOutput)).first->second.get();
    if (defaultLog || m_defaultLog == nullptr) {
        m_defaultLog = added;
    }
    return added;
}

Log *LogManager::getLog(String const &name)
{
    auto const found = m_logs.find(name);
    return found == m_logs.end() ? nullptr : found->second.get();
}

void LogManager::logMessage(String const &text, LogMessageLevel level)
{
    send(text, level);
}

void LogManager::logMessage(WString const &text, LogMessageLevel level)
{
    String narrow;
    narrow.toString(text);
    send(narrow, level);
}

void LogManager::logMessage(LogMessageLevel level, char const *format, ...)
{
    if (!passes(level)) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    sendFormatted(level, format, arguments);
    va_end(arguments);
}

void LogManager::setLogDetail(LoggingLevel detail)
{
    defaultLogLevel = detail;
    if (Log *const log = m_defaultLog) {
        log->setLogDetail(detail);
    }
}

void LogManager::setDefaultCallback(LogCallback callback)
{
    if (Log *const log = m_defaultLog) {
        LogCallback const before = log->getCallback();
        log->setCallback(callback);
        PluginMgr::registered(reinterpret_cast<void const *>(callback), [callback, before] {
            LogManager *const manager = InstancePtr();
            Log *const now = manager != nullptr ? manager->m_defaultLog.load() : nullptr;
            if (now != nullptr && now->getCallback() == callback) {
                now->setCallback(before);
            }
        });
    }
}

void LogManager::setCallbackFilter(String const &filter)
{
    if (Log *const log = m_defaultLog) {
        log->setCallbackFilter(filter);
    }
}

void LogManager::defLevelMessage(char const *format, ...)
{
    LogManager *const manager = InstancePtr();
    if (manager == nullptr) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    manager->sendFormatted(4, format, arguments);
    va_end(arguments);
}

void LogManager::changeIndent(int delta)
{
    int width = m_indent;
    while (!m_indent.compare_exchange_weak(width, std::max(0, width + delta))) {
    }
}

void LogManager::send(std::string_view text, LogMessageLevel level)
{
    Log *const log = m_defaultLog.load(std::memory_order_acquire);
    if (log == nullptr || !log->passes(level)) {
        return;
    }
    int const width = m_indent;
    if (width == 0) {
        log->output({}, text, level);
    } else {
        String const indent(std::string(static_cast<std::size_t>(width), ' '));
        log->output(indent, text, level);
    }
}

// Apart from its callers, so that a text below the threshold costs them no room for formatting.
__attribute__((noinline)) void LogManager::sendFormatted(LogMessageLevel level, char const *format,
                                                         std::va_list arguments)
{
    FormatBuffer buffer;
    send(buffer.format(format, arguments), level);
}

void logMessage(String const &text, LogMessageLevel level)
{
    LogManager *const manager = LogManager::InstancePtr();
    if (level != 0 && manager != nullptr) {
        manager->logMessage(text, level);
    }
}

void logMessage(LogMessageLevel level, char const *format, ...)
{
    LogManager *const manager = LogManager::InstancePtr();
    if (level == 0 || manager == nullptr || !manager->passes(level)) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    manager->sendFormatted(level, format, arguments);
    va_end(arguments);
}

} // namespace Qel
