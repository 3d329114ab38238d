#pragma once

#include "System/Patterns/observer.h"

#include <vector>

namespace Qel {

/// Tells its observers of a change.
///
/// An observer may attach and detach observers, itself included, and may even destroy the subject while it
/// is being told: one that is detached before its turn is not called, one that is attached is called from
/// the next notification on, and nobody else is left out or called twice.
///
/// @par Ownership  The observers are not owned: they must be detached before they die.
/// @par Threads    Belongs to one thread.
class QEL_API cSubject {
public:
    cSubject() = default;
    virtual ~cSubject();

    cSubject(cSubject const &) = default;
    cSubject &operator=(cSubject const &) = default;

    /// Appends an observer; one that is attached twice is told twice.
    /// @param observer  not tested: not null when it is told
    virtual void attach(cObserver *observer);

    /// Takes out the first place of an observer; the others keep their order. Nothing if it is not attached.
    virtual void detach(cObserver *observer);

    virtual void notify(); ///< calls update(this) of each observer in order of attachment

private:
    std::vector<cObserver *> m_observers;
};

} // namespace Qel
