#pragma once

#include "System/System/logManager.h"

#include <string>

namespace test {

/// A log manager whose default log is caught in memory. One at a time.
class LogLines {
public:
    explicit LogLines(Qel::LoggingLevel detail = 2)
    {
        caught().clear();
        m_manager.createLog("caught", true, false, false);
        m_manager.setDefaultCallback(&append);
        m_before = m_manager.getLogDetail();
        m_manager.setLogDetail(detail);
    }
    ~LogLines() { m_manager.setLogDetail(m_before); }

    LogLines(LogLines const &) = delete;
    LogLines &operator=(LogLines const &) = delete;

    /// What was logged since the last call.
    std::string take() const
    {
        std::string text;
        text.swap(caught());
        return text;
    }

private:
    static std::string &caught()
    {
        static std::string all;
        return all;
    }
    static void append(Qel::String const &text) { caught() += text.c_str(); }

    Qel::LogManager m_manager;
    Qel::LoggingLevel m_before;
};

} // namespace test
