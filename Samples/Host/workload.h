#pragma once

#include "System/System/frameListener.h"
#include "System/Thread/queuedTaskMgr.h"
#include "System/Time/profileManager.h"

#include <memory>
#include <string>
#include <vector>

class PrimeTask;

/// What the host does while frames run: counts the primes below 100 000 in stepped tasks on a pool, a few of
/// them handed over in each frame, and profiles itself doing so.
class Workload final : public Qel::FrameListener {
public:
    /// @param profileFile  the frames' timeline is written there
    explicit Workload(std::string profileFile);
    ~Workload();

    bool frameStarted(Qel::FrameEvent const &event) override;
    bool frameRender() override;
    bool frameEnded(Qel::FrameEvent const &event) override;

    void finish(); ///< sees all tasks ended, those that were never handed over included

    unsigned primes() const; ///< that were found; after finish()
    static unsigned primesThatThereAre() { return 9592; }
    std::size_t tasks() const { return m_tasks.size(); }
    std::size_t handedOver() const { return m_handedOver; }
    std::size_t done() const { return m_done; } ///< tasks that had ended in the last frame
    unsigned workers() const { return m_pool.getThreadCount(); }
    float load(unsigned worker) { return m_pool.getThreadLoad(worker, 0.0f); } ///< percent
    Qel::ProfileManager &profile() { return m_profile; }
    std::string const &profileFile() const { return m_profileFile; }

private:
    std::string m_profileFile;
    Qel::ProfileManager m_profile;
    Qel::QueuedTaskMgr m_pool;
    std::vector<std::unique_ptr<PrimeTask>> m_tasks;
    std::size_t m_handedOver = 0;
    std::size_t m_done = 0;
    unsigned m_frames = 0;
};
