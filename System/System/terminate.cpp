#include "System/System/Root.h"
#include "System/System/exception.h"
#include "System/System/logManager.h"

#include "System/Platform/errorDialog.h"
#include "System/Platform/platformManager.h"

#include <atomic>
#include <cstdlib>

namespace Qel {

namespace {

constexpr int failed = -1;

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
    if (PlatformManager *const platform = PlatformManager::InstancePtr()) {
        dialog = platform->createErrorDialog();
    }
    logMessage("handleTerminate()\n", 2);
    if (dialog != nullptr) {
        Exception const *const last = Exception::getLastException();
        dialog->display(last != nullptr ? last->getFullDescription() : String("handleTerminate: Unknown"),
                        String());
    }
    std::exit(failed);
}

void Root::termHandler()
{
    logMessage("termHandler()\n", 2);
    handleTerminate();
}

} // namespace Qel
