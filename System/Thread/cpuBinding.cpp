#include "System/Thread/cpuBinding.h"

#include "Support/OS/affinity.h"
#include "Support/OS/clock.h"
#include "Support/OS/thread.h"

#include <mutex>

namespace Qel {

namespace {

constexpr std::uint8_t initialised = 1;
constexpr std::uint8_t active = 2;

// The bits of an entry: a number that no other thread of the process ever gets, the system's number of the
// thread, which comes again, and the binding.
constexpr int serialShift = 32;
constexpr int threadShift = 8;
constexpr std::uint64_t threadMask = 0xFFFFFF;
constexpr std::uint64_t bindingMask = 0xFF;

constinit std::mutex tableLock;
constinit std::atomic<std::uint32_t> lastSerial{0};

// In the room that every thread has from the start: the address is then an addition, and not a call.
[[gnu::tls_model("initial-exec")]] constinit thread_local std::uint64_t ownIdentity = 0;

std::uint64_t identityOfCaller()
{
    if (ownIdentity == 0) {
        ownIdentity = std::uint64_t{++lastSerial} << serialShift | (os::currentThreadId() & threadMask)
                                                                       << threadShift;
    }
    return ownIdentity;
}

std::uint32_t lowestBit(std::uint32_t mask)
{
    return mask & (0 - mask);
}

} // namespace

constinit std::atomic<std::uint8_t> cCpuBinding::m_flags{0};
constinit std::atomic<cCpuBinding::Entry> cCpuBinding::m_mainThread{0};
constinit std::array<std::uint32_t, 3> cCpuBinding::m_masks{};
constinit std::array<std::atomic<cCpuBinding::Entry>, cCpuBinding::mostThreads> cCpuBinding::m_table{};
constinit std::atomic<std::uint8_t> cCpuBinding::m_count{0};
constinit std::atomic<std::uint8_t> cCpuBinding::m_lastUsed{0};

void cCpuBinding::init(bool enable)
{
    if ((m_flags & initialised) != 0) {
        return;
    }
    m_flags = initialised;
    std::uint64_t process = 0;
    if (!enable || !os::affinity().processMask(process)) {
        return;
    }
    std::uint32_t const all =
        static_cast<std::uint32_t>(process) == 0 ? 1 : static_cast<std::uint32_t>(process);
    std::uint32_t const first = lowestBit(all & 0xFF);
    if (first == 0) {
        return;
    }
    std::uint32_t const second = lowestBit(all & ~first);
    m_masks = {all, first, second == 0 ? first : second};
    clearTable();
    signalMainThread();
    m_flags = initialised | active;
}

void cCpuBinding::clearTable()
{
    m_count = 0;
    for (std::atomic<Entry> &entry : m_table) {
        entry = 0;
    }
}

void cCpuBinding::deinit()
{
    m_flags = 0;
}

void cCpuBinding::signalMainThread()
{
    m_mainThread.store(identityOfCaller(), std::memory_order_relaxed);
}

void cCpuBinding::bindCurrentThread(eBinding binding)
{
    if ((m_flags.load(std::memory_order_acquire) & active) == 0) {
        return;
    }
    Entry const identity = identityOfCaller();
    if (binding >= BIND_AUTO) {
        binding = m_mainThread.load(std::memory_order_relaxed) == identity ? BIND_FIRST : BIND_SECOND;
    }
    Entry const wanted = identity | binding;
    if (m_table[m_lastUsed.load(std::memory_order_relaxed)].load(std::memory_order_relaxed) != wanted) {
        bindSlow(wanted, identity, binding);
    }
}

// The thread's place in the table, or the count if it has none.
std::uint8_t cCpuBinding::find(Entry identity)
{
    std::uint8_t const count = m_count.load(std::memory_order_acquire);
    std::uint8_t position = 0;
    while (position < count &&
           (m_table[position].load(std::memory_order_relaxed) & ~bindingMask) != identity) {
        ++position;
    }
    return position;
}

void cCpuBinding::bindSlow(Entry wanted, Entry identity, eBinding binding)
{
    std::uint8_t position = find(identity);
    if (position == mostThreads) {
        return; // before the lock: a thread without a place comes here at each reading of the counter
    }
    if (m_table[position].load(std::memory_order_relaxed) == wanted) {
        m_lastUsed.store(position, std::memory_order_relaxed);
        return;
    }

    std::lock_guard const guard(tableLock);
    // Only the thread itself makes its entry, but another one may have taken the free place meanwhile.
    position = find(identity);
    if (position == mostThreads || (m_flags.load() & active) == 0) {
        return;
    }
    m_table[position].store(wanted, std::memory_order_relaxed);
    if (position == m_count) {
        m_count.store(static_cast<std::uint8_t>(position + 1), std::memory_order_release);
    }
    m_lastUsed.store(position, std::memory_order_relaxed);
    os::affinity().bindCurrentThread(m_masks[binding]);
    os::sleepMs(0); // moves over before it goes on
}

void cCpuBinding::disable()
{
    if ((m_flags & active) == 0) {
        return;
    }
    std::lock_guard const guard(tableLock);
    std::uint64_t process = 0;
    if (os::affinity().processMask(process)) {
        for (std::uint8_t position = 0; position < m_count; ++position) {
            auto const id = static_cast<std::uint32_t>(m_table[position] >> threadShift & threadMask);
            os::affinity().bindThread(id, process);
        }
    }
    m_flags = initialised;
    clearTable();
}

} // namespace Qel
