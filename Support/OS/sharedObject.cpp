#include "Support/OS/sharedObject.h"

#include "Support/OS/sharedBlock.h"
#include "Support/OS/signal.h"
#include "Support/OS/signalWord.h"
#include "Support/OS/thread.h"

#include <pthread.h>

#include <cerrno>
#include <new>

namespace os {

namespace {

bool prepareMutex(void *memory)
{
    pthread_mutexattr_t attributes{};
    if (pthread_mutexattr_init(&attributes) != 0) {
        return false;
    }
    bool const ready = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE) == 0 &&
                       pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED) == 0 &&
                       pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST) == 0 &&
                       pthread_mutex_init(static_cast<pthread_mutex_t *>(memory), &attributes) == 0;
    pthread_mutexattr_destroy(&attributes);
    return ready;
}

bool prepareSignal(void *memory)
{
    new (memory) std::atomic<std::uint32_t>(0);
    return true;
}

void lockMutex(pthread_mutex_t &mutex, LockHolder &holder)
{
    if (pthread_mutex_lock(&mutex) == EOWNERDEAD) {
        pthread_mutex_consistent(&mutex);
    }
    holder.thread.store(currentThreadId(), std::memory_order_relaxed);
    ++holder.depth;
}

bool unlockMutex(pthread_mutex_t &mutex, LockHolder &holder)
{
    // Only the holder can find its own number here.
    if (holder.thread.load(std::memory_order_relaxed) != currentThreadId()) {
        return false;
    }
    if (--holder.depth == 0) {
        holder.thread.store(0, std::memory_order_relaxed);
    }
    return pthread_mutex_unlock(&mutex) == 0;
}

class NamedMutex final : public SharedMutex {
public:
    explicit NamedMutex(std::shared_ptr<SharedBlock> block) : m_block(std::move(block)) {}
    ~NamedMutex() override
    {
        // The system remembers where a held lock lies; that place goes with the last user.
        while (m_block.use_count() == 1 && unlock()) {
        }
    }

    void lock() override { lockMutex(mutex(), m_block->holder()); }
    bool unlock() override { return unlockMutex(mutex(), m_block->holder()); }

private:
    pthread_mutex_t &mutex() const { return *static_cast<pthread_mutex_t *>(m_block->memory()); }

    std::shared_ptr<SharedBlock> m_block;
};

class LocalMutex final : public SharedMutex {
public:
    LocalMutex() : m_ready(prepareMutex(&m_mutex)) {}
    ~LocalMutex() override
    {
        if (m_ready) {
            pthread_mutex_destroy(&m_mutex);
        }
    }

    bool ready() const { return m_ready; }
    void lock() override { lockMutex(m_mutex, m_holder); }
    bool unlock() override { return unlockMutex(m_mutex, m_holder); }

private:
    pthread_mutex_t m_mutex{};
    LockHolder m_holder;
    bool m_ready;
};

class NamedSignal final : public SharedSignal {
public:
    explicit NamedSignal(std::shared_ptr<SharedBlock> block) : m_block(std::move(block)) {}

    void give() override { giveSignal(word(), FutexScope::Shared); }
    void wait() override { waitSignal(word(), FutexScope::Shared); }

private:
    std::atomic<std::uint32_t> &word() const
    {
        return *static_cast<std::atomic<std::uint32_t> *>(m_block->memory());
    }

    std::shared_ptr<SharedBlock> m_block;
};

class LocalSignal final : public SharedSignal {
public:
    void give() override { m_signal.give(); }
    void wait() override { m_signal.wait(); }

private:
    Signal m_signal;
};

bool isName(char const *name)
{
    return name != nullptr && *name != '\0';
}

} // namespace

std::unique_ptr<SharedMutex> SharedMutex::open(char const *name)
{
    if (isName(name)) {
        auto block = SharedBlock::open('m', name, sizeof(pthread_mutex_t), prepareMutex);
        return block == nullptr ? nullptr : std::make_unique<NamedMutex>(std::move(block));
    }
    auto local = std::make_unique<LocalMutex>();
    return local->ready() ? std::move(local) : nullptr;
}

std::unique_ptr<SharedSignal> SharedSignal::open(char const *name)
{
    if (isName(name)) {
        auto block = SharedBlock::open('s', name, sizeof(std::atomic<std::uint32_t>), prepareSignal);
        return block == nullptr ? nullptr : std::make_unique<NamedSignal>(std::move(block));
    }
    return std::make_unique<LocalSignal>();
}

} // namespace os
