#pragma once

#include "Support/export.h"

#include <cstdint>

namespace os {

/// Which processors run which threads. The default asks the system; a test installs one of its own.
/// Bit n of a mask stands for processor n.
class QEL_API Affinity {
public:
    virtual ~Affinity() = default;

    /// The first 64 processors that the process was given.
    /// @return false if the system does not tell; @p mask is then unchanged
    virtual bool processMask(std::uint64_t &mask) = 0;

    /// Binds the calling thread. @return false if the system refuses; nothing has then changed
    virtual bool bindCurrentThread(std::uint64_t mask) = 0;

    /// Binds a thread of this process. @return false if there is none or the system refuses
    virtual bool bindThread(std::uint32_t threadId, std::uint64_t mask) = 0;

    /// Binds every thread of this process. @return false if the system refuses for any of them
    virtual bool bindProcess(std::uint64_t mask) = 0;
};

QEL_API Affinity &affinity(); ///< the one in use

/// Replaces the affinity calls for a scope, on every thread. Scopes nest; they end in reverse order.
class QEL_API AffinityScope {
public:
    /// @param affinity  not owned; must outlive the scope
    explicit AffinityScope(Affinity &affinity);
    ~AffinityScope();

    AffinityScope(AffinityScope const &) = delete;
    AffinityScope &operator=(AffinityScope const &) = delete;

private:
    Affinity *m_before;
};

} // namespace os
