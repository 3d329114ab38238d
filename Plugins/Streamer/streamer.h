#pragma once

#include "System/File/archiveStreaming.h"
#include "System/File/fileInfo.h"
#include "System/System/frameListener.h"

#include "Support/PoolHeap/poolBlk.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

/// Loads files on threads of its own and hands them over on the thread that runs the frames.
///
/// The most urgent request is read first, and of equally urgent ones the first that came. What is being read
/// and what waits to be handed over takes no more memory than a limit; a file that is longer than that is
/// read alone. The queue is not overtaken: where the next file does not fit yet, those behind it wait, too.
class Streamer final : public Qel::iArchiveStreaming, public Qel::FrameListener {
public:
    struct Limits {
        unsigned workers = 2;
        std::uint64_t bytesInFlight = std::uint64_t{32} << 20;
    };

    /// Where the system gives no thread, deliverFinished() reads one file a call.
    explicit Streamer(Limits limits);
    ~Streamer() override; ///< finishes all requests

    /// Reads all that was asked for before the call, and hands it over.
    void flushRequests() override;
    void requestFile(Qel::FileInfo *info, Qel::StreamCallback callback, void *user,
                     unsigned int memoryContext, Qel::ePriority priority) override;
    void abortFile(char const *name) override;
    void deliverFinished() override;

    bool frameStarted(Qel::FrameEvent const &) override;

private:
    struct Request {
        Qel::FileInfo info;
        Qel::StreamCallback callback;
        void *user;
        unsigned int memoryContext;
        std::uint64_t number;
        bool dropped = false;
        bool failed = false;
        PoolBlk block;
    };
    using RequestPtr = std::unique_ptr<Request>;
    using Waiting = std::map<std::pair<std::uint32_t, std::uint64_t>, RequestPtr>; // by urgency, then number
    using Lock = std::unique_lock<std::mutex>;

    class FlushScope;

    void work();
    Waiting::iterator next();
    void read(Lock &lock, Waiting::iterator request);
    void deliverOne(Lock &lock);
    bool isPending(std::uint64_t before) const;
    void release(Request const &request);

    std::uint64_t const m_limit;
    std::mutex m_lock;                  // over all that follows but the threads
    std::condition_variable m_work;     // something may be read
    std::condition_variable m_finished; // something has been read
    Waiting m_waiting;
    std::vector<Request *> m_active; // being read
    std::deque<RequestPtr> m_done;
    std::uint64_t m_bytesInFlight = 0;
    std::uint64_t m_requests = 0;
    std::uint64_t m_readBefore; // requests from this number on wait for the end of a flush
    bool m_stopping = false;
    std::vector<std::thread> m_workers;
};
