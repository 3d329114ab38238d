#pragma once

#include "System/System/export.h"
#include "System/System/string.h"
#include "System/System/wString.h"

#include "Support/OS/file.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>

namespace Qel {

/// Weight of a message. The library uses 1 (minor), 2 (normal), 3 (important) and 4 (stamped with the time).
/// Level 0 means no logging at all to the free logMessage functions.
using LogMessageLevel = std::int32_t;

/// Detail of a log, 2 by default. A message passes when detail plus level is at least 4.
using LoggingLevel = std::int32_t;

using LogCallback = void (*)(class String const &text);

/// One log: a file, an echo on the error stream and a filtered callback, each as wished.
///
/// A log has no lines of its own: texts carry their newlines. Each text reaches the file by one system call
/// before the operation returns, so the last text before a crash is there.
///
/// @par Ownership  Logs are made and owned by LogManager.
/// @par Threads    Any thread may log; texts of different threads interleave whole. Settings belong to the
///                 thread that runs the frame, but may change while others log.
class QEL_API Log {
public:
    /// @param name         path of the file, if there is one
    /// @param debugOutput  echo each text on the error stream
    /// @param fileOutput   write a file: an earlier one of that name is emptied. If it cannot be opened, what
    ///                     is meant for it goes nowhere and nothing is reported.
    Log(String const &name, bool debugOutput, bool fileOutput);
    virtual ~Log();

    Log(Log const &) = delete;
    Log &operator=(Log const &) = delete;

    /// Formats as printf does and logs the text, cut at 4095 bytes. Nothing is formatted below the threshold.
    virtual void logMessage(LogMessageLevel level, char const *format, ...) QEL_PRINTF(3, 4);

    /// Logs wide text as UTF-8.
    virtual void logMessage(WString const &text, LogMessageLevel level);

    /// Logs a text if it is within the threshold: to the error stream, to the callback if the filter lets it
    /// through, then to the file, there after the local time ("hh:mm:ss.mmm - ") if the level is exactly 4.
    /// An empty text is dropped.
    virtual void logMessage(String const &text, LogMessageLevel level);

    virtual void setLogDetail(LoggingLevel detail);

    /// Is detail plus @p level at least 4?
    virtual bool isWithinThreshold(LogMessageLevel level);

    /// Sets who is told of each text that passes the filter; null for nobody. The callback runs on the thread
    /// that logs; what it logs itself is not told to callbacks.
    void setCallback(LogCallback callback);
    LogCallback getCallback() const { return m_callback.load(std::memory_order_acquire); }

    /// Sets which texts the callback is told: wildcard patterns separated by "|", case-sensitive, each cut at
    /// 4095 bytes; a text passes if one of them matches it. An empty filter passes everything.
    void setCallbackFilter(String const &filter);

private:
    friend class LogManager;

    bool passes(LogMessageLevel level) const
    {
        return std::int64_t{m_detail.load(std::memory_order_relaxed)} + level >= 4;
    }
    void output(std::string_view indent, std::string_view text, LogMessageLevel level);
    void echo(std::string_view text);
    void toFile(std::string_view indent, std::string_view text, LogMessageLevel level);
    bool passesFilter(String const &text);

    std::unique_ptr<os::TextFile> m_file;
    std::atomic<LoggingLevel> m_detail{2};
    bool m_debugOutput;
    std::atomic<LogCallback> m_callback{nullptr};
    String m_callbackFilter; // under m_filterLock
    std::mutex m_filterLock;
};

} // namespace Qel
