#pragma once

#include "System/Patterns/resourceMgr.h"

namespace Qel {

/// A resource that may be destroyed while it is called, and how its manager finds out. Not part of the
/// public interface.
///
/// A resource that is registered nowhere counts as alive: only its maker can destroy it.
class cResourceManager::Held {
public:
    Held(cResourceManager &manager, cResource &resource)
        : m_manager(manager), m_resource(&resource), m_id(manager.idOf(resource)),
          m_registration(manager.m_slots[m_id].registration)
    {
    }

    bool alive() const
    {
        return m_id == 0 ||
               (m_id < m_manager.m_resources.size() && m_manager.m_resources[m_id] == m_resource &&
                m_manager.m_slots[m_id].registration == m_registration);
    }

    cResource &resource() const { return *m_resource; }
    std::uint32_t id() const { return m_id; } ///< 0 if it is not registered
    Slot &slot() const { return m_manager.m_slots[m_id]; }

private:
    cResourceManager &m_manager;
    cResource *m_resource;
    std::uint32_t m_id;
    std::uint32_t m_registration;
};

/// A flag of a resource's slot that is set for a scope.
class cResourceManager::SlotFlag {
public:
    SlotFlag(Held const &held, bool Slot::*flag) : m_held(held), m_flag(flag), m_before(held.slot().*flag)
    {
        held.slot().*flag = held.id() != 0;
    }
    ~SlotFlag()
    {
        if (m_held.alive()) {
            m_held.slot().*m_flag = m_before;
        }
    }

    SlotFlag(SlotFlag const &) = delete;
    SlotFlag &operator=(SlotFlag const &) = delete;

private:
    Held const &m_held;
    bool Slot::*m_flag;
    bool m_before;
};

} // namespace Qel
