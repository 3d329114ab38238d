#pragma once

#include "System/Patterns/tSingleton.h"
#include "System/System/export.h"
#include "System/Time/profileNode.h"

#include <cstdint>

namespace Qel {

class ProfileManager;
extern template class QEL_API tSingleton<ProfileManager>;

/// Asked of profiling_state(); nothing in the library goes by it.
enum eProfileState : std::uint32_t {
    PROFILE_OFF = 0,
    PROFILE_ON = 1,
};

QEL_API void profiling_state(eProfileState state); ///< does nothing

/// A tree of where the time of one thread goes. Scopes add up in it; a tool may walk it at any moment.
///
/// @code
/// ProfileManager profiler; // on the thread to be profiled
/// profiler.reset();
/// {
///     ProfileSample const sample("physics");
///     stepPhysics();
/// }
/// for (ProfileNode const *node = profiler.getRoot()->getChild(); node; node = node->getSibling()) {
///     report(node->getName(), node->getTotalCalls(), node->getTotalTime());
/// }
/// @endcode
///
/// @par Threads  The one that made it. Samples on other threads do nothing.
class QEL_API ProfileManager : public tSingleton<ProfileManager> {
public:
    ProfileManager();

    /// A scope begins; does nothing on another thread.
    /// @param name  kept, not copied; compared by pointer
    void start_Profile(char const *name);
    void stop_Profile(); ///< the innermost scope ends; does nothing on another thread

    void reset(); ///< zeroes all calls and times, and starts the clock and the frame count anew

    void increment_Frame_Counter() { ++m_frames; }
    int get_Frame_Count_Since_Reset() const { return m_frames; }
    float get_Time_Since_Reset() const; ///< seconds; before the first reset() since the clock's start

    ProfileNode *getRoot() { return &m_root; } ///< "Root"; its children are the outermost scopes

    void lock() {}   ///< does nothing
    void unlock() {} ///< does nothing

private:
    ProfileNode m_root;
    ProfileNode *m_current;
    int m_frames = 0;
    std::uint32_t m_thread;
};

/// A scope for ProfileManager. Without one, or on another thread than its own, it does nothing.
class QEL_API ProfileSample {
public:
    /// @param name  as for ProfileManager::start_Profile()
    explicit ProfileSample(char const *name)
    {
        if (ProfileManager *const manager = ProfileManager::InstancePtr()) {
            manager->start_Profile(name);
        }
    }
    ~ProfileSample()
    {
        if (ProfileManager *const manager = ProfileManager::InstancePtr()) {
            manager->stop_Profile();
        }
    }

    ProfileSample(ProfileSample const &) = delete;
    ProfileSample &operator=(ProfileSample const &) = delete;
};

} // namespace Qel
