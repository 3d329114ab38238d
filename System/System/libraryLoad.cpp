#include "System/System/Root.h"
#include "System/System/stringTools.h"

#include "Support/OS/debug.h"
#include "Support/PoolHeap/poolHeap.h"

#include <cstdlib>
#include <exception>

namespace Qel {

namespace {

constexpr std::uint32_t stringContext = 0x8C76F20;
constexpr std::uint32_t resourceContext = 0x228FC766;

void nameContext(char const *name, std::uint32_t id)
{
    PoolHeap::ContextInfo info;
    info.name = name;
    info.id = id;
    PoolHeap::context_init(info);
}

void memoryBreakpoint()
{
    os::debugOutput("PoolHeap - memory breakpoint reached\n");
    os::debugBreak();
}

// The library's life in the process. Built before every other static object of the library and destroyed
// after them all, so that each of them may hold text.
class LibraryLife {
public:
    LibraryLife()
    {
        PoolHeap::init();
        nameContext("String data", stringContext);
        nameContext("Default resource data", resourceContext);
        PoolHeap::the_config.message = &os::debugOutput;
        PoolHeap::the_config.breakpoint = &memoryBreakpoint;
        StringTools::init();
    }

    ~LibraryLife()
    {
        // The handler's code goes with the library.
        if (std::get_terminate() == &Root::termHandler) {
            std::set_terminate(&std::abort);
        }
        PoolHeap::shutdown();
    }
};

__attribute__((init_priority(101))) LibraryLife const libraryLife;

} // namespace

} // namespace Qel
