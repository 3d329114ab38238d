#include "System/System/deprecationMgr.h"

#include "Support/OS/debug.h"
#include "Support/OS/memory.h"

#include <cstdint>
#include <string>

namespace Qel {

template class tSingleton<DeprecationMgr>;

namespace {

constexpr char const *stars = "*************************************************************\n";

void const *returnAddress(void const *frame)
{
    void const *address = nullptr;
    // Any frame value may come in, and pointers must not be calculated from one that points nowhere.
    std::uintptr_t const above = reinterpret_cast<std::uintptr_t>(frame) + sizeof(void *);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): as above
    auto const *const place = reinterpret_cast<void const *>(above);
    return os::readMemory(place, &address, sizeof(address)) ? address : nullptr;
}

std::string textOf(char const *name)
{
    return name != nullptr ? name : "";
}

} // namespace

DeprecationMgr::DeprecationMgr() = default;

DeprecationMgr::~DeprecationMgr()
{
    if (m_functions.empty()) {
        return;
    }
    os::debugOutput(stars);
    os::debugOutput("WARNING. You are using the following deprecated functions:\n");
    for (auto const &[key, entry] : m_functions) {
        std::string const function = "* Function " + textOf(entry.oldName) + " called from " +
                                     std::to_string(entry.callers.size()) + " different places.\n";
        std::string const instead = "  Instead use " + textOf(entry.newName) + ".\n";
        os::debugOutput(function.c_str());
        os::debugOutput(instead.c_str());
    }
    os::debugOutput(stars);
}

bool DeprecationMgr::addDeprecatedFunction(char const *oldName, char const *newName, void const *frame)
{
    auto const [at, isNew] = m_functions.try_emplace(oldName, Entry{oldName, newName, {}});
    at->second.callers.insert(returnAddress(frame));
    return isNew;
}

} // namespace Qel
