#pragma once

#include <utility>

namespace Qel {

/// A worker of the class @p T whose thread steps from the end of the last constructor to the beginning of the
/// first destructor.
///
/// Nothing can derive from it, so when its own constructor runs, everything else has been built, and when
/// its destructor runs, nothing has been destroyed. It opens the thread's gate at the one point and stops
/// the thread at the other. Neither the author of @p T nor whoever creates the object does anything more.
///
/// One thing is asked of a class whose step may block: that it has a member `wakeStep()`, which is called
/// before the wait for the step in progress. Its destructor comes too late for that.
///
/// @tparam T  a class derived from ThreadTask or iThread, not final
template <class T>
class tThreaded final : public T {
public:
    template <class... Arguments>
    explicit tThreaded(Arguments &&...arguments) : T(std::forward<Arguments>(arguments)...)
    {
        this->_beginSteps();
    }

    ~tThreaded() override
    {
        if constexpr (requires { this->wakeStep(); }) {
            this->_askToStop();
            this->wakeStep();
        }
        this->_endSteps();
    }
};

} // namespace Qel
