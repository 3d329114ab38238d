#pragma once

#include "Support/export.h"

#include <cstdint>

namespace os {

/// What the identification instruction leaves in its four registers.
struct CpuidAnswer {
    std::uint32_t eax = 0;
    std::uint32_t ebx = 0;
    std::uint32_t ecx = 0;
    std::uint32_t edx = 0;
};

/// Where the facts about the processor come from. The default asks the one that runs this; a test installs
/// one of its own. On another architecture than x86 there are no answers, and the time stamp is 0.
class QEL_API Processor {
public:
    virtual ~Processor() = default;

    /// Can the identification bit of the flags register be changed, that is, are there answers at all?
    virtual bool canIdentify() = 0;

    /// Runs the identification instruction as it is, without a look at the highest leaf.
    /// @return false if it can not be run; @p answer is then unchanged
    virtual bool cpuid(std::uint32_t leaf, CpuidAnswer &answer) = 0;

    virtual std::uint64_t timeStamp() = 0;   ///< the running count of the processor
    virtual std::uint32_t systemCount() = 0; ///< processors that the system runs; at least 1
};

QEL_API Processor &processor(); ///< the one in use

/// Replaces the processor's answers for a scope, on every thread. Scopes nest; they end in reverse order.
class QEL_API ProcessorScope {
public:
    /// @param processor  not owned; must outlive the scope
    explicit ProcessorScope(Processor &processor);
    ~ProcessorScope();

    ProcessorScope(ProcessorScope const &) = delete;
    ProcessorScope &operator=(ProcessorScope const &) = delete;

private:
    Processor *m_before;
};

} // namespace os
