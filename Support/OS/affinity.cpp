#include "Support/OS/affinity.h"

#include "Support/OS/process.h"

#include <sched.h>

#include <atomic>
#include <cstddef>
#include <vector>

namespace os {

namespace {

constexpr std::size_t maskBits = 64;

cpu_set_t setOf(std::uint64_t mask)
{
    cpu_set_t set;
    CPU_ZERO(&set);
    for (std::size_t cpu = 0; cpu < maskBits; ++cpu) {
        if ((mask >> cpu & 1) != 0) {
            CPU_SET(cpu, &set);
        }
    }
    return set;
}

std::uint64_t ownMask()
{
    cpu_set_t set;
    CPU_ZERO(&set);
    if (sched_getaffinity(0, sizeof set, &set) != 0) {
        return 0;
    }
    std::uint64_t mask = 0;
    for (std::size_t cpu = 0; cpu < maskBits; ++cpu) {
        mask |= CPU_ISSET(cpu, &set) ? std::uint64_t{1} << cpu : 0;
    }
    return mask;
}

// Only threads have masks on this system. What the loading thread had at load is taken for the process's.
std::uint64_t const maskAtLoad = ownMask();

class SystemAffinity final : public Affinity {
public:
    bool processMask(std::uint64_t &mask) override
    {
        if (maskAtLoad == 0) {
            return false;
        }
        mask = maskAtLoad;
        return true;
    }

    bool bindCurrentThread(std::uint64_t mask) override
    {
        cpu_set_t const set = setOf(mask);
        return sched_setaffinity(0, sizeof set, &set) == 0;
    }

    bool bindThread(std::uint32_t threadId, std::uint64_t mask) override
    {
        cpu_set_t const set = setOf(mask);
        // 0 would mean the caller.
        return threadId != 0 && sched_setaffinity(static_cast<pid_t>(threadId), sizeof set, &set) == 0;
    }

    bool bindProcess(std::uint64_t mask) override
    {
        std::vector<std::uint32_t> ids;
        bool bound = processThreads(ids);
        for (std::uint32_t const id : ids) {
            bound = bindThread(id, mask) && bound;
        }
        return bound;
    }
};

constinit SystemAffinity systemAffinity;
constinit std::atomic<Affinity *> active{&systemAffinity};

} // namespace

Affinity &affinity()
{
    return *active.load(std::memory_order_acquire);
}

AffinityScope::AffinityScope(Affinity &affinity) : m_before(active.exchange(&affinity))
{
}

AffinityScope::~AffinityScope()
{
    active.store(m_before);
}

} // namespace os
