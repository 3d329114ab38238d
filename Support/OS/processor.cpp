#include "Support/OS/processor.h"

#include <unistd.h>

#include <atomic>

#if defined(__x86_64__) || defined(__i386__)
#define OS_X86 1
#include <cpuid.h>
#include <x86intrin.h>
#else
#define OS_X86 0
#endif

namespace os {

namespace {

class ThisProcessor final : public Processor {
public:
    bool canIdentify() override
    {
#if OS_X86
        constexpr std::uint64_t identification = 0x200000;
        auto const flags = __readeflags();
        __writeeflags(flags ^ identification);
        bool const changed = ((__readeflags() ^ flags) & identification) != 0;
        __writeeflags(flags);
        return changed;
#else
        return false;
#endif
    }

    bool cpuid([[maybe_unused]] std::uint32_t leaf, [[maybe_unused]] CpuidAnswer &answer) override
    {
#if OS_X86
        __cpuid_count(leaf, 0, answer.eax, answer.ebx, answer.ecx, answer.edx);
        return true;
#else
        return false;
#endif
    }

    std::uint64_t timeStamp() override
    {
#if OS_X86
        return __rdtsc();
#else
        return 0;
#endif
    }

    std::uint32_t systemCount() override
    {
        long const count = sysconf(_SC_NPROCESSORS_ONLN);
        return count < 1 ? 1 : static_cast<std::uint32_t>(count);
    }
};

constinit ThisProcessor thisProcessor;
constinit std::atomic<Processor *> active{&thisProcessor};

} // namespace

Processor &processor()
{
    return *active.load(std::memory_order_acquire);
}

ProcessorScope::ProcessorScope(Processor &processor) : m_before(active.exchange(&processor))
{
}

ProcessorScope::~ProcessorScope()
{
    active.store(m_before);
}

} // namespace os
