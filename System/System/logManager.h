#pragma once

#include "System/Patterns/tSingleton.h"
#include "System/System/export.h"
#include "System/System/log.h"
#include "System/System/logIndent.h" // for whoever logs
#include "System/System/string.h"

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <map>
#include <memory>
#include <string_view>

namespace Qel {

class LogManager;
extern template class QEL_API tSingleton<LogManager>;

/// Owns any number of logs by name and sends what the library reports to one of them, the default log.
///
/// Root makes one with the default log "debug.log". Library code logs through the singleton and does nothing
/// when there is none:
///
/// @code
/// if (LogManager::checkDefLogLevel(1)) {
///     LogManager::defLevelMessage("%u frames\n", frames);
/// }
/// @endcode
///
/// @par Threads  Any thread may log. Logs are made, and settings changed, on the thread that runs the frame.
class QEL_API LogManager : public tSingleton<LogManager> {
public:
    /// Detail that checkDefLogLevel() goes by, 2 at start. Separate from each log's own detail: only
    /// setLogDetail() changes both.
    static std::atomic<LoggingLevel> defaultLogLevel;

    LogManager();
    ~LogManager(); ///< closes all logs

    LogManager(LogManager const &) = delete;
    LogManager &operator=(LogManager const &) = delete;

    /// Makes a log, or gives the one of that name as it is, whatever the flags say.
    /// @param name         its name, and the path of its file
    /// @param defaultLog   make it the default log; the first one is that in any case
    /// @param debugOutput  echo its texts on the error stream
    /// @param fileOutput   write its texts to the file @p name, which is emptied first
    /// @return the log, owned by the manager
    Log *createLog(String const &name, bool defaultLog, bool debugOutput, bool fileOutput);

    Log *getLog(String const &name); ///< null if there is none of that name

    /// Sends the indent, if there is one, and then the text to the default log.
    void logMessage(String const &text, LogMessageLevel level);
    void logMessage(WString const &text, LogMessageLevel level); ///< as UTF-8

    /// Formats as printf does, cut at 4095 bytes. Nothing is formatted below the threshold.
    void logMessage(LogMessageLevel level, char const *format, ...) QEL_PRINTF(3, 4);

    LoggingLevel getLogDetail() { return defaultLogLevel; }

    /// Sets defaultLogLevel and the default log's detail.
    void setLogDetail(LoggingLevel detail);

    /// Sets who is told of the default log's texts; without a default log, no effect. One that a plugin sets
    /// when it starts goes with the plugin.
    void setDefaultCallback(LogCallback callback);
    void setCallbackFilter(String const &filter); ///< of the default log; without one, no effect

    /// Is defaultLogLevel plus @p level at least 4? The guard of verbose lines; 1 for traces, 3 for warnings.
    static bool checkDefLogLevel(LogMessageLevel level)
    {
        return std::int64_t{defaultLogLevel.load(std::memory_order_relaxed)} + level >= 4;
    }

    /// Formats as printf does, cut at 4095 bytes, and logs at level 4, so that the file has the time before
    /// it. Does nothing without a manager.
    static void defLevelMessage(char const *format, ...) QEL_PRINTF(1, 2);

protected:
    friend class LogIndent;

    /// Makes the indent wider or narrower, at least 0 wide.
    void changeIndent(int delta);

private:
    friend void logMessage(LogMessageLevel level, char const *format, ...);

    bool passes(LogMessageLevel level) const
    {
        Log const *const log = m_defaultLog.load(std::memory_order_acquire);
        return log != nullptr && log->passes(level);
    }
    void send(std::string_view text, LogMessageLevel level);
    void sendFormatted(LogMessageLevel level, char const *format, std::va_list arguments)
        __attribute__((format(printf, 3, 0)));

    std::map<String, std::unique_ptr<Log>> m_logs;
    std::atomic<Log *> m_defaultLog{nullptr};
    std::atomic<int> m_indent{0}; // blanks; a width, so that threads may log while it changes
};

/// Logs to the default log. Nothing happens at level 0 or without a LogManager.
QEL_API void logMessage(String const &text, LogMessageLevel level);

/// The same after formatting as printf does, cut at 4095 bytes.
QEL_API void logMessage(LogMessageLevel level, char const *format, ...) QEL_PRINTF(2, 3);

} // namespace Qel
