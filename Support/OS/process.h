#pragma once

#include "Support/export.h"

#include <cstdint>
#include <vector>

namespace os {

/// Appends the numbers of this process's threads, in the system's order.
/// @return false if the system does not tell; @p ids is then unchanged
QEL_API bool processThreads(std::vector<std::uint32_t> &ids);

/// Processor time that all threads of this process have used.
/// @param time  kernel and user time in units of 100 ns
/// @return false if the system does not tell
QEL_API bool processCpuTime(std::uint64_t &time);

/// What the system says of itself.
struct SystemVersion {
    std::uint32_t platform = 0; ///< the family: one of the constants below
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    std::uint32_t build = 0;
    std::uint32_t servicePackMajor = 0;
    std::uint32_t servicePackMinor = 0;
    char servicePack[128] = {}; ///< text, ends with a zero

    static constexpr std::uint32_t oldWindows = 0; ///< 3.1
    static constexpr std::uint32_t windows9x = 1;  ///< 95, 98, Millennium
    static constexpr std::uint32_t windowsNt = 2;
    static constexpr std::uint32_t otherSystem = 3; ///< the kernel's release in major, minor, build
};

/// @return false if the system does not tell
QEL_API bool systemVersion(SystemVersion &version);

using SystemVersionQuery = bool (*)(SystemVersion &version);

/// Replaces systemVersion() for a scope, on every thread. Scopes nest; they end in reverse order.
class QEL_API SystemVersionScope {
public:
    explicit SystemVersionScope(SystemVersionQuery query);
    ~SystemVersionScope();

    SystemVersionScope(SystemVersionScope const &) = delete;
    SystemVersionScope &operator=(SystemVersionScope const &) = delete;

private:
    SystemVersionQuery m_before;
};

} // namespace os
