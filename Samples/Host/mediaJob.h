#pragma once

#include "mediaList.h"
#include "mediaManager.h"
#include "progress.h"

#include "System/System/frameListener.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

/// Where the media are, and what to compare them with. An empty name is none.
struct MediaPlaces {
    std::string folder;
    std::string zip;
    std::string list; ///< of checksums; without one the disk and the zip's table of contents are asked
};

/// Loads all files of a folder and of a zip file while frames run, first each at once and then all again in
/// the background, within the budget of settings::budget, and compares each byte with what it should be.
///
/// The budget is kept by asking for no more than three quarters of it in three frames: what was used in those
/// is not evicted.
class MediaJob final : public Qel::FrameListener, private MediaWatcher {
public:
    /// How loading everything once went.
    struct Pass {
        char const *name;
        bool hasRun = false;
        std::size_t loads = 0;
        std::uint64_t bytes = 0;
        std::size_t evictions = 0;
        double msInAll = 0.0; ///< of each load from asking to having
        double longestMs = 0.0;
    };

    struct Mounted {
        std::string path;
        std::string type;
        std::size_t listed = 0;  ///< files in it
        std::size_t found = 0;   ///< of these, what a lookup finds there and not elsewhere
        std::uint64_t bytes = 0; ///< of those found
        Qel::iArchive *archive = nullptr;
    };

    /// Mounts the media.
    /// @throws std::runtime_error if that cannot be done
    MediaJob(MediaPlaces places, bool quiet);

    /// Are there such media as the build makes, and the types of archive for them?
    static bool canMount(MediaPlaces const &places);

    bool frameStarted(Qel::FrameEvent const &event) override;
    bool frameEnded(Qel::FrameEvent const &event) override;

    bool isDone() const { return m_phase == Phase::done; }

    /// Has all been loaded as it should be, and the budget been kept where it can be?
    bool isRight() const;

    std::vector<Mounted> const &mounted() const { return m_mounted; }
    std::array<Pass, 2> const &passes() const { return m_passes; }
    std::vector<std::string> const &mistakes() const { return m_mistakes; } ///< a line for each
    MediaPlaces const &places() const { return m_places; }
    std::size_t files() const { return m_files.size(); }
    std::size_t emptyFiles() const { return m_emptyFiles; }   ///< which there is nothing to load of
    std::size_t leftOut() const { return m_leftOut; }         ///< that should be there and are not found
    std::size_t compared() const { return m_compared; }       ///< loads
    std::size_t notCompared() const { return m_notCompared; } ///< loads of what nobody has told
    std::uint64_t peak() const { return m_peak; }             ///< bytes loaded at one time under this budget
    bool isBudgetKept() const { return m_isBudgetKept; }
    bool canKeepBudget() const; ///< is no file longer than the budget?

private:
    enum class Phase { forced, streamed, done };
    using Clock = std::chrono::steady_clock;

    struct File {
        Qel::String name;
        std::uint32_t size;
        Clock::time_point asked{};
        bool isAsked = false;
        bool isThere = false;
    };

    void mount(std::string const &path, char const *type);
    void findFiles();
    void loadAtOnce();
    void loadInBackground();
    bool hasRoomFor(File const &file) const;
    void endPass();
    void giveUpOnMissing();
    void followBudget();
    void watchBudget();
    std::uint64_t share() const;
    void loaded(Qel::String const &name, PoolBlk const &bytes) override;
    void unloaded(Qel::String const &name) override;
    void compare(Qel::String const &name, PoolBlk const &bytes);
    Pass &pass() { return m_passes[m_phase == Phase::streamed ? 1 : 0]; }

    MediaPlaces m_places;
    Progress m_progress;
    MediaList m_list;
    MediaManager m_manager;
    std::vector<Mounted> m_mounted;
    std::vector<File> m_files;                             // with something in them
    std::unordered_map<std::string, std::size_t> m_byName; // in m_files
    Phase m_phase = Phase::forced;
    std::size_t m_next = 0;                  // file to ask for
    std::size_t m_ended = 0;                 // files that have come, or will not
    std::uint64_t m_underWay = 0;            // bytes asked of the streamer
    std::array<std::uint64_t, 3> m_recent{}; // bytes that came in this frame and the two before
    Clock::time_point m_lastLoad;
    std::array<Pass, 2> m_passes{{{"forced"}, {"streamed"}}};
    std::vector<std::string> m_mistakes;
    std::size_t m_emptyFiles = 0;
    std::size_t m_leftOut = 0;
    std::size_t m_compared = 0;
    std::size_t m_notCompared = 0;
    std::uint32_t m_longest = 0; // bytes of the longest file
    int m_budget = -1;           // as the manager was told
    int m_budgetFrames = 0;      // since it has taken hold
    std::uint64_t m_peak = 0;
    bool m_isBudgetKept = true;
};
