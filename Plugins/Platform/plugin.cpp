#include "objects.h"

// Each pair makes and frees on this side, so that an object goes back to where its memory came from.

namespace {

template <class Interface>
void make(Interface **object, std::unique_ptr<Interface> (*maker)()) noexcept
{
    *object = nullptr;
    try {
        *object = maker().release();
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
    make(dialog, makeConfigDialog);
}

extern "C" QEL_API void createPlatformErrorDialog(Qel::ErrorDialog **dialog)
{
    make(dialog, makeErrorDialog);
}

extern "C" QEL_API void createPlatformInputReader(Qel::InputReader **reader)
{
    make(reader, makeInputReader);
}

extern "C" QEL_API void createPlatformSplashDialog(Qel::SplashDialog **dialog)
{
    make(dialog, makeSplashDialog);
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
