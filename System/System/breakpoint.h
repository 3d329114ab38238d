#pragma once

#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// A data breakpoint: stops the program when memory is touched. Not available in this library, so that set()
/// and singleStep() say no and the program runs on.
class QEL_API Breakpoint {
public:
    enum Condition : std::int32_t {
        CONDITION_EXECUTE = 0,    ///< the instruction at the address is run
        CONDITION_WRITE = 1,      ///< the memory is written
        CONDITION_READ_WRITE = 3, ///< the memory is read or written
    };

    Breakpoint(void *address, int length, Condition condition); ///< calls set()

    /// Would arm the breakpoint.
    /// @param length  bytes watched from @p address on
    /// @return false
    bool set(void *address, int length, Condition condition);

    void clear();             ///< would disarm the breakpoint
    static bool singleStep(); ///< would stop after the next instruction; false

protected:
    /// Replaces some bits of a value.
    /// @param value     changed in place
    /// @param position  the lowest bit replaced; one outside the value changes nothing
    /// @param count     bits replaced; those beyond the value are dropped, 0 or less changes nothing
    /// @param bits      the new bits, lowest first
    static void setBits(std::uint32_t &value, int position, int count, int bits);

    std::int32_t m_slot = -1; ///< hardware slot, -1 for none
};

} // namespace Qel
