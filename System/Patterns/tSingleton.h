#pragma once

#include "System/System/export.h"

namespace Qel {

/// Base of the managers: one live instance of @p T that any code of the process reaches.
///
/// A class that one module alone uses, such as a host's own, needs no more than `struct Game :
/// tSingleton<Game>`.
///
/// One that several modules use must have its static pointer once, in the module that the class belongs to,
/// or a plugin would see a null singleton of its own. So its header announces the instantiation, and its
/// source makes it:
///
/// @code
/// // xMgr.h
/// class XMgr;
/// extern template class QEL_API tSingleton<XMgr>;
/// class QEL_API XMgr : public tSingleton<XMgr> { ... };
///
/// // xMgr.cpp
/// template class tSingleton<XMgr>;
/// @endcode
///
/// @par Ownership  None: whoever makes the object destroys it.
/// @par Threads    Made and destroyed on the main thread, while no other thread asks for it.
template <class T>
class QEL_API tSingleton {
public:
    /// Makes this object the instance, in place of any earlier one.
    // The address is taken before T exists and only stored: no use of the object for the sanitizer to check.
    __attribute__((no_sanitize("vptr"))) tSingleton() { _instance = static_cast<T *>(this); }

    ~tSingleton() { _instance = nullptr; } ///< leaves no instance, even if another object had become it

    tSingleton(tSingleton const &) = delete;
    tSingleton &operator=(tSingleton const &) { return *this; } ///< the instance stays what it is

    static T &Instance() { return *_instance; }   ///< there must be one
    static T *InstancePtr() { return _instance; } ///< null if there is none
    static bool InstanceActive() { return _instance != nullptr; }

private:
    static T *_instance;
};

template <class T>
T *tSingleton<T>::_instance = nullptr;

} // namespace Qel
