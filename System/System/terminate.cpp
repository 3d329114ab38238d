#include "System/System/Root.h"
#include "System/System/exception.h"
#include "System/System/logManager.h"

#include "System/Platform/errorDialog.h"
#include "System/Platform/platformManager.h"

#include "Support/OS/debug.h"

#include <atomic>
#include <cstdlib>

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
    // A failure on the way out, or on a second thread, must not start over.
    static std::atomic_flag entered = ATOMIC_FLAG_INIT;
    if (entered.test_and_set()) {
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
    std::exit(failed);
}

void Root::termHandler()
{
    attempt([] { logMessage("termHandler()\n", 2); });
    handleTerminate();
}

} // namespace Qel
