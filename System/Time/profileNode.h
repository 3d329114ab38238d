#pragma once

#include "System/System/export.h"
#include "System/Time/timer.h"

#include <cstdint>
#include <memory>

namespace Qel {

/// One place in the tree of ProfileManager: how often it was entered from its parent, and for how long.
///
/// @par Ownership  Owns its children and, in the chain, its next sibling.
/// @par Threads    The thread of its ProfileManager.
class QEL_API ProfileNode {
public:
    /// @param name    kept, not copied; nodes are told apart by this pointer, not by the text
    /// @param parent  null for a root; not owned
    ProfileNode(char const *name, ProfileNode *parent) : m_name(name), m_parent(parent) {}
    ~ProfileNode();

    ProfileNode(ProfileNode const &) = delete;
    ProfileNode &operator=(ProfileNode const &) = delete;

    /// The child of that very name; it is made, as the first one, if there is none.
    ProfileNode *getSubNode(char const *name);

    void reset(); ///< zeroes the calls and times of this node, its later siblings, and all below these

    void call(); ///< a scope begins; the clock is read only by the outermost one

    /// A scope ends.
    /// @return was it the outermost one? Its time has then been counted
    bool Return();

    char const *getName() const { return m_name; }
    std::uint32_t getTotalCalls() const { return m_totalCalls; }
    float getTotalTime() const { return m_totalTime; } ///< ms
    float getPeakTime() const { return m_peakTime; }   ///< ms, the longest single span
    ProfileNode *getParent() const { return m_parent; }
    ProfileNode *getChild() const { return m_child.get(); }     ///< the first one, or null
    ProfileNode *getSibling() const { return m_sibling.get(); } ///< the next one, or null

private:
    friend class ProfileManager;

    static Timer msClock; // of all nodes; started by ProfileManager::reset()

    char const *m_name;
    std::uint32_t m_totalCalls = 0;
    float m_totalTime = 0.0f;
    float m_peakTime = 0.0f;
    TimerCycle m_start;
    std::uint32_t m_recursion = 0;
    ProfileNode *m_parent;
    std::unique_ptr<ProfileNode> m_child;
    std::unique_ptr<ProfileNode> m_sibling;
};

inline void ProfileNode::call()
{
    ++m_totalCalls;
    if (m_recursion == 0) {
        m_start = msClock.getDurationInProgress();
    }
    ++m_recursion;
}

inline bool ProfileNode::Return()
{
    if (m_recursion == 0) {
        return false; // an end without a beginning
    }
    --m_recursion;
    if (m_recursion == 0 && m_totalCalls != 0) {
        TimerCycle const end = msClock.getDurationInProgress();
        if (end == m_start) {
            return true; // most scopes are shorter than the clock's step
        }
        double const now = end.getMilliseconds();
        auto const span = static_cast<float>(now - m_start.getMilliseconds());
        m_totalTime += span;
        if (span > m_peakTime) {
            m_peakTime = span;
        }
    }
    return m_recursion == 0;
}

} // namespace Qel
