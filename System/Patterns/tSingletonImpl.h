#pragma once

#include "System/Patterns/tSingleton.h"

namespace Qel {

// For the one source that instantiates the singleton; see tSingleton.h.

template <class T>
T *tSingleton<T>::_instance = nullptr;

// The cast happens before T exists, and only stores the address: not a use that the sanitizer's check of the
// object's type is meant for.
template <class T>
__attribute__((no_sanitize("vptr"))) tSingleton<T>::tSingleton()
{
    _instance = static_cast<T *>(this);
}

template <class T>
tSingleton<T>::~tSingleton()
{
    _instance = nullptr;
}

} // namespace Qel
