#pragma once

#include "Support/OS/affinity.h"
#include "Support/OS/thread.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <vector>

namespace test {

/// While it lives, notes who is bound where instead of doing it.
class NotedAffinity final : public os::Affinity {
public:
    bool processMask(std::uint64_t &mask) override
    {
        mask = process;
        return tells;
    }
    bool bindCurrentThread(std::uint64_t mask) override { return bindThread(os::currentThreadId(), mask); }
    bool bindThread(std::uint32_t threadId, std::uint64_t mask) override
    {
        std::lock_guard const guard(m_lock);
        ++calls;
        bound[threadId] = mask;
        return true;
    }
    bool bindProcess(std::uint64_t mask) override
    {
        processMasks.push_back(mask);
        return true;
    }

    std::uint64_t process = 0b11;
    bool tells = true; ///< whether the mask of the process is known
    int calls = 0;     ///< of threads
    std::map<std::uint32_t, std::uint64_t> bound;
    std::vector<std::uint64_t> processMasks;

private:
    std::mutex m_lock;
    os::AffinityScope m_scope{*this};
};

} // namespace test
