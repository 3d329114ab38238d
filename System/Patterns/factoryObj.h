#pragma once

#include "System/System/string.h"

namespace Qel {

/// Shape of the factories that plugins register: a named object that makes instances of an interface.
///
/// @par Ownership  The plugin owns the factory; it must stay until no manager can ask it any more.
/// @par Threads    Called on the main thread.
template <class T>
class QEL_API FactoryObj {
public:
    virtual ~FactoryObj() = default;

    /// The name that a manager finds the factory by.
    virtual String getType() const = 0;

    /// Makes an object.
    /// @param name  what the object is to be called or to work on; its meaning is the interface's
    /// @return the new object, to be given back as the manager in question says; null if it cannot be made
    virtual T *createInstance(String const &name) = 0;
};

} // namespace Qel
