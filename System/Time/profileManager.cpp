#include "System/Time/profileManager.h"

#include "Support/OS/thread.h"

namespace Qel {

template class tSingleton<ProfileManager>;

void profiling_state(eProfileState)
{
}

ProfileManager::ProfileManager()
    : m_root("Root", nullptr), m_current(&m_root), m_thread(os::currentThreadId())
{
}

void ProfileManager::start_Profile(char const *name)
{
    if (os::currentThreadId() != m_thread) {
        return;
    }
    // A scope inside one of the same name stays on its node.
    if (name != m_current->m_name) {
        m_current = m_current->getSubNode(name);
    }
    m_current->call();
}

void ProfileManager::stop_Profile()
{
    if (os::currentThreadId() == m_thread && m_current->Return() && m_current->m_parent != nullptr) {
        m_current = m_current->m_parent;
    }
}

void ProfileManager::reset()
{
    m_root.reset();
    m_frames = 0;
    ProfileNode::msClock.start();
}

float ProfileManager::get_Time_Since_Reset() const
{
    return static_cast<float>(ProfileNode::msClock.getDurationInProgress().getSeconds());
}

} // namespace Qel
