#pragma once

#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// Indents what is logged while it lives.
class QEL_API LogIndent {
public:
    LogIndent() : LogIndent(2) {}
    explicit LogIndent(unsigned short width); ///< in blanks
    ~LogIndent();

    LogIndent(LogIndent const &) = delete;
    LogIndent &operator=(LogIndent const &) = delete;

private:
    std::uint16_t m_width;
};

} // namespace Qel
