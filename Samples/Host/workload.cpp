#include "workload.h"

#include "System/Time/multiFrameProfiler.h"

#include <algorithm>
#include <filesystem>
#include <numeric>

namespace {

constexpr unsigned numbers = 100'000;
constexpr unsigned numbersPerTask = 500;
constexpr unsigned numbersPerStep = 50;
constexpr std::size_t tasksPerFrame = 4;
constexpr unsigned char profiledFrames = 3;

bool isPrime(unsigned n)
{
    for (unsigned divisor = 2; divisor * divisor <= n; ++divisor) {
        if (n % divisor == 0) {
            return false;
        }
    }
    return n >= 2;
}

} // namespace

/// Counts the primes of one stretch of numbers.
class PrimeTask final : public Qel::iQueuedTask {
public:
    explicit PrimeTask(unsigned first) : m_next(first), m_end(first + numbersPerTask) {}

    Qel::eThreadStatus execute(bool forced) override
    {
        Qel::cMultiFrameProfiler::beginEvent(0, "count primes");
        unsigned const end = forced ? m_end : std::min(m_end, m_next + numbersPerStep);
        for (; m_next < end; ++m_next) {
            m_primes += isPrime(m_next) ? 1 : 0;
        }
        Qel::cMultiFrameProfiler::endEvent("count primes");
        return m_next < m_end ? Qel::THREAD_CONTINUE : Qel::THREAD_DONE;
    }

    unsigned primes() const { return m_primes; }

private:
    unsigned m_next;
    unsigned m_end;
    unsigned m_primes = 0;
};

Workload::Workload(std::string profileFile)
    : m_profileFile(std::move(profileFile)), m_pool(2, Qel::THREAD_PRIO_LOW, 65536, 0)
{
    for (unsigned first = 0; first < numbers; first += numbersPerTask) {
        m_tasks.push_back(std::make_unique<PrimeTask>(first));
    }
    std::error_code ignored;
    std::filesystem::remove(m_profileFile, ignored); // an earlier run's would be taken for this one's
    m_profile.reset();
    for (unsigned i = 0; i < workers(); ++i) {
        load(i); // counts from here
    }
}

Workload::~Workload()
{
    for (auto const &task : m_tasks) {
        task->abort();
    }
}

bool Workload::frameStarted(Qel::FrameEvent const &)
{
    if (m_frames == 0) { // no event is open anywhere, as it would be with a task under way
        Qel::cMultiFrameProfiler::capture(m_profileFile.c_str(), profiledFrames);
    }
    Qel::cMultiFrameProfiler::beginFrame();
    Qel::ProfileSample const sample("hand over tasks");
    Qel::cMultiFrameProfiler::beginEvent(0, "hand over tasks");
    for (std::size_t i = 0; i < tasksPerFrame && m_handedOver < m_tasks.size(); ++i) {
        m_pool.addTask(m_tasks[m_handedOver++].get(), Qel::PRIORITY_MIDDLE);
    }
    Qel::cMultiFrameProfiler::endEvent("hand over tasks");
    return true;
}

bool Workload::frameRender()
{
    Qel::ProfileSample const sample("look at tasks");
    Qel::cMultiFrameProfiler::beginEvent(0, "look at tasks");
    m_done = static_cast<std::size_t>(
        std::count_if(m_tasks.begin(), m_tasks.end(), [](auto const &task) { return task->isDone(); }));
    Qel::cMultiFrameProfiler::endEvent("look at tasks");
    return true;
}

bool Workload::frameEnded(Qel::FrameEvent const &)
{
    Qel::cMultiFrameProfiler::endFrame();
    m_profile.increment_Frame_Counter();
    ++m_frames;
    return true;
}

void Workload::finish()
{
    for (; m_handedOver < m_tasks.size(); ++m_handedOver) {
        m_pool.addTask(m_tasks[m_handedOver].get(), Qel::PRIORITY_MIDDLE);
    }
    for (auto const &task : m_tasks) {
        task->finish();
    }
}

unsigned Workload::primes() const
{
    return std::accumulate(m_tasks.begin(), m_tasks.end(), 0u,
                           [](unsigned sum, auto const &task) { return sum + task->primes(); });
}
