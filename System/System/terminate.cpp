#include "System/System/Root.h"
#include "System/System/exception.h"
#include "System/System/logManager.h"

#include "System/Platform/errorDialog.h"
#include "System/Platform/platformManager.h"

#include "Support/OS/debug.h"
#include "Support/OS/thread.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <thread>

namespace Qel {

namespace {

constexpr int failed = -1;

// Whatever fails on the way to the exit, the exit is reached.
template <class Step>
void attempt(Step const &step)
{
    try {
        step();
    } catch (...) {
        os::debugOutput("handleTerminate: a step has failed\n");
    }
}

} // namespace

void handleTerminate()
{
    static std::atomic<std::uint32_t> ender{0}; // the thread that ends the process
    static std::atomic<bool> told{false};
    std::uint32_t first = 0;
    if (!ender.compare_exchange_strong(first, os::currentThreadId())) {
        if (first != os::currentThreadId()) {
            // The user is reading. After that the exit takes a moment, unless it waits for this very thread.
            told.wait(false);
            std::this_thread::sleep_for(std::chrono::seconds(2));
        }
        std::_Exit(failed);
    }

    // Not destroyed, since the process ends at once; kept here so that it does not count as lost.
    static ErrorDialog *dialog = nullptr;
    attempt([] {
        if (PlatformManager *const platform = PlatformManager::InstancePtr()) {
            dialog = platform->createErrorDialog();
        }
    });
    attempt([] { logMessage("handleTerminate()\n", 2); });
    attempt([] {
        String text;
        if (dialog != nullptr) {
            dialog->display(Exception::describeLast(text) ? text : String("handleTerminate: Unknown"),
                            String());
        }
    });
    told = true;
    told.notify_all();
    std::exit(failed);
}

void Root::termHandler()
{
    attempt([] { logMessage("termHandler()\n", 2); });
    handleTerminate();
}

} // namespace Qel
