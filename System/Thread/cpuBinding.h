#pragma once

#include "System/System/export.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace Qel {

/// Pins threads to processors, so that a fine counter is read on the same one each time.
///
/// All static. PlatformManager calls init(); until then, and where binding is off, bindCurrentThread() does
/// nothing.
///
/// @par Threads  bindCurrentThread() and signalMainThread() on any thread; init(), disable() and deinit() on
///               the main thread while no other one binds.
class QEL_API cCpuBinding {
public:
    enum eBinding : std::uint32_t {
        BIND_ANY = 0,    ///< every processor of the process
        BIND_FIRST = 1,  ///< the first processor of the process
        BIND_SECOND = 2, ///< the second one, or the first if there is only one
        BIND_AUTO = 3,   ///< the first on the main thread, the second on all others; so does any value above
    };

    cCpuBinding() = delete;

    /// Reads the process's processors and takes the calling thread for the main thread. Does nothing when
    /// it has run before. With none of the first eight processors in use, binding stays off.
    /// @param enable  false leaves binding off
    static void init(bool enable);
    static void deinit(); ///< binding is off, and init() may run again

    /// Binds the calling thread, unless it is bound so already. The 17th thread is left as it is.
    static void bindCurrentThread(eBinding binding);

    static void signalMainThread(); ///< takes the calling thread for the main thread from now on

    /// Gives every bound thread all processors of the process back, and turns binding off.
    static void disable();

private:
    static constexpr std::uint32_t mostThreads = 16;

    // A thread's identity and its binding in one word, so that it can be read without the lock.
    using Entry = std::uint64_t;

    static void bindSlow(Entry wanted, Entry identity, eBinding binding);
    static std::uint8_t find(Entry identity);
    static void clearTable();

    static std::atomic<std::uint8_t> m_flags;
    static std::atomic<Entry> m_mainThread;
    static std::array<std::uint32_t, 3> m_masks; // by eBinding
    static std::array<std::atomic<Entry>, mostThreads> m_table;
    static std::atomic<std::uint8_t> m_count;
    static std::atomic<std::uint8_t> m_lastUsed;
};

} // namespace Qel
