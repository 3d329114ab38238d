#include "consoleErrorDialog.h"
#include "fedInputReader.h"
#include "fileConfigDialog.h"
#include "hiddenSplashDialog.h"

#include <memory>

// Each pair makes and frees on this side, so that an object goes back to where its memory came from. One with
// windows replaces the classes named here and nothing else.

namespace {

template <class Object, class Interface>
void make(Interface **object) noexcept
{
    *object = nullptr;
    try {
        *object = std::make_unique<Object>().release();
    } catch (...) {
        // No memory. Null says so, where an exception could not pass.
    }
}

template <class Interface>
void giveBack(Interface *object) noexcept
{
    std::unique_ptr<Interface> const owner(object);
}

} // namespace

extern "C" QEL_API void createPlatformConfigDialog(Qel::ConfigDialog **dialog)
{
    make<FileConfigDialog>(dialog);
}

extern "C" QEL_API void createPlatformErrorDialog(Qel::ErrorDialog **dialog)
{
    make<ConsoleErrorDialog>(dialog);
}

extern "C" QEL_API void createPlatformInputReader(Qel::InputReader **reader)
{
    make<FedInputReader>(reader);
}

extern "C" QEL_API void createPlatformSplashDialog(Qel::SplashDialog **dialog)
{
    make<HiddenSplashDialog>(dialog);
}

extern "C" QEL_API void destroyPlatformConfigDialog(Qel::ConfigDialog *dialog)
{
    giveBack(dialog);
}

extern "C" QEL_API void destroyPlatformErrorDialog(Qel::ErrorDialog *dialog)
{
    giveBack(dialog);
}

extern "C" QEL_API void destroyPlatformInputReader(Qel::InputReader *reader)
{
    giveBack(reader);
}

extern "C" QEL_API void destroyPlatformSplashDialog(Qel::SplashDialog *dialog)
{
    giveBack(dialog);
}
