#include "System/System/log.h"

#include "System/System/formatBuffer.h"
#include "System/System/stringTools.h"

#include "Support/OS/clock.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>

namespace Qel {

namespace {

constexpr std::size_t patternLimit = 4095;

// "hh:mm:ss.mmm - ". Hour, minute and second are written anew only when they change.
class TimeStamp {
public:
    std::string_view of(os::LocalTime const &now)
    {
        if (now.second != m_written.second || now.minute != m_written.minute || now.hour != m_written.hour) {
            m_written = now;
            put(now.hour, 0, 2);
            put(now.minute, 3, 2);
            put(now.second, 6, 2);
        }
        put(now.ms, 9, 3);
        return {m_text.data(), m_text.size()};
    }

private:
    void put(int value, std::size_t at, std::size_t digits)
    {
        while (digits-- > 0) {
            m_text[at + digits] = static_cast<char>('0' + value % 10);
            value /= 10;
        }
    }

    os::LocalTime m_written{};
    std::array<char, 15> m_text{'0', '0', ':', '0', '0', ':', '0', '0', '.', '0', '0', '0', ' ', '-', ' '};
};

constinit thread_local TimeStamp timeStamp;

// What a callback logs in its turn is not told to callbacks, or they would never end.
constinit thread_local bool insideCallback = false;

class CallbackScope {
public:
    CallbackScope() { insideCallback = true; }
    ~CallbackScope() { insideCallback = false; }

    CallbackScope(CallbackScope const &) = delete;
    CallbackScope &operator=(CallbackScope const &) = delete;
};

} // namespace

Log::Log(String const &name, bool debugOutput, bool fileOutput) : m_debugOutput(debugOutput)
{
    if (fileOutput) {
        m_file = std::make_unique<os::TextFile>();
        m_file->open(name.c_str());
    }
}

Log::~Log() = default;

void Log::logMessage(LogMessageLevel level, char const *format, ...)
{
    if (!passes(level)) {
        return;
    }
    FormatBuffer buffer;
    std::va_list arguments;
    va_start(arguments, format);
    std::string_view const text = buffer.format(format, arguments);
    va_end(arguments);
    output({}, text, level);
}

void Log::logMessage(WString const &text, LogMessageLevel level)
{
    if (text.empty() || !passes(level)) {
        return;
    }
    String narrow;
    narrow.toString(text);
    output({}, narrow, level);
}

void Log::logMessage(String const &text, LogMessageLevel level)
{
    if (passes(level)) {
        output({}, text, level);
    }
}

void Log::setLogDetail(LoggingLevel detail)
{
    m_detail.store(detail, std::memory_order_relaxed);
}

bool Log::isWithinThreshold(LogMessageLevel level)
{
    return passes(level);
}

void Log::setCallback(LogCallback callback)
{
    m_callback.store(callback, std::memory_order_release);
}

void Log::setCallbackFilter(String const &filter)
{
    std::lock_guard const guard(m_filterLock);
    m_callbackFilter = filter;
}

// An indent is a text of its own to everyone who is told. To the file both go in one call, unless a callback
// could see the file between them.
void Log::output(std::string_view indent, std::string_view text, LogMessageLevel level)
{
    LogCallback callback = m_callback.load(std::memory_order_acquire);
    if (callback != nullptr && insideCallback) {
        callback = nullptr;
    }
    if (callback != nullptr && !indent.empty()) {
        output({}, indent, level);
        indent = {};
    }
    if (text.empty()) {
        text.swap(indent);
    }
    if (text.empty()) {
        return;
    }
    if (m_debugOutput) {
        echo(indent);
        echo(text);
    }
    if (callback != nullptr) {
        String const whole(text.data(), text.size());
        if (passesFilter(whole)) {
            CallbackScope const scope;
            callback(whole);
        }
    }
    if (m_file) {
        toFile(indent, text, level);
    }
}

void Log::echo(std::string_view text)
{
    if (!text.empty()) {
        std::fprintf(stderr, "%.*s", static_cast<int>(std::min<std::size_t>(text.size(), INT32_MAX)),
                     text.data());
    }
}

void Log::toFile(std::string_view indent, std::string_view text, LogMessageLevel level)
{
    if (level == 4) {
        std::string_view const stamp = timeStamp.of(os::localTime());
        if (indent.empty()) {
            m_file->write({stamp, text});
        } else {
            m_file->write({stamp, indent, stamp, text});
        }
    } else if (indent.empty()) {
        m_file->write(text);
    } else {
        m_file->write({indent, text});
    }
}

bool Log::passesFilter(String const &text)
{
    String filter;
    {
        std::lock_guard const guard(m_filterLock);
        filter = m_callbackFilter;
    }
    if (filter.empty()) {
        return true;
    }
    unsigned char const *const map = StringTools::getMapTable(MAP_IDENTITY);
    for (std::size_t at = 0; at <= filter.size();) {
        std::size_t const end = std::min(filter.find('|', at), filter.size());
        String const pattern(filter.c_str() + at, std::min(end - at, patternLimit));
        if (!pattern.empty() && StringTools::wcMatch(pattern.c_str(), text.c_str(), map)) {
            return true;
        }
        at = end + 1;
    }
    return false;
}

} // namespace Qel
