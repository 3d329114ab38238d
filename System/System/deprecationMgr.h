#pragma once

#include "System/Patterns/tSingleton.h"

#include <map>
#include <set>

namespace Qel {

class DeprecationMgr;
extern template class QEL_API tSingleton<DeprecationMgr>;

/// Collects the places that still call deprecated functions, and tells the debugger's output of them at the
/// end of the run.
///
/// @code
/// void oldOne()
/// {
///     if (DeprecationMgr *mgr = DeprecationMgr::InstancePtr()) {
///         mgr->addDeprecatedFunction("oldOne", "newOne", __builtin_frame_address(0));
///     }
///     ...
/// }
/// @endcode
///
/// @par Ownership  Made by the host, if it wants one. The names are not copied: literals.
/// @par Threads    Takes no lock.
class QEL_API DeprecationMgr : public tSingleton<DeprecationMgr> {
public:
    DeprecationMgr();
    ~DeprecationMgr(); ///< writes the report, if there is anything to report

    DeprecationMgr(DeprecationMgr const &) = delete;
    DeprecationMgr &operator=(DeprecationMgr const &) = delete;

    /// Notes a call of a deprecated function.
    /// @param oldName  the function; told apart by the pointer, not by the text
    /// @param newName  what to use instead
    /// @param frame    the function's frame address: the word above it, its return address, stands for the
    ///                 place of the call, and for 0 if it cannot be read
    /// @return true for the first call of that function, so that the caller can warn once
    bool addDeprecatedFunction(char const *oldName, char const *newName, void const *frame);

private:
    struct Entry {
        char const *oldName;
        char const *newName;
        std::set<void const *> callers; // return addresses
    };

    std::map<char const *, Entry> m_functions;
};

} // namespace Qel
