#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace os {

/// Which thread of this process holds a lock, and how often.
struct LockHolder {
    std::atomic<std::uint32_t> thread{0}; ///< currentThreadId() of the holder; 0 if it is none of ours
    std::uint32_t depth = 0;              ///< the holder's
};

/// A small block of memory under a name, zeroed for its first user and gone after its last one.
///
/// Each user holds a shared file lock for as long as it lives. The system takes that lock back from a
/// process that dies, so the count of users is never wrong, and the next one to come first clears what the
/// dead have left. Inside a process all users of a name share one mapping, since the system remembers by its
/// address where a held lock lies.
class SharedBlock {
public:
    /// Prepares the zeroed block of a first user, while all others wait.
    using Prepare = bool (*)(void *memory);

    /// @param kind  a letter that keeps objects of different kinds apart
    /// @return null on failure
    static std::shared_ptr<SharedBlock> open(char kind, char const *name, std::size_t size, Prepare prepare);
    ~SharedBlock();

    SharedBlock(SharedBlock const &) = delete;
    SharedBlock &operator=(SharedBlock const &) = delete;

    void *memory() const { return m_memory; }
    LockHolder &holder() { return m_holder; } ///< of the lock in the block

private:
    SharedBlock(std::string path, int handle, std::size_t size);

    static std::shared_ptr<SharedBlock> openFile(std::string const &path, std::size_t size, Prepare prepare);
    bool enter(Prepare prepare);
    bool isNamed() const;

    std::string m_path;
    int m_handle;
    std::size_t m_size;
    int m_process; // that opened it; a forked child has the object too, but no lock of its own
    void *m_memory = nullptr;
    LockHolder m_holder;
};

} // namespace os
