#pragma once

#include "System/Patterns/tSingleton.h"

namespace Qel {

// For the one source that instantiates the singleton; see tSingleton.h.

template <class T>
T *tSingleton<T>::_instance = nullptr;

template <class T>
tSingleton<T>::tSingleton()
{
    _instance = static_cast<T *>(this);
}

template <class T>
tSingleton<T>::~tSingleton()
{
    _instance = nullptr;
}

} // namespace Qel
