#pragma once

#include "System/Thread/gateHold.h"

#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>

namespace Qel {

/// A worker of the class @p T whose thread steps from the end of the last constructor to the beginning of the
/// first destructor.
///
/// Nothing can derive from it, so when its own constructor runs, everything else has been built, and when
/// its destructor runs, nothing has been destroyed. It opens the thread's gate at the one point and stops
/// the thread at the other. Neither the author of @p T nor whoever creates the object does anything more.
///
/// One thing is asked of a class whose step may block: that it has a public or protected member `wakeStep()`,
/// which is called before the wait for the step in progress. Its destructor comes too late for that.
///
/// A class that is final itself needs no tThreaded: it calls _beginSteps() at the end of its constructor and
/// _endSteps() at the beginning of its destructor.
///
/// @tparam T  a class derived from ThreadTask or iThread, not final
template <class T>
class tThreaded final : public T {
public:
    template <class... Arguments>
    requires(!(std::is_same_v<std::remove_cvref_t<Arguments>, GateHold> ||
               ...)) explicit tThreaded(Arguments &&...arguments)
        : tThreaded(GateHold(this, sizeof(tThreaded)), std::forward<Arguments>(arguments)...)
    {
    }

    ~tThreaded() override
    {
        if constexpr (requires { this->wakeStep(); }) {
            this->_askToStop();
            this->wakeStep();
        }
        this->_endSteps();
    }

    // The destructor is early enough to stop the thread, so `delete` has nothing to do before it. Not inline,
    // so that the compiler takes them for pairs.
    [[gnu::noinline]] static void *operator new(std::size_t size) { return T::operator new(size); }
    [[gnu::noinline]] static void *operator new(std::size_t size, std::align_val_t alignment)
    {
        return T::operator new(size, alignment);
    }
    [[gnu::noinline]] static void *operator new(std::size_t size, std::nothrow_t const &none) noexcept
    {
        return T::operator new(size, none);
    }
    static void *operator new(std::size_t, void *place) noexcept { return place; }
    [[gnu::noinline]] static void operator delete(void *block) { T::operator delete(block); }
    [[gnu::noinline]] static void operator delete(void *block, std::align_val_t alignment)
    {
        T::operator delete(block, alignment);
    }

private:
    // The hold lives as long as the call, so the gate cannot open by itself however long the constructors
    // take.
    template <class... Arguments>
    explicit tThreaded(GateHold const &, Arguments &&...arguments) : T(std::forward<Arguments>(arguments)...)
    {
        this->_beginSteps();
    }
};

} // namespace Qel
