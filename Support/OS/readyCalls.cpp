#include "Support/OS/readyCalls.h"

#include "Support/OS/thread.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <iterator>
#include <memory>
#include <mutex>
#include <new>
#include <unordered_map>
#include <utility>

namespace os {

namespace {

constexpr std::size_t stackBytes = 0x100000;

// A number that no other thread of the process has had or will have, as thread ids are used again.
std::uint64_t ownSerial()
{
    static std::atomic<std::uint64_t> last{0};
    thread_local std::uint64_t const own = ++last;
    return own;
}

class Waiter {
public:
    // Never destroyed, as static objects may still hold handles when its thread has been stopped.
    static Waiter &instance()
    {
        alignas(Waiter) static unsigned char room[sizeof(Waiter)];
        static Waiter *const waiter = ::new (room) Waiter;
        return *waiter;
    }

    void stop()
    {
        std::unique_ptr<Thread> thread;
        {
            std::lock_guard const guard(m_lock);
            m_stopped = true;
            thread = std::move(m_thread);
        }
        if (thread != nullptr) {
            eventfd_write(m_stop, 1);
            thread->join();
        }
        std::lock_guard const guard(m_lock);
        m_entries = {};
        for (int *const handle : {&m_handles, &m_stop}) {
            if (*handle >= 0) {
                close(*handle);
            }
            *handle = -1;
        }
    }

    bool add(int handle, std::function<void()> call)
    {
        std::lock_guard const guard(m_lock);
        if (!start()) {
            return false;
        }
        acceptCompletions();
        Entry &entry = m_entries[handle];
        bool const isNew = entry.thread == 0;
        entry = {currentThreadId(), ownSerial(), std::move(call)};
        epoll_event event{};
        event.events = EPOLLIN | EPOLLONESHOT;
        event.data.fd = handle;
        if (epoll_ctl(m_handles, isNew ? EPOLL_CTL_ADD : EPOLL_CTL_MOD, handle, &event) != 0) {
            m_entries.erase(handle);
            return false;
        }
        return true;
    }

    void forget(int handle)
    {
        std::lock_guard const guard(m_lock);
        if (m_entries.erase(handle) != 0) {
            epoll_ctl(m_handles, EPOLL_CTL_DEL, handle, nullptr);
        }
    }

private:
    struct Entry {
        std::uint32_t thread = 0;
        std::uint64_t serial = 0;
        std::function<void()> call;
    };

    bool start()
    {
        if (m_thread != nullptr || m_stopped) {
            return !m_stopped;
        }
        if (m_handles < 0) {
            m_handles = epoll_create1(EPOLL_CLOEXEC);
            m_stop = eventfd(0, EFD_CLOEXEC);
            epoll_event event{};
            event.events = EPOLLIN;
            event.data.fd = m_stop;
            if (m_handles < 0 || m_stop < 0 || epoll_ctl(m_handles, EPOLL_CTL_ADD, m_stop, &event) != 0) {
                return false;
            }
        }
        m_thread = Thread::start(&Waiter::run, this, stackBytes, std::make_shared<ThreadEvents>());
        return m_thread != nullptr;
    }

    static void run(void *self)
    {
        auto *const waiter = static_cast<Waiter *>(self);
        epoll_event events[16];
        for (;;) {
            int const count = epoll_wait(waiter->m_handles, events, std::size(events), -1);
            if (count < 0 && errno != EINTR) {
                return;
            }
            for (int i = 0; i < count; ++i) {
                if (events[i].data.fd == waiter->m_stop) {
                    return;
                }
                waiter->queue(events[i].data.fd);
            }
        }
    }

    void queue(int handle)
    {
        std::lock_guard const guard(m_lock);
        auto const found = m_entries.find(handle);
        if (found == m_entries.end() || !found->second.call) {
            return;
        }
        Entry &entry = found->second;
        queueCompletion(entry.thread, [serial = entry.serial, call = std::exchange(entry.call, nullptr)] {
            if (serial == ownSerial()) {
                call();
            }
        });
    }

    std::mutex m_lock;
    std::unordered_map<int, Entry> m_entries; // every handle that the system knows of
    int m_handles = -1;
    int m_stop = -1;
    bool m_stopped = false;
    std::unique_ptr<Thread> m_thread;
};

// The thread goes with the library.
struct Stopper {
    ~Stopper() { Waiter::instance().stop(); }
} const stopper;

} // namespace

bool ReadyCalls::add(int handle, std::function<void()> call)
{
    return Waiter::instance().add(handle, std::move(call));
}

void ReadyCalls::forget(int handle)
{
    Waiter::instance().forget(handle);
}

} // namespace os
