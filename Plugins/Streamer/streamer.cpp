#include "streamer.h"

#include "System/File/archiveContainer.h"
#include "System/System/logManager.h"
#include "System/System/string.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <system_error>

using Qel::FileInfo;
using Qel::String;

namespace {

constexpr std::uint64_t noFlush = std::numeric_limits<std::uint64_t>::max();

bool isNamed(FileInfo const &info, char const *name)
{
    return std::strncmp(info.name, name, sizeof info.name - 1) == 0;
}

} // namespace

// While one exists, what was asked for later is not begun: a flush whose callbacks ask for more must end.
class Streamer::FlushScope {
public:
    // Under the lock.
    FlushScope(Streamer &streamer, Lock &lock)
        : m_streamer(streamer), m_lock(lock),
          m_outer(std::exchange(streamer.m_readBefore, streamer.m_requests))
    {
        streamer.m_work.notify_all(); // inside another flush more may be begun now
    }
    ~FlushScope()
    {
        if (!m_lock.owns_lock()) {
            m_lock.lock(); // a callback has thrown
        }
        m_streamer.m_readBefore = m_outer;
        m_streamer.m_work.notify_all();
    }

    FlushScope(FlushScope const &) = delete;
    FlushScope &operator=(FlushScope const &) = delete;

private:
    Streamer &m_streamer;
    Lock &m_lock;
    std::uint64_t m_outer;
};

Streamer::Streamer(Limits limits) : m_limit(limits.bytesInFlight), m_readBefore(noFlush)
{
    m_workers.reserve(limits.workers);
    try {
        while (m_workers.size() < limits.workers) {
            m_workers.emplace_back(&Streamer::work, this);
        }
    } catch (std::system_error const &) {
        Qel::logMessage(3, "Streamer: %u of %u threads\n", static_cast<unsigned>(m_workers.size()),
                        limits.workers);
    }
}

Streamer::~Streamer()
{
    flushRequests();
    {
        std::lock_guard const hold(m_lock);
        m_stopping = true;
        m_waiting.clear(); // what the last callbacks have asked for
    }
    m_work.notify_all();
    for (std::thread &worker : m_workers) {
        worker.join();
    }
}

void Streamer::requestFile(FileInfo *info, Qel::StreamCallback callback, void *user,
                           unsigned int memoryContext, Qel::ePriority priority)
{
    if (info == nullptr || info->archive == nullptr || callback == nullptr) {
        return;
    }
    auto request = std::make_unique<Request>();
    request->info = *info;
    request->callback = callback;
    request->user = user;
    request->memoryContext = memoryContext;
    {
        std::lock_guard const hold(m_lock);
        request->number = m_requests++;
        m_waiting.emplace(std::pair(std::uint32_t{priority}, request->number), std::move(request));
    }
    m_work.notify_one();
}

void Streamer::abortFile(char const *name)
{
    if (name == nullptr) {
        return;
    }
    std::lock_guard const hold(m_lock);
    std::erase_if(m_waiting, [&](auto const &entry) { return isNamed(entry.second->info, name); });
    for (Request *const request : m_active) {
        request->dropped = request->dropped || isNamed(request->info, name);
    }
    std::erase_if(m_done, [&](RequestPtr const &request) {
        bool const dropped = isNamed(request->info, name);
        if (dropped) {
            release(*request);
        }
        return dropped;
    });
    m_work.notify_all();
}

void Streamer::release(Request const &request)
{
    m_bytesInFlight -= request.info.size;
}

// The request that may be begun, or the end. Under the lock.
Streamer::Waiting::iterator Streamer::next()
{
    auto const request = std::find_if(m_waiting.begin(), m_waiting.end(), [this](auto const &entry) {
        return entry.second->number < m_readBefore;
    });
    bool const fits = request != m_waiting.end() &&
                      (m_bytesInFlight == 0 || m_bytesInFlight + request->second->info.size <= m_limit);
    return fits ? request : m_waiting.end();
}

void Streamer::work()
{
    Lock lock(m_lock);
    while (!m_stopping) {
        auto const request = next();
        if (request == m_waiting.end()) {
            m_work.wait(lock);
        } else {
            read(lock, request);
        }
    }
}

void Streamer::read(Lock &lock, Waiting::iterator place)
{
    RequestPtr request = std::move(place->second);
    m_waiting.erase(place);
    m_active.push_back(request.get());
    m_bytesInFlight += request->info.size;

    lock.unlock();
    try {
        request->failed = Qel::cArchiveContainer::_readResourceData(request->info, request->block,
                                                                    request->memoryContext) == 0;
    } catch (...) {
        request->failed = true; // an archive's fault must not end the thread
    }
    lock.lock();

    std::erase(m_active, request.get());
    if (request->dropped) {
        release(*request);
        m_work.notify_all();
    } else {
        m_done.push_back(std::move(request));
    }
    m_finished.notify_all();
}

void Streamer::deliverOne(Lock &lock)
{
    RequestPtr const request = std::move(m_done.front());
    m_done.pop_front();
    release(*request); // before the call: a flush in it must not wait for itself
    m_work.notify_all();

    lock.unlock();
    if (request->failed) {
        Qel::logMessage("Streamer: '" + String(request->info.name) + "' could not be read\n", 3);
    } else {
        request->callback(request->info.name, request->block, request->user, Qel::STREAM_CACHED);
    }
    lock.lock();
}

void Streamer::deliverFinished()
{
    Lock lock(m_lock);
    if (m_workers.empty()) {
        auto const request = next();
        if (request != m_waiting.end()) {
            read(lock, request);
        }
    }
    for (std::size_t left = m_done.size(); left > 0 && !m_done.empty(); --left) {
        deliverOne(lock);
    }
}

bool Streamer::isPending(std::uint64_t before) const
{
    auto const isOld = [before](auto const &request) { return request->number < before; };
    return std::any_of(m_waiting.begin(), m_waiting.end(),
                       [&](auto const &entry) { return isOld(entry.second); }) ||
           std::any_of(m_active.begin(), m_active.end(), isOld) ||
           std::any_of(m_done.begin(), m_done.end(), isOld);
}

void Streamer::flushRequests()
{
    Lock lock(m_lock);
    FlushScope const scope(*this, lock);
    std::uint64_t const mark = m_requests;
    while (isPending(mark)) {
        if (!m_done.empty()) {
            deliverOne(lock);
        } else if (auto const request = m_workers.empty() ? next() : m_waiting.end();
                   request != m_waiting.end()) {
            read(lock, request);
        } else {
            m_finished.wait(lock);
        }
    }
}

bool Streamer::frameStarted(Qel::FrameEvent const &)
{
    deliverFinished();
    return true;
}
